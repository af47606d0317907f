#include "platform/portable/texts.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "common/utf16.h"
#include "platform/portable/errors.h"
#include "platform/portable/machine.h"

namespace quaylink {
namespace {

using portable::Fail;

constexpr char32_t kReplacement = 0xFFFD;

// The characters of bytes 0x80 to 0x9F in code page 1252; the other bytes are their own characters.
constexpr char16_t kWesternEuropean80To9F[] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

// One character in its code page, and how many UTF-16 units it took.
struct Encoded {
  char bytes[4];
  int size;
  int unitsTaken;
};

Encoded EncodeUtf8(const WCHAR* wide, int unitCount) {
  char32_t c = wide[0];
  Encoded result = {};
  result.unitsTaken = 1;
  if (IsHighSurrogate(c) && unitCount > 1 && IsLowSurrogate(wide[1])) {
    c = 0x10000 + ((c - 0xD800) << 10) + (char32_t{wide[1]} - 0xDC00);
    result.unitsTaken = 2;
  } else if (IsHighSurrogate(c) || IsLowSurrogate(c)) {
    c = kReplacement;
  }
  if (c < 0x80) {
    result.bytes[result.size++] = static_cast<char>(c);
    return result;
  }
  const int following = c < 0x800 ? 1 : c < 0x10000 ? 2 : 3;
  constexpr char32_t kLeadMarks[] = {0, 0xC0, 0xE0, 0xF0};
  result.bytes[result.size++] = static_cast<char>(kLeadMarks[following] | (c >> (6 * following)));
  for (int shift = 6 * (following - 1); shift >= 0; shift -= 6) {
    result.bytes[result.size++] = static_cast<char>(0x80 | ((c >> shift) & 0x3F));
  }
  return result;
}

// The byte of a character in code page 1252, negative when it has none.
int WesternEuropeanByte(char16_t c) {
  if (c < 0x80 || (c >= 0xA0 && c < 0x100)) return c;
  const auto* const found = std::ranges::find(kWesternEuropean80To9F, c);
  if (found == std::end(kWesternEuropean80To9F)) return -1;
  return 0x80 + static_cast<int>(found - kWesternEuropean80To9F);
}

// Copies ASCII characters up to the first other one; the result is their number. Most texts are
// nothing else, so they go eight at a time, which compiles to a few wide instructions.
int CopyAscii(const WCHAR* wide, int count, char* bytes) {
  constexpr int kBlock = 8;
  int done = 0;
  for (; count - done >= kBlock; done += kBlock) {
    unsigned all = 0;
    for (int i = 0; i < kBlock; ++i) all |= wide[done + i];
    if (all >= 0x80) break;
    for (int i = 0; i < kBlock; ++i) bytes[done + i] = static_cast<char>(wide[done + i]);
  }
  for (; done < count && wide[done] < 0x80; ++done) bytes[done] = static_cast<char>(wide[done]);
  return done;
}

// The characters of a UTF-8 text in UTF-16.
std::u16string WidenUtf8(std::string_view text) {
  std::u16string wide;
  wide.reserve(text.size());
  for (std::size_t i = 0; i < text.size();) {
    const auto lead = static_cast<unsigned char>(text[i++]);
    const int following = lead < 0x80   ? 0
                          : lead < 0xC2 ? -1
                          : lead < 0xE0 ? 1
                          : lead < 0xF0 ? 2
                          : lead < 0xF5 ? 3
                                        : -1;
    char32_t c = following <= 0 ? lead : lead & (0x3Fu >> following);
    int read = 0;
    while (read < following && i < text.size() && (text[i] & 0xC0) == 0x80) {
      c = (c << 6) | (static_cast<unsigned char>(text[i++]) & 0x3Fu);
      ++read;
    }
    const bool tooShortForm = (following == 2 && c < 0x800) || (following == 3 && c < 0x10000);
    if (read != following || tooShortForm || c > 0x10FFFF || IsHighSurrogate(c) ||
        IsLowSurrogate(c)) {
      c = kReplacement;
    }
    if (c >= 0x10000) {
      wide.push_back(static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10)));
      c = 0xDC00 + ((c - 0x10000) & 0x3FF);
    }
    wide.push_back(static_cast<char16_t>(c));
  }
  return wide;
}

