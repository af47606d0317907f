#include "cli/track_list.h"

#include <algorithm>
#include <array>
#include <numeric>

#include "cli/display_width.h"
#include "cli/utf8.h"

namespace quaylink::cli {
namespace {

constexpr std::size_t kColumns = 5;
using Row = std::array<std::string, kColumns>;
using Widths = std::array<std::size_t, kColumns>;

constexpr std::string_view kGap = "  ";

Row PrintableRow(const Track& track) {
  return {std::to_string(track.index), MakePrintable(track.artist), MakePrintable(track.album),
          MakePrintable(track.title), MakePrintable(track.location)};
}

// Cuts the widest columns, all to one width, until the row fits. The numbers are never cut.
void Shrink(Widths& widths, std::size_t available) {
  constexpr std::size_t kNarrowest = 3;
  const auto sum = [&] { return std::accumulate(widths.begin(), widths.end(), std::size_t{0}); };
  while (sum() > available) {
    const auto widest = std::max_element(widths.begin() + 1, widths.end());
    if (*widest <= kNarrowest) return;
    --*widest;
  }
}

std::string Line(const Row& row, const Widths& widths) {
  std::string line(widths[0] - std::min(widths[0], row[0].size()), ' ');
  line += row[0];
  for (std::size_t column = 1; column < kColumns; ++column) {
    line += kGap;
    line += Fit(row[column], widths[column]);
  }
  line.erase(line.find_last_not_of(' ') + 1);
  return line + '\n';
}

std::string CsvValue(const std::string& string) {
  if (string.find_first_of(",\"\r\n") == std::string::npos) return string;
  std::string quoted = "\"";
  for (const char character : string) {
    if (character == '"') quoted += '"';
    quoted += character;
  }
  return quoted + '"';
}

}  // namespace

std::string TrackTable(const std::vector<Track>& tracks, std::size_t width) {
  std::vector<Row> rows = {{"#", "Artist", "Album", "Title", "Location"}};
  rows.reserve(tracks.size() + 1);
  for (const Track& track : tracks) rows.push_back(PrintableRow(track));
  Widths widths = {};
  for (const Row& row : rows) {
    for (std::size_t column = 0; column < kColumns; ++column) {
      widths[column] = std::max(widths[column], DisplayWidth(row[column]));
    }
  }
  const std::size_t gaps = kGap.size() * (kColumns - 1);
  if (width != 0) Shrink(widths, width > gaps ? width - gaps : 0);
  std::string table;
  for (const Row& row : rows) table += Line(row, widths);
  return table;
}

std::string TrackCsv(const std::vector<Track>& tracks) {
  std::string csv = "index,artist,album,title,location\n";
  for (const Track& track : tracks) {
    csv += std::to_string(track.index);
    for (const std::string* string : {&track.artist, &track.album, &track.title, &track.location}) {
      csv += ',' + CsvValue(*string);
    }
    csv += '\n';
  }
  return csv;
}

}  // namespace quaylink::cli
