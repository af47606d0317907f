// The mode of error boxes, the Windows version, waiting, and random identifiers.
#include <sys/random.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "platform/portable/machine.h"

namespace quaylink {

UINT SetErrorMode(UINT mode) {
  static std::atomic<UINT> current = 0;  // no box is ever shown here
  return current.exchange(mode);
}

BOOL GetVersionExA(OSVERSIONINFOA* version) {
  if (version->dwOSVersionInfoSize != sizeof(OSVERSIONINFOA)) return 0;
  const portable::Machine& machine = portable::CurrentMachine();
  version->dwMajorVersion = machine.majorVersion;
  version->dwMinorVersion = machine.minorVersion;
  version->dwPlatformId = machine.platformId;
  return 1;
}

void Sleep(DWORD milliseconds) {
  const auto& replacement = portable::CurrentMachine().sleep;
  if (replacement) return replacement(milliseconds);
  std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

HRESULT CoCreateGuid(GUID* guid) {
  const auto& replacement = portable::CurrentMachine().createGuid;
  if (replacement) return replacement(guid);
  if (::getrandom(guid, sizeof *guid, 0) != sizeof *guid) return E_FAIL;
  // Version 4, random.
  guid->Data3 = static_cast<std::uint16_t>((guid->Data3 & 0x0FFF) | 0x4000);
  guid->Data4[0] = static_cast<std::uint8_t>((guid->Data4[0] & 0x3F) | 0x80);
  return S_OK;
}

}  // namespace quaylink
