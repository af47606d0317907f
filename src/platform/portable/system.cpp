// Errors, the Windows version, waiting, and random identifiers.
#include <sys/random.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstring>
#include <thread>

#include "platform/portable/errors.h"
#include "platform/portable/machine.h"

namespace quaylink {
namespace {

thread_local DWORD lastError = 0;

// Random bytes are fetched for many identifiers at once: a system call costs most of all.
class RandomBytes {
 public:
  bool Take(void* bytes, std::size_t size) {
    if (left_ < size && !Refill()) return false;
    left_ -= size;
    std::memcpy(bytes, buffer_.data() + left_, size);
    return true;
  }

 private:
  bool Refill() {
    // Requests of up to 256 bytes are delivered whole or not at all.
    const ssize_t size = ::getrandom(buffer_.data(), buffer_.size(), 0);
    if (size != static_cast<ssize_t>(buffer_.size())) return false;
    left_ = buffer_.size();
    return true;
  }

  std::array<unsigned char, 256> buffer_ = {};
  std::size_t left_ = 0;
};

}  // namespace

UINT SetErrorMode(UINT mode) {
  static std::atomic<UINT> current = 0;  // no box is ever shown here
  return current.exchange(mode);
}

DWORD GetLastError() {
  return lastError;
}

void SetLastError(DWORD error) {
  lastError = error;
}

BOOL GetVersionExA(OSVERSIONINFOA* version) {
  if (version->dwOSVersionInfoSize != sizeof(OSVERSIONINFOA)) {
    return portable::Fail(ERROR_INSUFFICIENT_BUFFER);
  }
  const portable::Machine& machine = portable::CurrentMachine();
  *version = {sizeof(OSVERSIONINFOA), machine.majorVersion,
              machine.minorVersion,   0,
              machine.platformId,     ""};
  return 1;
}

void Sleep(DWORD milliseconds) {
  const auto& replacement = portable::CurrentMachine().sleep;
  if (replacement) {
    replacement(milliseconds);
  } else {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
  }
}

HRESULT CoCreateGuid(GUID* guid) {
  const auto& replacement = portable::CurrentMachine().createGuid;
  if (replacement) return replacement(guid);
  static RandomBytes random;
  if (!random.Take(guid, sizeof *guid)) return E_FAIL;
  // Version 4, random.
  guid->Data3 = static_cast<std::uint16_t>((guid->Data3 & 0x0FFF) | 0x4000);
  guid->Data4[0] = static_cast<std::uint8_t>((guid->Data4[0] & 0x3F) | 0x80);
  return S_OK;
}

}  // namespace quaylink
