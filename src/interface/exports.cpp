// The ten exported functions: they look the current manager up, keep exceptions in, and leave the
// rest to it.

#include <algorithm>
#include <new>

#include "interface/device_manager.h"
#include "platform/windows_api.h"
#include "quaylink/quaylink.h"

namespace quaylink {

namespace {

// Null while there is none. A plain pointer: nothing destroys a manager that still exists when the
// library is unloaded.
DeviceManager* currentManager = nullptr;

// While it lives, Windows shows the user no box about a drive without a disk or a library that
// cannot be loaded: such things are ordinary here.
class WithoutErrorBoxes {
 public:
  WithoutErrorBoxes() : earlier_(SetErrorMode(kNoBoxes)) { SetErrorMode(earlier_ | kNoBoxes); }
  ~WithoutErrorBoxes() { SetErrorMode(earlier_); }
  WithoutErrorBoxes(const WithoutErrorBoxes&) = delete;
  WithoutErrorBoxes& operator=(const WithoutErrorBoxes&) = delete;

 private:
  static constexpr UINT kNoBoxes = SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX;
  UINT earlier_;
};

// The result of an operation on the current manager, or `failure` when there is none or memory runs
// out.
template <class Result, class Operation>
Result WithManager(Result failure, Operation operation) {
  if (!currentManager) return failure;
  const WithoutErrorBoxes withoutErrorBoxes;
  try {
    return static_cast<Result>(operation(*currentManager));
  } catch (const std::bad_alloc&) {
    return failure;
  }
}

template <class Operation>
QuaylinkBool Succeeds(Operation operation) {
  return WithManager<QuaylinkBool>(0, operation);
}

}  // namespace

}  // namespace quaylink

using namespace quaylink;

uintptr_t QUAYLINK_CALL InitializeIPod() {
  auto* manager = new (std::nothrow) DeviceManager;
  if (!manager) return 0;
  TerminateIPod();
  currentManager = manager;
  return 1;
}

void QUAYLINK_CALL TerminateIPod() {
  delete currentManager;
  currentManager = nullptr;
}

QuaylinkBool QUAYLINK_CALL IsIPodConnected() {
  return Succeeds([](DeviceManager& manager) { return manager.Detect(); });
}

QuaylinkBool QUAYLINK_CALL ConnectIPod() {
  return Succeeds([](DeviceManager& manager) { return manager.Detect() && manager.OpenSession(); });
}

QuaylinkBool QUAYLINK_CALL DisconnectIPod() {
  Succeeds([](DeviceManager& manager) { return manager.CloseSession(); });
  return 1;
}

QuaylinkBool QUAYLINK_CALL CopyITunesDB(const char* destinationPath) {
  if (!destinationPath) return 0;
  return Succeeds([&](DeviceManager& manager) {
    return manager.Detect() && manager.CopyDatabase(destinationPath);
  });
}

int32_t QUAYLINK_CALL ParseITunesDB(const char* databasePath, int32_t maxRecords,
                                    TrackRecord* buffer) {
  if (!databasePath) return 0;
  return WithManager<int32_t>(0, [&](DeviceManager& manager) {
    if (!manager.Parse(databasePath)) return 0;
    const auto count = static_cast<int32_t>(manager.trackRecords.size());
    if (maxRecords == 0 || !buffer) return count;
    const int32_t copied = std::max(std::min(maxRecords, count), 0);
    std::copy_n(manager.trackRecords.begin(), copied, buffer);
    return copied;
  });
}

QuaylinkBool QUAYLINK_CALL CopyFileFromIPod(uint32_t recordIndex, const char* destinationPath) {
  if (!destinationPath) return 0;
  return Succeeds(
      [&](DeviceManager& manager) { return manager.CopyTrackFile(recordIndex, destinationPath); });
}

QuaylinkBool QUAYLINK_CALL EnumGenericFileFromIPod(QuaylinkBool autoConnect,
                                                   EnumFileCallback callback, void* context) {
  if (!callback) return 0;
  std::vector<std::string> files;
  const QuaylinkBool listed = Succeeds([&](DeviceManager& manager) {
    return (!autoConnect || manager.Detect()) && manager.EnumerateFiles(autoConnect != 0, files);
  });
  if (!listed) return 0;
  // The callback may destroy the manager, and what it throws is not ours to catch.
  for (const std::string& file : files) {
    char devicePath[256];
    devicePath[file.copy(devicePath, sizeof devicePath - 1)] = '\0';
    callback(devicePath, context);
  }
  return 1;
}

QuaylinkBool QUAYLINK_CALL CopyGenericFileFromIPod(QuaylinkBool autoConnect, const char* devicePath,
                                                   const char* destinationPath) {
  if (!devicePath || !destinationPath) return 0;
  return Succeeds([&](DeviceManager& manager) {
    return (!autoConnect || manager.Detect()) &&
           manager.CopyGenericFile(autoConnect != 0, devicePath, destinationPath);
  });
}