// The number of bytes that the text takes in the code page; negative when they do not fit.
int Convert(UINT codePage, const WCHAR* wide, int wideLength, char* bytes, int byteCapacity) {
  int written = 0;
  for (int taken = 0; taken < wideLength;) {
    const int count = std::min(wideLength - taken, byteCapacity - written);
    const int ascii = CopyAscii(wide + taken, count, bytes + written);
    taken += ascii;
    written += ascii;
    if (taken == wideLength) break;
    Encoded character = {};
    if (codePage == CP_UTF8) {
      character = EncodeUtf8(wide + taken, wideLength - taken);
    } else {
      const int byte = WesternEuropeanByte(wide[taken]);
      character = {{byte < 0 ? '?' : static_cast<char>(byte)}, 1, 1};
    }
    if (character.size > byteCapacity - written) return -1;
    std::memcpy(bytes + written, character.bytes, static_cast<std::size_t>(character.size));
    written += character.size;
    taken += character.unitsTaken;
  }
  return written;
}

std::string Narrow(UINT codePage, const std::u16string& wide) {
  std::string bytes(wide.size() * 3, '\0');
  const int size = Convert(codePage, wide.data(), static_cast<int>(wide.size()), bytes.data(),
                           static_cast<int>(bytes.size()));
  bytes.resize(static_cast<std::size_t>(size));
  return bytes;
}

}  // namespace

BOOL IsDBCSLeadByte(BYTE byte) {
  const bool japanese = portable::CurrentMachine().ansiCodePage == 932;
  return japanese && ((byte >= 0x81 && byte <= 0x9F) || (byte >= 0xE0 && byte <= 0xFC)) ? 1 : 0;
}

int WideCharToMultiByte(UINT codePage, DWORD flags, const WCHAR* wide, int wideLength, char* bytes,
                        int byteCapacity, const char* defaultChar, BOOL* usedDefaultChar) {
  const bool hasText = wide != nullptr && wideLength != 0;
  const bool hasRoom = bytes != nullptr && byteCapacity > 0;
  if (codePage != CP_ACP || flags != 0 || !hasText || !hasRoom || defaultChar != nullptr ||
      usedDefaultChar != nullptr) {
    return Fail(ERROR_INVALID_PARAMETER);
  }
  if (wideLength < 0) {
    wideLength = static_cast<int>(std::char_traits<WCHAR>::length(wide)) + 1;
  }
  const UINT ansi = portable::CurrentMachine().ansiCodePage;
  if (ansi != CP_UTF8 && ansi != 1252) return Fail(ERROR_INVALID_PARAMETER);
  const int size = Convert(ansi, wide, wideLength, bytes, byteCapacity);
  return size >= 0 ? size : Fail(ERROR_INSUFFICIENT_BUFFER);
}

namespace portable {

std::u16string WideTextOf(std::string_view ansiText) {
  if (CurrentMachine().ansiCodePage == CP_UTF8) return WidenUtf8(ansiText);
  std::u16string wide;
  wide.reserve(ansiText.size());
  for (const char c : ansiText) {
    const auto byte = static_cast<unsigned char>(c);
    wide.push_back(byte >= 0x80 && byte < 0xA0 ? kWesternEuropean80To9F[byte - 0x80] : byte);
  }
  return wide;
}

std::string HostTextOf(std::string_view ansiText) {
  if (CurrentMachine().ansiCodePage == CP_UTF8) return std::string(ansiText);
  return Narrow(CP_UTF8, WideTextOf(ansiText));
}

std::string AnsiTextOf(std::string_view hostText) {
  const UINT codePage = CurrentMachine().ansiCodePage;
  if (codePage == CP_UTF8) return std::string(hostText);
  return Narrow(codePage, WidenUtf8(hostText));
}

}  // namespace portable
}  // namespace quaylink
