// A stand-in for an attached phone and the maker's two libraries, written from what the bridge
// expects of them. It logs every call with its arguments, in order, and complains about a handle
// that is used when it is not open, about handles that are never closed, about arguments that
// cannot be right, and about calls that break the order of a session. Which service-name object is
// used when, and a session that is still open in the end, are left to the caller.
#pragma once

#include <array>
#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "mobile/entry_points.h"
#include "stand_in_phone/low_text.h"
#include "stand_in_phone/phone_files.h"

namespace quaylink::stand_in {

// When a subscriber is told of the phone. kFromAnotherThread: after a delay, beside whatever it
// does meanwhile. kNever leaves it to Announce().
enum class Announcement { kBeforeSubscribeReturns, kFromAnotherThread, kNever };

// Calls of one entry point that fail: `skip` of them still succeed, then `count` fail.
struct FailingCalls {
  unsigned skip = 0;
  unsigned count = 1;
};

// Key/value pairs given about an entry. A value may be null.
using InformationPairs = std::vector<std::pair<std::string, std::optional<std::string>>>;

struct PhoneSetUp {
  std::shared_ptr<const PhoneFiles> files = std::make_shared<MemoryFiles>();

  Announcement announcement = Announcement::kBeforeSubscribeReturns;
  std::chrono::microseconds announcementDelay{0};
  std::uint32_t readyWord = 1;            // at byte 16 of the device record
  std::uint32_t workFolderReadyWord = 1;  // at byte 28
  std::optional<std::string> identifier = "00112233445566778899aabbccddeeff00112233";

  // By path, in place of what the phone would tell itself.
  std::map<std::string, InformationPairs, std::less<>> information = {};

  bool paired = true;
  std::filesystem::path pairingRecords = {};  // where pairing leaves a record; empty: nowhere

  std::map<std::string, FailingCalls, std::less<>> failures = {};  // by the entry point's name

  void (*aroundCalls)(bool begins) = nullptr;  // told of the beginning and the end of each call

  std::filesystem::path logFile = {};  // every call and complaint is added to it; empty: none
};

class StandInPhone {
 public:
  explicit StandInPhone(PhoneSetUp setUp = {});
  // Adds what was never closed to the log file.
  ~StandInPhone();
  StandInPhone(const StandInPhone&) = delete;
  StandInPhone& operator=(const StandInPhone&) = delete;

  // To be changed only while nothing is announced from another thread.
  PhoneSetUp setUp;

  // Tells every subscriber of the phone, on the calling thread.
  void Announce();

  // The calls so far, such as AFCDirectoryOpen(3, "/"); or only those of one entry point.
  std::vector<std::string> Log() const;
  std::vector<std::string> Log(std::string_view entryPoint) const;
  // The names of the entry points called so far.
  std::vector<std::string> CalledNames() const;
  void ForgetLog();
  // What went wrong so far, directories, information,
  // files and subscriptions that are still open included.
  std::vector<std::string> Complaints() const;
  bool IsSessionOpen() const;

  // The entry points.
  Allocator* GetDefaultAllocator();
  StringEncoding GetSystemEncoding();
  ServiceName* CreateString(Allocator* allocator, const char* text, StringEncoding encoding);

  Status Subscribe(NotificationCallback callback, std::array<std::uint32_t, 3> zeros,
                   NotificationHandle* subscription);
  Status Unsubscribe(NotificationHandle subscription);
  Status Connect(void* device);
  Status Disconnect(void* device);
  Status StartSession(void* device);
  Status StopSession(void* device);
  Status StartService(void* device, ServiceName* name, ServiceHandle* service, std::uint32_t* word);
  Status IsPaired(void* device);
  Status ValidatePairing(void* device);
  Status Pair(void* device);

  Status OpenConnection(ServiceHandle service, std::uint32_t zero, AfcConnection* connection);
  Status CloseConnection(AfcConnection connection);
  Status OpenDirectory(AfcConnection connection, const char* path, AfcDirectory** directory);
  Status CloseDirectory(const void* null, AfcDirectory* directory);
  Status ReadDirectory(const void* null, AfcDirectory* directory, const char** name);
  Status OpenFile(AfcConnection connection, const char* path, std::uint64_t mode,
                  FileReference* reference);
  Status ReadFile(AfcConnection connection, FileReference reference, void* buffer,
                  std::uint32_t* length);
  Status CloseFile(AfcConnection connection, FileReference reference);
  Status OpenInformation(AfcConnection connection, const char* path, AfcInformation** information);
  Status ReadKeyValue(AfcInformation* information, const char** key, const char** value);
  Status CloseInformation(AfcInformation* information);

 private:
  using Handle = std::uint32_t;
  using DeviceRecord = std::array<std::uint32_t, 16>;
  struct Directory {
    std::vector<std::string> names;
    std::size_t next = 0;
    std::unique_ptr<std::string>
        handedOut;  // replaced at every read, so that an old name is no longer valid
  };
  struct Information {
    InformationPairs pairs;
    std::size_t next = 0;
    std::unique_ptr<std::pair<std::string, std::optional<std::string>>> handedOut;
  };

  // Logs a call; true when it is to fail. This and the following need the mutex.
  bool Fails(std::string_view entryPoint, const std::string& arguments);
  // Complains when the condition does not hold, and gives it back.
  bool Expect(bool condition, std::string_view entryPoint, std::string_view complaint);
  bool ExpectDevice(std::string_view entryPoint, const void* device);
  bool ExpectPath(std::string_view entryPoint, AfcConnection connection, const char* path);
  void WriteToFile(std::string_view line) const;
  std::vector<std::string> NeverClosed() const;
  InformationPairs InformationOn(std::string_view path, const PhoneEntry& entry) const;

  void AnnounceTo(NotificationHandle subscription);
  void JoinAnnouncer();

  mutable std::mutex mutex_;
  std::vector<std::string> log_;
  std::vector<std::string> complaints_;

  LowText identifier_;
  DeviceRecord deviceRecord_ = {};  // as it was announced last
  std::map<NotificationHandle, NotificationCallback> subscriptions_;
  std::thread announcer_;
  std::condition_variable subscriptionsChanged_;

  bool connected_ = false;
  bool sessionOpen_ = false;
  Handle lastHandle_ = 0;
  std::set<ServiceHandle> services_;
  std::set<AfcConnection> connections_;
  std::map<Handle, Directory> directories_;
  std::map<Handle, Information> information_;
  std::map<FileReference, std::unique_ptr<std::istream>> files_;
  std::vector<std::unique_ptr<ServiceName>> names_;  // callers need not release them
};

}  // namespace quaylink::stand_in
