// The log, the announcements and the session of a stand-in phone.
#include "stand_in_phone/stand_in_phone.h"

#include <algorithm>
#include <cstring>
#include <fstream>

#include "stand_in_phone/call_text.h"

namespace quaylink {

// A string object, known again by its mark in a library that did not make it.
struct ServiceName {
  static constexpr char kMark[] = "a string";

  std::array<char, sizeof kMark> mark = std::to_array(kMark);
  std::array<char, 64> text = {};
};

struct Allocator {};

namespace stand_in {
namespace {

constexpr StringEncoding kSystemEncoding = 0x0500;
Allocator defaultAllocator;

// Set on the thread that announces a phone, which cannot wait for its own end.
thread_local bool isAnnouncer = false;

std::vector<std::string_view> Names(const std::vector<std::string>& log) {
  std::vector<std::string_view> names;
  names.reserve(log.size());
  for (const std::string& call : log)
    names.push_back(std::string_view(call).substr(0, call.find('(')));
  return names;
}

}  // namespace

StandInPhone::StandInPhone(PhoneSetUp initialSetUp)
    : setUp(std::move(initialSetUp)), identifier_(setUp.identifier.value_or("")) {}

StandInPhone::~StandInPhone() {
  JoinAnnouncer();
  for (const std::string& complaint : NeverClosed()) WriteToFile("complaint: " + complaint);
}

std::vector<std::string> StandInPhone::Log() const {
  const std::lock_guard lock(mutex_);
  return log_;
}

std::vector<std::string> StandInPhone::Log(std::string_view entryPoint) const {
  const std::lock_guard lock(mutex_);
  std::vector<std::string> calls;
  const std::vector<std::string_view> names = Names(log_);
  for (std::size_t i = 0; i < log_.size(); ++i) {
    if (names[i] == entryPoint) calls.push_back(log_[i]);
  }
  return calls;
}

std::vector<std::string> StandInPhone::CalledNames() const {
  const std::lock_guard lock(mutex_);
  const std::vector<std::string_view> names = Names(log_);
  return {names.begin(), names.end()};
}

void StandInPhone::ForgetLog() {
  const std::lock_guard lock(mutex_);
  log_.clear();
}

std::vector<std::string> StandInPhone::Complaints() const {
  const std::lock_guard lock(mutex_);
  std::vector<std::string> complaints = complaints_;
  std::ranges::copy(NeverClosed(), std::back_inserter(complaints));
  return complaints;
}

bool StandInPhone::IsSessionOpen() const {
  const std::lock_guard lock(mutex_);
  return connected_ || sessionOpen_ || !connections_.empty();
}

bool StandInPhone::Fails(std::string_view entryPoint, const std::string& arguments) {
  log_.push_back(std::string(entryPoint) + '(' + arguments + ')');
  WriteToFile(log_.back());
  const auto failing = setUp.failures.find(entryPoint);
  if (failing == setUp.failures.end()) return false;
  FailingCalls& calls = failing->second;
  if (calls.skip > 0) {
    --calls.skip;
    return false;
  }
  if (calls.count == 0) return false;
  --calls.count;
  return true;
}

bool StandInPhone::Expect(bool condition, std::string_view entryPoint, std::string_view complaint) {
  if (!condition) {
    complaints_.push_back(std::string(entryPoint).append(": ").append(complaint));
    WriteToFile("complaint: " + complaints_.back());
  }
  return condition;
}

bool StandInPhone::ExpectDevice(std::string_view entryPoint, const void* device) {
  return Expect(device != nullptr && deviceRecord_ != DeviceRecord{} &&
                    std::memcmp(device, deviceRecord_.data(), sizeof deviceRecord_) == 0,
                entryPoint, "the device record is not the announced one");
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
  count(subscriptions_.size(), "subscription");
  count(directories_.size(), "directory");
  count(information_.size(), "information");
  count(files_.size(), "file");
  return complaints;
}

// Announcements

void StandInPhone::Announce() {
  std::vector<NotificationHandle> subscriptions;
  {
    const std::lock_guard lock(mutex_);
    for (const auto& [handle, callback] : subscriptions_) subscriptions.push_back(handle);
  }
  for (const NotificationHandle subscription : subscriptions) AnnounceTo(subscription);
}

void StandInPhone::AnnounceTo(NotificationHandle subscription) {
  DeviceRecord handedOut = {};
  NotificationCallback callback = nullptr;
  {
    const std::lock_guard lock(mutex_);
    const auto found = subscriptions_.find(subscription);
    if (found == subscriptions_.end()) return;
    callback = found->second;
    // Every opaque word has a value of its own, so that a record copied in part is noticed.
    for (std::size_t i = 0; i < handedOut.size(); ++i) {
      handedOut[i] = 0x5EED0000U + static_cast<std::uint32_t>(i);
    }
    handedOut[16 / 4] = setUp.readyWord;
    handedOut[24 / 4] = setUp.identifier ? identifier_.Address() : 0;
    handedOut[28 / 4] = setUp.workFolderReadyWord;
    deviceRecord_ = handedOut;
  }
  const NotificationRecord record{handedOut.data()};
  callback(&record);
  handedOut.fill(0);  // who wants to keep it takes a copy
}

void StandInPhone::JoinAnnouncer() {
  if (!isAnnouncer && announcer_.joinable()) announcer_.join();
}

Status StandInPhone::Subscribe(NotificationCallback callback, std::array<std::uint32_t, 3> zeros,
                               NotificationHandle* subscription) {
  constexpr std::string_view kName = "AMDeviceNotificationSubscribe";
  JoinAnnouncer();
  std::unique_lock lock(mutex_);
  if (Fails(kName, ArgumentList("callback", zeros[0], zeros[1], zeros[2]))) return kFailure;
  Expect(callback != nullptr && zeros == std::array<std::uint32_t, 3>{}, kName, "wrong arguments");
  const NotificationHandle handle = ++lastHandle_;
  subscriptions_[handle] = callback;
  const Announcement announcement = setUp.announcement;
  lock.unlock();

  if (announcement == Announcement::kBeforeSubscribeReturns) {
    AnnounceTo(handle);
  } else if (announcement == Announcement::kFromAnotherThread) {
    announcer_ = std::thread([this, handle, delay = setUp.announcementDelay] {
      isAnnouncer = true;
      std::unique_lock waiting(mutex_);
      subscriptionsChanged_.wait_for(waiting, delay,
                                     [&] { return !subscriptions_.contains(handle); });
      waiting.unlock();
      AnnounceTo(handle);
    });
  }
  *subscription = handle;
  return kSuccess;
}

Status StandInPhone::Unsubscribe(NotificationHandle subscription) {
  constexpr std::string_view kName = "AMDeviceNotificationUnsubscribe";
  {
    const std::lock_guard lock(mutex_);
    const bool fails = Fails(kName, ArgumentList(subscription));
    Expect(subscriptions_.erase(subscription) == 1, kName, "the subscription is not open");
    if (fails) return kFailure;
  }
  subscriptionsChanged_.notify_all();
  JoinAnnouncer();
  return kSuccess;
}

// Session

Status StandInPhone::Connect(void* device) {
  constexpr std::string_view kName = "AMDeviceConnect";
  const std::lock_guard lock(mutex_);
  if (Fails(kName, "device")) return kFailure;
  Expect(!connected_, kName, "connected already");
  if (!ExpectDevice(kName, device)) return kFailure;
  connected_ = true;
  return kSuccess;
}

Status StandInPhone::Disconnect(void* device) {
  constexpr std::string_view kName = "AMDeviceDisconnect";
  JoinAnnouncer();
  const std::lock_guard lock(mutex_);
  const bool fails = Fails(kName, "device");
  ExpectDevice(kName, device);
  Expect(connected_, kName, "not connected");
  Expect(!sessionOpen_, kName, "the session is open");
  connected_ = false;
  return fails ? kFailure : kSuccess;
}

Status StandInPhone::StartSession(void* device) {
  constexpr std::string_view kName = "AMDeviceStartSession";
  const std::lock_guard lock(mutex_);
  if (Fails(kName, "device") || !ExpectDevice(kName, device) ||
      !Expect(connected_, kName, "not connected")) {
    return kFailure;
  }
  Expect(!sessionOpen_, kName, "a session is open already");
  sessionOpen_ = true;
  return kSuccess;
}

Status StandInPhone::StopSession(void* device) {
  constexpr std::string_view kName = "AMDeviceStopSession";
  const std::lock_guard lock(mutex_);
  const bool fails = Fails(kName, "device");
  ExpectDevice(kName, device);
  Expect(sessionOpen_, kName, "no session");
  Expect(connections_.empty(), kName, "a file connection is open");
  sessionOpen_ = false;
  services_.clear();
  return fails ? kFailure : kSuccess;
}

Status StandInPhone::StartService(void* device, ServiceName* name, ServiceHandle* service,
                                  std::uint32_t* word) {
  constexpr std::string_view kName = "AMDeviceStartService";
  const std::lock_guard lock(mutex_);
  const bool isString = name != nullptr && name->mark == std::to_array(ServiceName::kMark);
  if (Fails(kName, ArgumentList("device", isString ? Quoted(name->text.data()) : "no string"))) {
    return kFailure;
  }
  if (!ExpectDevice(kName, device) || !Expect(sessionOpen_, kName, "no session") || !isString ||
      std::strcmp(name->text.data(), "com.apple.afc") != 0) {
    return kFailure;
  }
  *service = ++lastHandle_;
  *word = 0xC0FFEE;
  services_.insert(*service);
  return kSuccess;
}

// Pairing

Status StandInPhone::IsPaired(void* device) {
  constexpr std::string_view kName = "AMDeviceIsPaired";
  const std::lock_guard lock(mutex_);
  if (Fails(kName, "device")) return 0;
  ExpectDevice(kName, device);
  Expect(connected_, kName, "not connected");
  return setUp.paired ? 1 : 0;
}

Status StandInPhone::ValidatePairing(void* device) {
  constexpr std::string_view kName = "AMDeviceValidatePairing";
  const std::lock_guard lock(mutex_);
  if (Fails(kName, "device")) return kFailure;
  ExpectDevice(kName, device);
  Expect(connected_ && setUp.paired, kName, "not paired");
  return kSuccess;
}

Status StandInPhone::Pair(void* device) {
  constexpr std::string_view kName = "AMDevicePair";
  const std::lock_guard lock(mutex_);
  if (Fails(kName, "device")) return kFailure;
  ExpectDevice(kName, device);
  Expect(connected_ && !setUp.paired, kName, "paired already");
  setUp.paired = true;
  if (!setUp.pairingRecords.empty()) {
    std::ofstream(setUp.pairingRecords / (setUp.identifier.value_or("") + ".plist")) << "paired\n";
  }
  return kSuccess;
}

// Texts

Allocator* StandInPhone::GetDefaultAllocator() {
  const std::lock_guard lock(mutex_);
  return Fails("CFAllocatorGetDefault", "") ? nullptr : &defaultAllocator;
}

StringEncoding StandInPhone::GetSystemEncoding() {
  const std::lock_guard lock(mutex_);
  return Fails("CFStringGetSystemEncoding", "") ? 0 : kSystemEncoding;
}

ServiceName* StandInPhone::CreateString(Allocator* allocator, const char* text,
                                        StringEncoding encoding) {
  constexpr std::string_view kName = "CFStringCreateWithCString";
  const std::lock_guard lock(mutex_);
  const bool fails = Fails(kName, Quoted(text));
  if (fails || !Expect(allocator == &defaultAllocator && encoding == kSystemEncoding, kName,
                       "wrong allocator or encoding")) {
    return nullptr;
  }
  ServiceName& name = *names_.emplace_back(std::make_unique<ServiceName>());
  std::string_view(text).substr(0, name.text.size() - 1).copy(name.text.data(), name.text.size());
  return &name;
}

}  // namespace stand_in
}  // namespace quaylink
