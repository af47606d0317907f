// The part of iTunesMobileDevice.dll that reads a phone's files.
#include <algorithm>
#include <cstring>

#include "stand_in_phone/call.h"

using namespace quaylink::stand_in;
using namespace std::literals;

namespace {

constexpr std::string_view kNotOpen = "the handle is not open";
constexpr std::string_view kReceiverNotCleared = "the receiving place was not cleared before";
constexpr std::size_t kLongestPath = 255;

// Handles of directories and information are pointers to the caller, and never followed.
template <class Object>
Object* ToPointer(std::uint32_t handle) {
  return reinterpret_cast<Object*>(std::uintptr_t{handle});  // NOLINT(performance-no-int-to-ptr)
}

std::uint32_t ToHandle(const void* pointer) {
  return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(pointer));
}

bool IsConnection(const Call& call, std::uint32_t connection) {
  return call.Expect(call->connections.contains(connection), "no such connection");
}

// The entry at a path of the phone, unless the call fails or is not right.
std::optional<PhoneEntry> EntryAt(const Call& call, std::uint32_t connection, const char* path) {
  if (!IsConnection(call, connection) ||
      !call.Expect(path && path[0] == '/' && std::strlen(path) <= kLongestPath,
                   "not a device path") ||
      call.Fails()) {
    return std::nullopt;
  }
  return call->setUp.files->Find(path);
}

InformationPairs InformationOn(const PhoneSetUp& setUp, std::string_view path,
                               const PhoneEntry& entry) {
  if (const auto own = setUp.information.find(path); own != setUp.information.end()) {
    return own->second;
  }
  return {{"st_size", std::to_string(entry.size)},
          {"st_blocks", "8"},
          {"st_nlink", "1"},
          {"st_ifmt", entry.isFolder ? "S_IFDIR" : "S_IFREG"},
          {"st_mtime", "1100000000000000000"}};
}

}  // namespace

std::int32_t AFCConnectionOpen(std::uint32_t service, std::uint32_t zero,
                               std::uint32_t* connection) {
  StandInPhone& phone = CurrentPhone();
  phone.JoinAnnouncer();
  DeviceRecord secondPhone = {};
  {
    const Call call("AFCConnectionOpen", "service"sv, zero);
    if (!call.Expect(phone.services.contains(service), "no such service") || call.Fails()) {
      return call.Refuse(connection);
    }
    call.Expect(zero == 0, "the second argument is not 0");
    *connection = ++phone.lastHandle;
    phone.connections.insert(*connection);
    if (!phone.setUp.secondPhone) return kSuccess;
    secondPhone = phone.MakeRecord(0x0DD00000u);
    phone.otherRecords.push_back(secondPhone);
  }
  const void* const notification = secondPhone.data();
  phone.lastCallback(reinterpret_cast<const quaylink::NotificationRecord*>(&notification));
  return kSuccess;
}

std::int32_t AFCConnectionClose(std::uint32_t connection) {
  const Call call("AFCConnectionClose", "connection"sv);
  call.Expect(call->connections.erase(connection) == 1, kNotOpen);
  call.Expect(call->directories.empty() && call->information.empty() && call->files.empty(),
              "something is still open");
  return call.Result();
}

std::int32_t AFCDirectoryOpen(std::uint32_t connection, const char* path,
                              quaylink::AfcDirectory** directory) {
  const Call call("AFCDirectoryOpen", path);
  const std::optional<PhoneEntry> entry = EntryAt(call, connection, path);
  if (!entry || !entry->isFolder) return call.Refuse(directory);
  StandInPhone::Directory& opened = call->directories[++call->lastHandle];
  opened.names = call->setUp.files->Names(path);
  opened.names.insert(opened.names.begin(), {".", ".."});
  *directory = ToPointer<quaylink::AfcDirectory>(call->lastHandle);
  return kSuccess;
}

std::int32_t AFCDirectoryClose(void* null, quaylink::AfcDirectory* directory) {
  const Call call("AFCDirectoryClose", "directory"sv);
  call.Expect(!null, "the first argument is not null");
  call.Expect(call->directories.erase(ToHandle(directory)) == 1, kNotOpen);
  return call.Result();
}

