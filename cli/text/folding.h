// Strings without what makes no difference: to a search, or to a file system that does not tell
// upper from lower case.
#pragma once

#include <string>
#include <string_view>

namespace quaylink::cli {

// In lower case, character by character. Accents stay.
std::string LowerCase(std::string_view string);

// As searches and orders see it: in lower case, without accents, and the same for composed and
// decomposed characters.
std::string SearchForm(std::string_view string);

}  // namespace quaylink::cli
