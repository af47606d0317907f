// How wide a text is on a terminal: East Asian characters take two columns, combining marks none.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quaylink::cli {

// Columns that a printable text takes.
std::size_t DisplayWidth(std::string_view text);

// The text filled up with spaces to a width, or cut to it with an ellipsis at its end.
std::string Fit(std::string_view text, std::size_t width);

}  // namespace quaylink::cli
