// Texts in the machine's ANSI code page, in UTF-16 and in the host's UTF-8.
#pragma once

#include <string>
#include <string_view>

namespace quaylink::portable {

// A text of the ANSI code page in UTF-16. Bytes that the code page does not know become U+FFFD.
std::u16string WideTextOf(std::string_view ansiText);

// A text of the ANSI code page in the host's UTF-8, and back ("?" for what the code page lacks).
std::string HostTextOf(std::string_view ansiText);
std::string AnsiTextOf(std::string_view hostText);

}  // namespace quaylink::portable
