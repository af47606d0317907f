// The log, the announcements and the failures of a stand-in phone.
#include "stand_in_phone/stand_in_phone.h"

#include <algorithm>
#include <cstring>
#include <fstream>

#include "stand_in_phone/call.h"
#include "stand_in_phone/phone_script.h"

namespace quaylink::stand_in {
namespace {

StandInPhone* givenPhone = nullptr;
thread_local int phoneCodeDepth = 0;

std::string NameOf(const std::string& call) {
  return call.substr(0, call.find('('));
}

}  // namespace

StandInPhone& CurrentPhone() {
  if (givenPhone) return *givenPhone;
  static StandInPhone phone(SetUpFromEnvironment());
  return phone;
}

void SetCurrentPhone(StandInPhone* phone) {
  givenPhone = phone;
}

PhoneCode::PhoneCode() {
  const auto tell = CurrentPhone().setUp.aroundCalls;
  if (phoneCodeDepth++ == 0 && tell) tell(true);
}

PhoneCode::~PhoneCode() {
  const auto tell = CurrentPhone().setUp.aroundCalls;
  if (--phoneCodeDepth == 0 && tell) tell(false);
}

bool Call::IsPhone(const void* device) const {
  const auto is = [device](const DeviceRecord& record) {
    return record != DeviceRecord{} && std::memcmp(device, record.data(), sizeof record) == 0;
  };
  if (device && phone_.pluggedIn && is(phone_.deviceRecord)) return true;
  Expect(device && (is(phone_.deviceRecord) || std::ranges::any_of(phone_.otherRecords, is)),
         "the device record is not an announced one");
  return false;
}

StandInPhone::StandInPhone(PhoneSetUp initialSetUp)
    : setUp(std::move(initialSetUp)), identifier_(setUp.identifier.value_or("")) {}

StandInPhone::~StandInPhone() {
  JoinAnnouncer();
  for (const std::string& complaint : NeverClosed()) WriteToFile("complaint: " + complaint);
}

std::vector<std::string> StandInPhone::Log(std::string_view entryPoint) const {
  const std::lock_guard lock(mutex);
  std::vector<std::string> calls;
  std::ranges::copy_if(log_, std::back_inserter(calls), [entryPoint](const std::string& call) {
    return entryPoint.empty() || NameOf(call) == entryPoint;
  });
  return calls;
}

std::vector<std::string> StandInPhone::CalledNames() const {
  std::vector<std::string> calls = Log();
  for (std::string& call : calls) call = NameOf(call);
  return calls;
}

void StandInPhone::ForgetLog() {
  const std::lock_guard lock(mutex);
  log_.clear();
}

std::vector<std::string> StandInPhone::Complaints() const {
  const std::lock_guard lock(mutex);
  std::vector<std::string> complaints = complaints_;
  std::ranges::copy(NeverClosed(), std::back_inserter(complaints));
  return complaints;
}

bool StandInPhone::IsSessionOpen() const {
  const std::lock_guard lock(mutex);
  return connected || sessionOpen || !connections.empty();
}

bool StandInPhone::Fails(std::string_view entryPoint, const std::string& arguments) {
  log_.push_back(std::string(entryPoint) + '(' + arguments + ')');
  WriteToFile(log_.back());
  // What strings are made by is no phone, and is there without one.
  const bool asksPhone = !entryPoint.starts_with("CF");
  if (asksPhone && setUp.unplugAfter && (*setUp.unplugAfter)-- == 0) {
    setUp.unplugAfter.reset();
    pluggedIn = connected = sessionOpen = false;
    otherRecords.push_back(std::exchange(deviceRecord, {}));
  }
  const auto failing = setUp.failures.find(entryPoint);
  if (failing != setUp.failures.end()) {
    auto& [skip, count] = failing->second;
    if (skip > 0) {
      --skip;
    } else if (count > 0) {
      --count;
      return true;
    }
  }
  return asksPhone && !pluggedIn;
}

bool StandInPhone::Expect(bool condition, std::string_view entryPoint, std::string_view complaint) {
  if (!condition) {
    complaints_.push_back(std::string(entryPoint).append(": ").append(complaint));
    WriteToFile("complaint: " + complaints_.back());
  }
  return condition;
}

void StandInPhone::WriteToFile(std::string_view line) const {
  if (setUp.logFile.empty()) return;
  std::ofstream(setUp.logFile, std::ios::app | std::ios::binary) << line << '\n';
}

std::vector<std::string> StandInPhone::NeverClosed() const {
  std::vector<std::string> complaints;
  const auto count = [&complaints](std::size_t number, const char* kind) {
    if (number != 0) complaints.push_back(std::to_string(number) + " never closed: " + kind);
  };
  count(subscriptions.size(), "subscription");
  count(directories.size(), "directory");
  count(information.size(), "information");
  count(files.size(), "file");
  return complaints;
}

void StandInPhone::Announce() {
  std::vector<std::uint32_t> handles;
  {
    const std::lock_guard lock(mutex);
    for (const auto& [handle, callback] : subscriptions) handles.push_back(handle);
  }
  for (const std::uint32_t handle : handles) AnnounceTo(handle);
}

// Every opaque word has a value of its own, so that a record copied in part is noticed.
DeviceRecord StandInPhone::MakeRecord(std::uint32_t opaque) {
  DeviceRecord record = {};
  for (std::uint32_t& word : record) word = opaque++;
  record[16 / 4] = setUp.readyWord;
  record[24 / 4] = setUp.identifier ? identifier_.Address() : 0;
  record[28 / 4] = setUp.workFolderReadyWord;
  return record;
}

void StandInPhone::AnnounceTo(std::uint32_t subscription) {
  DeviceRecord handedOut = {};
  {
    const std::lock_guard lock(mutex);
    const auto found = subscriptions.find(subscription);
    if (found == subscriptions.end() || !pluggedIn) return;
    lastCallback = found->second;
    handedOut = deviceRecord = MakeRecord(opaqueWord);
  }
  const void* const notification = handedOut.data();
  lastCallback(reinterpret_cast<const NotificationRecord*>(&notification));
  handedOut.fill(0);  // who wants to keep it takes a copy
}

void StandInPhone::JoinAnnouncer() {
  // The thread that announces the phone cannot wait for its own end.
  if (announcer.joinable() && announcer.get_id() != std::this_thread::get_id()) announcer.join();
}

}  // namespace quaylink::stand_in
