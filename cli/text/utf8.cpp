#include "cli/text/utf8.h"

#include <algorithm>
#include <cstddef>

namespace quaylink::cli {
namespace {

void Append(std::string& string, char32_t character) {
  const auto tail = [&](unsigned shift) {
    return static_cast<char>(0x80u | ((character >> shift) & 0x3Fu));
  };
  if (character < 0x80) {
    string += static_cast<char>(character);
  } else if (character < 0x800) {
    string += {static_cast<char>(0xC0u | (character >> 6)), tail(0)};
  } else if (character < 0x10000) {
    string += {static_cast<char>(0xE0u | (character >> 12)), tail(6), tail(0)};
  } else {
    string += {static_cast<char>(0xF0u | (character >> 18)), tail(12), tail(6), tail(0)};
  }
}

bool IsPrintableAscii(std::string_view string) {
  return std::ranges::all_of(string, [](char c) { return c >= 0x20 && c < 0x7F; });
}

}  // namespace

DecodedCharacter DecodeAt(std::string_view string, std::size_t position) {
  const auto lead = static_cast<unsigned char>(string[position]);
  if (lead < 0x80) return {lead, 1};
  constexpr DecodedCharacter kBadByte = {kReplacement, 1};
  const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || string.size() - position < length) return kBadByte;
  char32_t character = lead & (0xFFu >> (length + 1));
  for (std::size_t i = 1; i < length; ++i) {
    const auto next = static_cast<unsigned char>(string[position + i]);
    if ((next & 0xC0u) != 0x80) return kBadByte;
    character = (character << 6) | (next & 0x3Fu);
  }
  constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
  const bool surrogate = character >= 0xD800 && character <= 0xDFFF;
  if (character < kSmallest[length] || character > 0x10FFFF || surrogate) return kBadByte;
  return {character, length};
}

std::u32string Decode(std::string_view string) {
  std::u32string characters;
  characters.reserve(string.size());
  for (std::size_t position = 0; position < string.size();) {
    // Most characters are.
    if (static_cast<unsigned char>(string[position]) < 0x80) {
      characters += static_cast<unsigned char>(string[position++]);
      continue;
    }
    const DecodedCharacter next = DecodeAt(string, position);
    characters += next.character;
    position += next.size;
  }
  return characters;
}

std::string Encode(std::u32string_view characters) {
  std::string string;
  string.reserve(characters.size());
  for (const char32_t character : characters) Append(string, character);
  return string;
}

bool IsAscii(std::string_view string) {
  return std::ranges::all_of(string, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

std::string MakeValid(std::string_view string) {
  if (IsAscii(string)) return std::string(string);
  return Encode(Decode(string));
}

std::string MakePrintable(std::string_view string) {
  if (IsPrintableAscii(string)) return std::string(string);
  std::u32string characters = Decode(string);
  std::ranges::replace_if(characters, IsControl, kReplacement);
  return Encode(characters);
}

std::string MakeLinesPrintable(std::string_view lines) {
  std::u32string characters = Decode(lines);
  std::ranges::replace_if(
      characters, [](char32_t c) { return c != U'\n' && IsControl(c); }, kReplacement);
  return Encode(characters);
}

bool IsControl(char32_t character) {
  const bool turnsDirection =
      (character >= 0x202A && character <= 0x202E) || (character >= 0x2066 && character <= 0x2069);
  return character < 0x20 || (character >= 0x7F && character < 0xA0) || character == 0x2028 ||
         character == 0x2029 || turnsDirection;
}

}  // namespace quaylink::cli
