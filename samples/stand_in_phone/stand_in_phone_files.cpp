// The file service of a stand-in phone.
#include <cstring>

#include "stand_in_phone/call_text.h"
#include "stand_in_phone/stand_in_phone.h"

namespace quaylink::stand_in {
namespace {

constexpr std::string_view kNotOpen = "the handle is not open";
constexpr std::string_view kReceiverNotCleared =
    "the receiving place was not cleared before the call";
constexpr std::size_t kLongestPath = 255;

// Handles of directories and information are pointers to the caller, and never followed.
template <class Object>
Object* ToPointer(std::uint32_t handle) {
  return reinterpret_cast<Object*>(std::uintptr_t{handle});  // NOLINT(performance-no-int-to-ptr)
}

std::uint32_t ToHandle(const void* pointer) {
  return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(pointer));
}

}  // namespace

bool StandInPhone::ExpectPath(std::string_view entryPoint, AfcConnection connection,
                              const char* path) {
  return Expect(connections_.contains(connection), entryPoint, "no such connection") &&
         Expect(path != nullptr && path[0] == '/' && std::strlen(path) <= kLongestPath, entryPoint,
                "not a device path");
}

Status StandInPhone::OpenConnection(ServiceHandle service, std::uint32_t zero,
                                    AfcConnection* connection) {
  constexpr std::string_view kName = "AFCConnectionOpen";
  JoinAnnouncer();
  const std::lock_guard lock(mutex_);
  if (Fails(kName, ArgumentList("service", zero))) return kFailure;
  Expect(zero == 0, kName, "the second argument is not 0");
  if (!Expect(services_.contains(service), kName, "no such service")) return kFailure;
  *connection = ++lastHandle_;
  connections_.insert(*connection);
  return kSuccess;
}

Status StandInPhone::CloseConnection(AfcConnection connection) {
  constexpr std::string_view kName = "AFCConnectionClose";
  const std::lock_guard lock(mutex_);
  const bool fails = Fails(kName, "connection");
  Expect(connections_.erase(connection) == 1, kName, kNotOpen);
  Expect(directories_.empty() && information_.empty() && files_.empty(), kName,
         "something is still open");
  return fails ? kFailure : kSuccess;
}

Status StandInPhone::OpenDirectory(AfcConnection connection, const char* path,
                                   AfcDirectory** directory) {
  constexpr std::string_view kName = "AFCDirectoryOpen";
  const std::lock_guard lock(mutex_);
  if (Fails(kName, Quoted(path)) || !ExpectPath(kName, connection, path)) return kFailure;
  const std::optional<PhoneEntry> entry = setUp.files->Find(path);
  if (!entry || !entry->isFolder) return kFailure;
  Directory& opened = directories_[++lastHandle_];
  opened.names = setUp.files->Names(path);
  opened.names.insert(opened.names.begin(), {".", ".."});
  *directory = ToPointer<AfcDirectory>(lastHandle_);
  return kSuccess;
}

Status StandInPhone::CloseDirectory(const void* null, AfcDirectory* directory) {
  constexpr std::string_view kName = "AFCDirectoryClose";
  const std::lock_guard lock(mutex_);
  const bool fails = Fails(kName, "directory");
  Expect(null == nullptr, kName, "the first argument is not null");
  Expect(directories_.erase(ToHandle(directory)) == 1, kName, kNotOpen);
  return fails ? kFailure : kSuccess;
}

Status StandInPhone::ReadDirectory(const void* null, AfcDirectory* directory, const char** name) {
  constexpr std::string_view kName = "AFCDirectoryRead";
  const std::lock_guard lock(mutex_);
  const bool fails = Fails(kName, "directory");
  Expect(null == nullptr, kName, "the first argument is not null");
  Expect(*name == nullptr, kName, kReceiverNotCleared);
  const auto found = directories_.find(ToHandle(directory));
  if (!Expect(found != directories_.end(), kName, kNotOpen) || fails) return kFailure;
  Directory& opened = found->second;
  opened.handedOut.reset();
  if (opened.next < opened.names.size()) {
    opened.handedOut = std::make_unique<std::string>(opened.names[opened.next++]);
  }
  *name = opened.handedOut ? opened.handedOut->c_str() : nullptr;
  return kSuccess;
}

