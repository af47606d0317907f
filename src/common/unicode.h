// Strings in UTF-8 and in UTF-16. What is ill-formed becomes U+FFFD.
#pragma once

#include <string>
#include <string_view>

namespace quaylink {

// The first character of a string that is not empty, which it takes off.
char32_t TakeCharacter(std::u16string_view& utf16);

// Writes a character in UTF-8; the result is the number of bytes, 1 to 4.
int EncodeUtf8(char32_t c, char (&bytes)[4]);

std::string Utf8Of(std::u16string_view utf16);
std::u16string Utf16Of(std::string_view utf8);

}  // namespace quaylink
