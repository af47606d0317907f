#include <sys/mman.h>

#include <cstring>
#include <new>

#include "stand_in_phone/low_text.h"

namespace quaylink::stand_in {

LowText::LowText(const std::string& text) : size_(text.size() + 1), memory_(nullptr) {
  void* memory =
      mmap(nullptr, size_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_32BIT, -1, 0);
  if (memory == MAP_FAILED) throw std::bad_alloc();
  memory_ = static_cast<char*>(memory);
  std::memcpy(memory_, text.c_str(), size_);
}

LowText::~LowText() {
  munmap(memory_, size_);
}

}  // namespace quaylink::stand_in