Status StandInPhone::OpenFile(AfcConnection connection, const char* path, std::uint64_t mode,
                              FileReference* reference) {
  constexpr std::string_view kName = "AFCFileRefOpen";
  const std::lock_guard lock(mutex_);
  if (Fails(kName, ArgumentList(Quoted(path), mode)) || !ExpectPath(kName, connection, path)) {
    return kFailure;
  }
  Expect(*reference == 0, kName, kReceiverNotCleared);
  const std::optional<PhoneEntry> entry = setUp.files->Find(path);
  if (!Expect(mode == 2, kName, "the mode is not 2") || !entry || entry->isFolder) return kFailure;
  *reference = ++lastHandle_;
  files_[*reference] = setUp.files->Open(path);
  return kSuccess;
}

Status StandInPhone::ReadFile(AfcConnection connection, FileReference reference, void* buffer,
                              std::uint32_t* length) {
  constexpr std::string_view kName = "AFCFileRefRead";
  const std::lock_guard lock(mutex_);
  const bool fails = Fails(kName, ArgumentList(*length));
  Expect(connections_.contains(connection), kName, "no such connection");
  const auto found = files_.find(reference);
  if (!Expect(found != files_.end(), kName, kNotOpen) || fails) return kFailure;
  found->second->read(static_cast<char*>(buffer), static_cast<std::streamsize>(*length));
  *length = static_cast<std::uint32_t>(found->second->gcount());
  return kSuccess;
}

Status StandInPhone::CloseFile(AfcConnection connection, FileReference reference) {
  constexpr std::string_view kName = "AFCFileRefClose";
  const std::lock_guard lock(mutex_);
  const bool fails = Fails(kName, "file");
  Expect(connections_.contains(connection), kName, "no such connection");
  Expect(files_.erase(reference) == 1, kName, kNotOpen);
  return fails ? kFailure : kSuccess;
}

InformationPairs StandInPhone::InformationOn(std::string_view path, const PhoneEntry& entry) const {
  if (const auto own = setUp.information.find(path); own != setUp.information.end()) {
    return own->second;
  }
  return {{"st_size", std::to_string(entry.size)},
          {"st_blocks", "8"},
          {"st_nlink", "1"},
          {"st_ifmt", entry.isFolder ? "S_IFDIR" : "S_IFREG"},
          {"st_mtime", "1100000000000000000"}};
}

Status StandInPhone::OpenInformation(AfcConnection connection, const char* path,
                                     AfcInformation** information) {
  constexpr std::string_view kName = "AFCFileInfoOpen";
  const std::lock_guard lock(mutex_);
  if (Fails(kName, Quoted(path)) || !ExpectPath(kName, connection, path)) return kFailure;
  Expect(*information == nullptr, kName, kReceiverNotCleared);
  const std::optional<PhoneEntry> entry = setUp.files->Find(path);
  if (!entry) return kFailure;
  information_[++lastHandle_].pairs = InformationOn(path, *entry);
  *information = ToPointer<AfcInformation>(lastHandle_);
  return kSuccess;
}

Status StandInPhone::ReadKeyValue(AfcInformation* information, const char** key,
                                  const char** value) {
  constexpr std::string_view kName = "AFCKeyValueRead";
  const std::lock_guard lock(mutex_);
  const bool fails = Fails(kName, "information");
  Expect(*key == nullptr && *value == nullptr, kName, kReceiverNotCleared);
  const auto found = information_.find(ToHandle(information));
  if (!Expect(found != information_.end(), kName, kNotOpen) || fails) return kFailure;
  Information& opened = found->second;
  opened.handedOut.reset();
  if (opened.next == opened.pairs.size()) return kSuccess;
  using Pair = InformationPairs::value_type;
  opened.handedOut = std::make_unique<Pair>(opened.pairs[opened.next++]);
  *key = opened.handedOut->first.c_str();
  *value = opened.handedOut->second ? opened.handedOut->second->c_str() : nullptr;
  return kSuccess;
}

Status StandInPhone::CloseInformation(AfcInformation* information) {
  constexpr std::string_view kName = "AFCKeyValueClose";
  const std::lock_guard lock(mutex_);
  const bool fails = Fails(kName, "information");
  Expect(information_.erase(ToHandle(information)) == 1, kName, kNotOpen);
  return fails ? kFailure : kSuccess;
}

}  // namespace quaylink::stand_in
