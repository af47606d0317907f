// Strings as Windows has them: the system's own functions take UTF-16, the library those of the
// system's code page.
#pragma once

#include <string>
#include <string_view>

namespace quaylink::cli {

std::wstring ToWide(std::string_view string, unsigned codePage);
// Valid, whatever the string holds.
std::string ToUtf8(std::wstring_view wide);

}  // namespace quaylink::cli
