// How wide a string is on a terminal: East Asian characters take two columns, combining marks none.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quaylink::cli {

// Columns that a printable string takes.
std::size_t DisplayWidth(std::string_view string);

// The string filled up with spaces to a width, or cut to it with an ellipsis at its end.
std::string Fit(std::string_view string, std::size_t width);

}  // namespace quaylink::cli
