// A stand-in for an attached phone and the vendor's two libraries, written from what the bridge
// expects of them. It logs every call with its arguments, in order, and complains about a handle
// that is used when it is not open, about handles that are never closed, about arguments that
// cannot be right, and about calls that break the order of a session. A session that is still open
// in the end is left to the caller.
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

#include "stand_in_phone/low_string.h"
#include "stand_in_phone/phone_files.h"
#include "stand_in_phone/vendor_functions.h"

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
  bool secondPhone = false;  // another phone is announced when the file connection opens

  // By path, in place of what the phone would tell itself.
  std::map<std::string, InformationPairs, std::less<>> information = {};
  std::uint32_t longestRead = UINT32_MAX;  // bytes that one read of a file gives at most

  bool paired = true;
  std::filesystem::path pairingRecords = {};  // where pairing leaves a record; empty: nowhere

  std::map<std::string, FailingCalls, std::less<>> failures = {};  // by the entry point's name
  bool garbage = false;                      // failing calls write garbage to their outputs
  std::optional<unsigned> unplugAfter = {};  // that many calls; all later ones fail
  bool comesBack =
      false;  // the next subscriber finds it plugged in again, as another device record

  void (*aroundCalls)(bool begins) = nullptr;  // told when the phone's code begins and ends to run

  std::filesystem::path logFile = {};  // every call and complaint is added to it; empty: none
};

using DeviceRecord = std::array<std::uint32_t, 16>;
using Callback = void (*)(const NotificationRecord* record);

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

  // The calls so far, such as AFCDirectoryOpen("/"); or only those of one entry point.
  std::vector<std::string> Log(std::string_view entryPoint = {}) const;
  // The names of the entry points called so far.
  std::vector<std::string> CalledNames() const;
  void ForgetLog();
  // What went wrong so far, directories, information, files and subscriptions that are still open
  // included.
  std::vector<std::string> Complaints() const;
  bool IsSessionOpen() const;

  // What follows is for the entry points.
  void AnnounceTo(std::uint32_t subscription);
  void JoinAnnouncer();

  // From here on with the mutex. Logs a call; true when it is to fail.
  bool Fails(std::string_view entryPoint, const std::string& arguments);
  // Complains when the condition does not hold, and gives it back.
  bool Expect(bool condition, std::string_view entryPoint, std::string_view complaint);
  DeviceRecord MakeRecord(std::uint32_t opaque);

  struct Directory {
    std::vector<std::string> names;
    std::size_t next = 0;
    // Replaced at every read, so that an old name is no longer valid.
    std::unique_ptr<std::string> handedOut;
  };
  struct Information {
    InformationPairs pairs;
    std::size_t next = 0;
    std::unique_ptr<InformationPairs::value_type> handedOut;
  };

  mutable std::mutex mutex;
  std::map<std::uint32_t, Callback> subscriptions;
  std::condition_variable subscriptionsChanged;
  std::thread announcer;
  Callback lastCallback = nullptr;
  std::uint32_t lastHandle = 0;

  bool pluggedIn = true;
  std::uint32_t opaqueWord = 0x5EED0000u;  // another one each time it is plugged in
  DeviceRecord deviceRecord = {};          // as it was announced last
  std::vector<DeviceRecord> otherRecords;  // from before it was unplugged, and of another phone
  bool connected = false;
  bool sessionOpen = false;
  std::set<std::uint32_t> services;
  std::set<std::uint32_t> connections;
  std::map<std::uint32_t, Directory> directories;
  std::map<std::uint32_t, Information> information;
  std::map<std::uint64_t, std::unique_ptr<std::istream>> files;
  std::vector<std::unique_ptr<ServiceName, void (*)(ServiceName*)>> names;  // nobody releases them

 private:
  void WriteToFile(std::string_view line) const;
  std::vector<std::string> NeverClosed() const;

  std::vector<std::string> log_;
  std::vector<std::string> complaints_;
  LowString identifier_;
};

// The phone that the entry points act on: the given one, or the one that the environment describes
// as long as none was given.
StandInPhone& CurrentPhone();
void SetCurrentPhone(StandInPhone* phone);

}  // namespace quaylink::stand_in
