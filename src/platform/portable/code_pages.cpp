// Strings in the ANSI code page, in UTF-16 and in UTF-8.
#include <algorithm>
#include <iterator>

#include "common/unicode.h"
#include "platform/portable/machine.h"

namespace quaylink {
namespace {

// The characters of bytes 0x80 to 0x9F in code page 1252; the other bytes are their own characters.
constexpr char16_t kWesternEuropean80To9F[] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

char WesternEuropeanByte(char16_t c) {
  if (c < 0x80 || (c >= 0xA0 && c < 0x100)) return static_cast<char>(c);
  const auto* const found = std::ranges::find(kWesternEuropean80To9F, c);
  if (found == std::end(kWesternEuropean80To9F)) return '?';
  return static_cast<char>(0x80 + (found - kWesternEuropean80To9F));
}

}  // namespace

BOOL IsDBCSLeadByte(BYTE byte) {
  const bool japanese = portable::CurrentMachine().ansiCodePage == 932;
  return japanese && ((byte >= 0x81 && byte <= 0x9F) || (byte >= 0xE0 && byte <= 0xFC)) ? 1 : 0;
}

int WideCharToMultiByte(UINT codePage, DWORD flags, const WCHAR* wide, int wideLength, char* bytes,
                        int byteCapacity, const char* defaultChar, BOOL* usedDefaultChar) {
  const UINT ansi = portable::CurrentMachine().ansiCodePage;
  const bool isKnownUse = codePage == CP_ACP && (ansi == CP_UTF8 || ansi == 1252) && flags == 0 &&
                          !defaultChar && !usedDefaultChar;
  if (!isKnownUse || !wide || wideLength == 0 || !bytes || byteCapacity <= 0) return 0;
  if (wideLength < 0) wideLength = static_cast<int>(std::char_traits<WCHAR>::length(wide)) + 1;
  // Most strings are ASCII characters alone, which are the same in all code pages.
  WCHAR allBits = 0;
  for (int i = 0; i < wideLength; ++i) allBits |= wide[i];
  if (allBits < 0x80 && wideLength <= byteCapacity) {
    for (int i = 0; i < wideLength; ++i) bytes[i] = static_cast<char>(wide[i]);
    return wideLength;
  }
  // Nothing is allocated here, so that running out of memory cannot end a conversion.
  int size = 0;
  for (std::u16string_view left(wide, static_cast<std::size_t>(wideLength)); !left.empty();) {
    char encoded[4] = {WesternEuropeanByte(left[0])};
    const int count = ansi == CP_UTF8 ? EncodeUtf8(TakeCharacter(left), encoded) : 1;
    if (ansi != CP_UTF8) left.remove_prefix(1);
    if (count > byteCapacity - size) return 0;
    std::copy_n(encoded, count, bytes + size);
    size += count;
  }
  return size;
}

namespace portable {

std::u16string WideStringOf(std::string_view ansi) {
  if (CurrentMachine().ansiCodePage == CP_UTF8) return Utf16Of(ansi);
  std::u16string wide;
  for (const char c : ansi) {
    const auto byte = static_cast<unsigned char>(c);
    wide.push_back(byte >= 0x80 && byte < 0xA0 ? kWesternEuropean80To9F[byte - 0x80] : byte);
  }
  return wide;
}

std::string Utf8StringOf(std::string_view ansi) {
  const bool isUtf8 = CurrentMachine().ansiCodePage == CP_UTF8;
  return isUtf8 ? std::string(ansi) : Utf8Of(WideStringOf(ansi));
}

std::string AnsiStringOf(std::string_view utf8) {
  if (CurrentMachine().ansiCodePage == CP_UTF8) return std::string(utf8);
  std::string ansi;
  std::ranges::transform(Utf16Of(utf8), std::back_inserter(ansi), WesternEuropeanByte);
  return ansi;
}

}  // namespace portable
}  // namespace quaylink
