#include "cli/output/table.h"

#include <algorithm>
#include <numeric>
#include <string_view>

#include "cli/system/system.h"
#include "cli/text/display_width.h"

namespace quaylink::cli {
namespace {

using Widths = std::vector<std::size_t>;

constexpr std::string_view kGap = "  ";

// Cuts the widest columns of strings, all to one width, until the row fits.
void Shrink(Widths& widths, const std::vector<Column>& columns, std::size_t available) {
  constexpr std::size_t kNarrowest = 3;
  std::size_t sum = std::accumulate(widths.begin(), widths.end(), std::size_t{0});
  for (; sum > available; --sum) {
    std::size_t* widest = nullptr;
    for (std::size_t i = 0; i < columns.size(); ++i) {
      if (!columns[i].isNumber && (!widest || widths[i] > *widest)) widest = &widths[i];
    }
    if (!widest || *widest <= kNarrowest) return;
    --*widest;
  }
}

std::string Line(const Row& row, const std::vector<Column>& columns, const Widths& widths) {
  std::string line;
  for (std::size_t i = 0; i < columns.size(); ++i) {
    if (i > 0) line += kGap;
    if (columns[i].isNumber) {
      line.append(widths[i] - DisplayWidth(row[i]), ' ').append(row[i]);
    } else {
      line += Fit(row[i], widths[i]);
    }
  }
  line.erase(line.find_last_not_of(' ') + 1);
  return line + '\n';
}

}  // namespace

std::string Table(const std::vector<Column>& columns, const std::vector<Row>& rows,
                  std::size_t width) {
  Row headings;
  Widths widths;
  for (std::size_t i = 0; i < columns.size(); ++i) {
    headings.push_back(columns[i].heading);
    std::size_t& widest = widths.emplace_back(DisplayWidth(columns[i].heading));
    for (const Row& row : rows) widest = std::max(widest, DisplayWidth(row[i]));
  }
  const std::size_t gaps = kGap.size() * (columns.size() - 1);
  if (width != 0) Shrink(widths, columns, width > gaps ? width - gaps : 0);
  std::string table = Line(headings, columns, widths);
  for (const Row& row : rows) table += Line(row, columns, widths);
  return table;
}

std::size_t TableWidth() {
  return IsTerminal(Stream::kOutput) ? TerminalWidth(Stream::kOutput) : 0;
}

}  // namespace quaylink::cli
