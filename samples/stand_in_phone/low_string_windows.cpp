#include <cstring>

#include "stand_in_phone/low_string.h"

namespace quaylink::stand_in {

static_assert(sizeof(void*) == sizeof(std::uint32_t), "built for 32-bit Windows only");

LowString::LowString(const std::string& string)
    : size_(string.size() + 1), memory_(new char[size_]) {
  std::memcpy(memory_, string.c_str(), size_);
}

LowString::~LowString() {
  delete[] memory_;
}

}  // namespace quaylink::stand_in
