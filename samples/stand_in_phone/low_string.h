// A string whose address fits in 32 bits, whatever the build: the device record has no more room
// for it.
#pragma once

#include <cstdint>
#include <string>

namespace quaylink::stand_in {

class LowString {
 public:
  explicit LowString(const std::string& string);
  ~LowString();
  LowString(const LowString&) = delete;
  LowString& operator=(const LowString&) = delete;

  std::uint32_t Address() const {
    return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(memory_));
  }

 private:
  std::size_t size_;
  char* memory_ = nullptr;
};

}  // namespace quaylink::stand_in
