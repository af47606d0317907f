// Strings inside the program are UTF-8. What comes from a player may hold any byte, so everything
// that looks at characters decodes them here first.
#pragma once

#include <string>
#include <string_view>

namespace quaylink::cli {

// Stands for bytes that are not UTF-8.
inline constexpr char32_t kReplacement = 0xFFFD;

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

// True for the characters that MakePrintable replaces.
bool IsControl(char32_t character);

}  // namespace quaylink::cli
