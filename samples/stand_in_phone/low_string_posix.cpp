#include <sys/mman.h>

#include <cstring>
#include <new>

#include "stand_in_phone/low_string.h"

namespace quaylink::stand_in {

// The system takes an address as a wish, and grants it where nothing lies yet.
LowString::LowString(const std::string& string) : size_(string.size() + 1) {
  for (std::uintptr_t wish = 0x1000'0000; wish < 0x7000'0000; wish += 0x10'0000) {
    void* const address = reinterpret_cast<void*>(wish);  // NOLINT(performance-no-int-to-ptr)
    void* const memory =
        mmap(address, size_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) break;
    if (reinterpret_cast<std::uintptr_t>(memory) + size_ <= UINT32_MAX) {
      memory_ = static_cast<char*>(memory);
      std::memcpy(memory_, string.c_str(), size_);
      return;
    }
    munmap(memory, size_);
  }
  throw std::bad_alloc();
}

LowString::~LowString() {
  munmap(memory_, size_);
}

}  // namespace quaylink::stand_in
