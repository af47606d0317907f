// 8-bit strings without regard to the case of ASCII letters.
#pragma once

#include <algorithm>
#include <string_view>

namespace quaylink {

constexpr char AsciiLower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

constexpr char AsciiUpper(char c) {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

constexpr bool EqualsIgnoringCase(std::string_view a, std::string_view b) {
  return std::ranges::equal(a, b, {}, AsciiLower, AsciiLower);
}

}  // namespace quaylink
