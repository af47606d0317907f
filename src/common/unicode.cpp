#include "common/unicode.h"

#include "common/utf16.h"

namespace quaylink {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

char32_t TakeCharacter(std::string_view& utf8) {
  const auto lead = static_cast<unsigned char>(utf8[0]);
  const int following = lead < 0xC2 || lead > 0xF4 ? 0 : lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
  utf8.remove_prefix(1);
  if (following == 0) return lead < 0x80 ? lead : kReplacement;
  char32_t c = lead & (0x3Fu >> following);
  int read = 0;
  for (; read < following && !utf8.empty() && (utf8[0] & 0xC0) == 0x80; ++read) {
    c = (c << 6) | (static_cast<unsigned char>(utf8[0]) & 0x3Fu);
    utf8.remove_prefix(1);
  }
  constexpr char32_t kFirstOfLength[] = {0, 0x80, 0x800, 0x10000};
  const bool isWhole = read == following && c >= kFirstOfLength[following] && c <= 0x10FFFF;
  return isWhole && !IsHighSurrogate(c) && !IsLowSurrogate(c) ? c : kReplacement;
}

}  // namespace

char32_t TakeCharacter(std::u16string_view& utf16) {
  const char32_t first = utf16[0];
  const bool isPair = utf16.size() > 1 && IsHighSurrogate(first) && IsLowSurrogate(utf16[1]);
  const char32_t second = isPair ? utf16[1] : 0;
  utf16.remove_prefix(isPair ? 2 : 1);
  if (isPair) return 0x10000 + ((first - 0xD800) << 10) + (second - 0xDC00);
  return IsHighSurrogate(first) || IsLowSurrogate(first) ? kReplacement : first;
}

int EncodeUtf8(char32_t c, char (&bytes)[4]) {
  const int following = c < 0x80 ? 0 : c < 0x800 ? 1 : c < 0x10000 ? 2 : 3;
  constexpr char32_t kLeadMarks[] = {0, 0xC0, 0xE0, 0xF0};
  bytes[0] = static_cast<char>(kLeadMarks[following] | (c >> (6 * following)));
  for (int i = 1; i <= following; ++i) {
    bytes[i] = static_cast<char>(0x80 | ((c >> (6 * (following - i))) & 0x3F));
  }
  return following + 1;
}

std::string Utf8Of(std::u16string_view utf16) {
  std::string utf8;
  char bytes[4];
  while (!utf16.empty()) {
    const int size = EncodeUtf8(TakeCharacter(utf16), bytes);
    utf8.append(bytes, static_cast<std::size_t>(size));
  }
  return utf8;
}

std::u16string Utf16Of(std::string_view utf8) {
  std::u16string wide;
  while (!utf8.empty()) {
    char32_t c = TakeCharacter(utf8);
    if (c >= 0x10000) {
      wide.push_back(static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10)));
      c = 0xDC00 + ((c - 0x10000) & 0x3FF);
    }
    wide.push_back(static_cast<char16_t>(c));
  }
  return wide;
}

}  // namespace quaylink
