#include "cli/output/track_list.h"

#include <algorithm>
#include <string_view>

#include "cli/output/table.h"

namespace quaylink::cli {
namespace {

void AppendCsvValue(std::string& csv, std::string_view string) {
  if (string.find_first_of(",\"\r\n") == std::string_view::npos) {
    csv += string;
    return;
  }
  csv += '"';
  for (const char character : string) {
    if (character == '"') csv += '"';
    csv += character;
  }
  csv += '"';
}

}  // namespace

std::string TrackTable(const std::vector<Track>& tracks, const std::vector<const Property*>& others,
                       std::size_t width) {
  std::vector<const Property*> properties;
  for (const char* key : {"index", "artist", "album", "title", "lengthMs"}) {
    properties.push_back(FindProperty(key));
  }
  for (const Property* property : others) {
    if (std::ranges::count(properties, property) == 0) properties.push_back(property);
  }
  std::vector<Column> columns;
  for (const Property* property : properties) {
    columns.push_back({std::string(property->heading), !property->IsString()});
  }
  std::vector<Row> rows;
  rows.reserve(tracks.size());
  for (const Track& track : tracks) {
    Row& row = rows.emplace_back();
    for (const Property* property : properties) row.push_back(ShownValueOf(track, *property));
  }
  return Table(columns, rows, width);
}

std::string TrackCsv(const std::vector<Track>& tracks) {
  std::string csv;
  for (const Property& property : Properties()) {
    csv += csv.empty() ? "" : ",";
    csv += property.key;
  }
  csv += '\n';
  for (const Track& track : tracks) {
    for (const Property& property : Properties()) {
      if (&property != Properties().data()) csv += ',';
      AppendCsvValue(csv, ValueOf(track, property));
    }
    csv += '\n';
  }
  return csv;
}

}  // namespace quaylink::cli
