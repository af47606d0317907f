// Strings inside the program are UTF-8. What comes from a player may hold any byte, so everything
// that looks at characters decodes them here first.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quaylink::cli {

// Stands for bytes that are not UTF-8.
inline constexpr char32_t kReplacement = 0xFFFD;

struct DecodedCharacter {
  char32_t character;
  std::size_t size;  // in bytes
};

// The character that begins at a place of a string. Over-long forms, surrogates and cut sequences
// count as one bad byte, which becomes kReplacement.
DecodedCharacter DecodeAt(std::string_view string, std::size_t position);

// The characters of a string. Each byte that belongs to no character becomes kReplacement.
std::u32string Decode(std::string_view string);

std::string Encode(std::u32string_view characters);

// Most strings are, and need no decoding.
bool IsAscii(std::string_view string);

// The string with everything that is not UTF-8 replaced: what JSON can carry.
std::string MakeValid(std::string_view string);

// As MakeValid; control characters and those that turn the writing direction are replaced too, so
// that a string from a player cannot steer the terminal.
std::string MakePrintable(std::string_view string);

// The same for several lines: their ends stay.
std::string MakeLinesPrintable(std::string_view lines);

// True for the characters that MakePrintable replaces.
bool IsControl(char32_t character);

}  // namespace quaylink::cli
