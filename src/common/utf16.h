// The two halves of a character that takes a pair of UTF-16 units.
#pragma once

namespace quaylink {

constexpr bool IsHighSurrogate(char32_t unit) {
  return unit >= 0xD800 && unit < 0xDC00;
}

constexpr bool IsLowSurrogate(char32_t unit) {
  return unit >= 0xDC00 && unit < 0xE000;
}

}  // namespace quaylink
