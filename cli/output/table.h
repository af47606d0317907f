// Tables for people: aligned columns, and long strings cut to the width of the terminal.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace quaylink::cli {

struct Column {
  std::string heading;
  bool isNumber;  // aligned to the right, and never cut
};

using Row = std::vector<std::string>;

// Rows of printable strings, one for each column, below a line of headings, for a terminal of that
// many columns. Strings are cut, though none to less than a few letters; 0 cuts nothing.
std::string Table(const std::vector<Column>& columns, const std::vector<Row>& rows,
                  std::size_t width);

// For a table on the standard output: the terminal's columns, or 0 when it is no terminal.
std::size_t TableWidth();

}  // namespace quaylink::cli
