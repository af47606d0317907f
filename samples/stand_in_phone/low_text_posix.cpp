#include <sys/mman.h>

#include <cstdint>
#include <cstring>
#include <new>

#include "stand_in_phone/low_text.h"

namespace quaylink::stand_in {

LowText::LowText(const std::string& text) : size_(text.size() + 1), memory_(nullptr) {
  // Not every processor's system looks for low memory by itself.
  constexpr std::uintptr_t kStep = std::uintptr_t{1} << 20;
  constexpr int kFlags = MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED_NOREPLACE;
  void* memory = MAP_FAILED;
  for (std::uintptr_t address = kStep; memory == MAP_FAILED; address += kStep) {
    if (address + size_ > UINT32_MAX) throw std::bad_alloc();
    memory = mmap(reinterpret_cast<void*>(address), size_, PROT_READ | PROT_WRITE, kFlags, -1, 0);
  }
  memory_ = static_cast<char*>(memory);
  std::memcpy(memory_, text.c_str(), size_);
}

LowText::~LowText() {
  munmap(memory_, size_);
}

}  // namespace quaylink::stand_in
