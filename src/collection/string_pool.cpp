#include "collection/string_pool.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "common/utf16.h"

namespace quaylink {

namespace {

constexpr char32_t kReplacement = 0xFFFD;
constexpr std::size_t kRun = 16;  // units that are looked at together

// At most four bytes.
char* PutCharacter(char32_t c, char* to) {
  const auto put = [&to](char32_t byte) { *to++ = static_cast<char>(byte); };
  if (c < 0x80) {
    put(c);
  } else if (c < 0x800) {
    put(0xC0 | c >> 6);
    put(0x80 | (c & 0x3F));
  } else if (c < 0x10000) {
    put(0xE0 | c >> 12);
    put(0x80 | (c >> 6 & 0x3F));
    put(0x80 | (c & 0x3F));
  } else {
    put(0xF0 | c >> 18);
    put(0x80 | (c >> 12 & 0x3F));
    put(0x80 | (c >> 6 & 0x3F));
    put(0x80 | (c & 0x3F));
  }
  return to;
}

// Most strings are ASCII for the most part. True when all of the run is, and none of it a NUL; then
// it has been put there.
bool PutAsciiRun(const char16_t* units, char* to) {
  std::uint32_t others = 0;
  for (std::size_t i = 0; i < kRun; ++i) {
    others |= static_cast<std::uint32_t>(units[i] > 0x7F) | static_cast<std::uint32_t>(!units[i]);
    to[i] = static_cast<char>(units[i]);
  }
  return others == 0;
}

// Three bytes are enough for each unit, but for kRun more.
char* PutUtf16(std::u16string_view text, char* to) {
  const char16_t* from = text.data();
  const char16_t* const end = from + text.size();
  while (from != end) {
    if (static_cast<std::size_t>(end - from) >= kRun && PutAsciiRun(from, to)) {
      from += kRun;
      to += kRun;
      continue;
    }
    for (const char16_t* const runEnd = from + std::min<std::ptrdiff_t>(kRun, end - from);
         from < runEnd;) {
      char32_t c = *from++;
      if (c == 0) return to;
      if (IsHighSurrogate(c) && from != end && IsLowSurrogate(*from)) {
        c = 0x10000 + ((c - 0xD800) << 10) + (*from++ - 0xDC00u);
      } else if (IsHighSurrogate(c) || IsLowSurrogate(c)) {
        c = kReplacement;
      }
      to = PutCharacter(c, to);
    }
  }
  return to;
}

// The length of the character at the beginning, 0 when there is none.
std::size_t CharacterLength(std::string_view bytes) {
  const auto byte = [bytes](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
  const unsigned first = byte(0);
  const std::size_t length = first < 0x80   ? 1
                             : first < 0xC2 ? 0
                             : first < 0xE0 ? 2
                             : first < 0xF0 ? 3
                             : first < 0xF5 ? 4
                                            : 0;
  if (length > bytes.size()) return 0;
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0) != 0x80) return 0;
  }
  // Neither longer than need be, nor half a pair, nor beyond the last character.
  const bool sound =
      length < 2 || !((first == 0xE0 && byte(1) < 0xA0) || (first == 0xED && byte(1) > 0x9F) ||
                      (first == 0xF0 && byte(1) < 0x90) || (first == 0xF4 && byte(1) > 0x8F));
  return sound ? length : 0;
}

}  // namespace

const char* StringPool::Add(std::u16string_view text) {
  if (text.empty()) return "";
  return Keep(PutUtf16(text, Scratch(text.size() * 3 + kRun)));
}

const char* StringPool::AddLocation(std::u16string_view text) {
  if (text.empty()) return "";
  char* const begin = Scratch(text.size() * 3 + kRun);
  char* const end = PutUtf16(text, begin);
  std::replace(begin, end, ':', '/');
  return Keep(end);
}

const char* StringPool::Add(std::string_view utf8) {
  utf8 = utf8.substr(0, utf8.find('\0'));
  if (utf8.empty()) return "";
  char* to = Scratch(utf8.size() * 3);
  while (!utf8.empty()) {
    const std::size_t length = CharacterLength(utf8);
    if (length == 0) {
      to = PutCharacter(kReplacement, to);
    } else {
      to = std::copy_n(utf8.data(), length, to);
    }
    utf8.remove_prefix(std::max<std::size_t>(length, 1));
  }
  return Keep(to);
}

char* StringPool::Scratch(std::size_t size) {
  if (size > scratchSize_) {
    scratch_ = nullptr;
    scratchSize_ = 0;
    const std::size_t larger = std::max<std::size_t>(size, 1024);
    scratch_ = std::make_unique_for_overwrite<char[]>(larger);
    scratchSize_ = larger;
  }
  return scratch_.get();
}

// Keeps what was made in the scratch memory.
char* StringPool::Keep(const char* end) {
  const auto length = static_cast<std::size_t>(end - scratch_.get());
  auto* const kept = static_cast<char*>(memory_.Allocate(length + 1, 1));
  std::memcpy(kept, scratch_.get(), length);
  kept[length] = '\0';
  return kept;
}

}  // namespace quaylink
