#include <cstring>

#include "stand_in_phone/low_text.h"

namespace quaylink::stand_in {

static_assert(sizeof(void*) == sizeof(std::uint32_t), "built for 32-bit Windows only");

LowText::LowText(const std::string& text) : size_(text.size() + 1), memory_(new char[size_]) {
  std::memcpy(memory_, text.c_str(), size_);
}

LowText::~LowText() {
  delete[] memory_;
}

}  // namespace quaylink::stand_in