std::int32_t AFCDirectoryRead(void* null, quaylink::AfcDirectory* directory, const char** name) {
  const Call call("AFCDirectoryRead", "directory"sv);
  call.Expect(!null, "the first argument is not null");
  call.Expect(!*name, kReceiverNotCleared);
  const auto found = call->directories.find(ToHandle(directory));
  if (!call.Expect(found != call->directories.end(), kNotOpen)) return call.Refuse(name);
  if (call.Fails()) return call.Refuse(name);
  StandInPhone::Directory& opened = found->second;
  opened.handedOut.reset();
  if (opened.next == opened.names.size()) return kSuccess;
  opened.handedOut = std::make_unique<std::string>(opened.names[opened.next++]);
  *name = opened.handedOut->c_str();
  return kSuccess;
}

std::int32_t AFCFileRefOpen(std::uint32_t connection, const char* path, std::uint64_t mode,
                            std::uint64_t* reference) {
  const Call call("AFCFileRefOpen", path, mode);
  call.Expect(*reference == 0, kReceiverNotCleared);
  const std::optional<PhoneEntry> entry = EntryAt(call, connection, path);
  if (!call.Expect(mode == 2, "the mode is not 2") || !entry || entry->isFolder) {
    return call.Refuse(reference);
  }
  *reference = ++call->lastHandle;
  call->files[*reference] = call->setUp.files->Open(path);
  return kSuccess;
}

std::int32_t AFCFileRefRead(std::uint32_t connection, std::uint64_t reference, void* buffer,
                            std::uint32_t* length) {
  const Call call("AFCFileRefRead", *length);
  const auto found = call->files.find(reference);
  if (!IsConnection(call, connection) || !call.Expect(found != call->files.end(), kNotOpen) ||
      call.Fails()) {
    return call.Refuse(length);
  }
  const std::uint32_t longest = std::min(*length, call->setUp.longestRead);
  found->second->read(static_cast<char*>(buffer), static_cast<std::streamsize>(longest));
  *length = static_cast<std::uint32_t>(found->second->gcount());
  return kSuccess;
}

std::int32_t AFCFileRefClose(std::uint32_t connection, std::uint64_t reference) {
  const Call call("AFCFileRefClose", "file"sv);
  IsConnection(call, connection);
  call.Expect(call->files.erase(reference) == 1, kNotOpen);
  return call.Result();
}

std::int32_t AFCFileInfoOpen(std::uint32_t connection, const char* path,
                             quaylink::AfcInformation** information) {
  const Call call("AFCFileInfoOpen", path);
  call.Expect(!*information, kReceiverNotCleared);
  const std::optional<PhoneEntry> entry = EntryAt(call, connection, path);
  if (!entry) return call.Refuse(information);
  call->information[++call->lastHandle].pairs = InformationOn(call->setUp, path, *entry);
  *information = ToPointer<quaylink::AfcInformation>(call->lastHandle);
  return kSuccess;
}

std::int32_t AFCKeyValueRead(quaylink::AfcInformation* information, const char** key,
                             const char** value) {
  const Call call("AFCKeyValueRead", "information"sv);
  call.Expect(!*key && !*value, kReceiverNotCleared);
  const auto found = call->information.find(ToHandle(information));
  if (!call.Expect(found != call->information.end(), kNotOpen) || call.Fails()) {
    return call.Refuse(key, value);
  }
  StandInPhone::Information& opened = found->second;
  opened.handedOut.reset();
  if (opened.next == opened.pairs.size()) return kSuccess;
  using Pair = InformationPairs::value_type;
  opened.handedOut = std::make_unique<Pair>(opened.pairs[opened.next++]);
  *key = opened.handedOut->first.c_str();
  *value = opened.handedOut->second ? opened.handedOut->second->c_str() : nullptr;
  return kSuccess;
}

std::int32_t AFCKeyValueClose(quaylink::AfcInformation* information) {
  const Call call("AFCKeyValueClose", "information"sv);
  call.Expect(call->information.erase(ToHandle(information)) == 1, kNotOpen);
  return call.Result();
}
