#include "cli/output/json.h"

#include <span>

#include "cli/collection/property.h"
#include "cli/output/json_line.h"
#include "cli/text/formats.h"
#include "cli/text/utf8.h"

namespace quaylink::cli {
namespace {

std::string Printed(const Json& value) {
  return JsonString(value, 2) + '\n';
}

// An array with a line for each element.
template <class Elements, class JsonOfElement>
void PrintArray(const Program& program, const Elements& elements, JsonOfElement jsonOf) {
  constexpr std::size_t kPiece = 64 * 1024;
  std::string json = "[";
  const char* gap = "\n";
  for (const auto& element : elements) {
    json += gap + JsonString(jsonOf(element));
    gap = ",\n";
    if (json.size() < kPiece) continue;
    program.Print(json);
    json.clear();
  }
  program.Print(json + (elements.empty() ? "]\n" : "\n]\n"));
}

Json JsonOf(const Track& track, const Property& property) {
  switch (property.kind) {
    case Property::Kind::kNumber:
    case Property::Kind::kMilliseconds:
      return NumberOf(track, property);
    case Property::Kind::kTruth:
      return NumberOf(track, property) != 0;
    case Property::Kind::kTime:
      if (NumberOf(track, property) == 0) return nullptr;
      break;
    default:
      break;
  }
  return ValueOf(track, property);
}

}  // namespace

std::string StatusJson(const char* kind, bool reachable) {
  return Printed({{"attached", kind != nullptr},
                  {"reachable", reachable},
                  {"kind", kind ? Json(kind) : Json()}});
}

void PrintTrackJson(const Program& program, const std::vector<Track>& tracks) {
  // One object serves all tracks: to name all properties anew for each takes most of the time.
  Json object = Json::object();
  for (const Property& property : Properties()) object[std::string(property.key)] = nullptr;
  PrintArray(program, tracks, [&object](const Track& track) -> const Json& {
    auto value = object.begin();
    for (const Property& property : Properties()) *value++ = JsonOf(track, property);
    return object;
  });
}

void PrintPlaylistJson(const Program& program, const std::vector<QuaylinkPlaylist>& playlists) {
  PrintArray(program, playlists, [](const QuaylinkPlaylist& playlist) -> Json {
    return {{"name", playlist.name},
            {"kind", PlaylistKindName(playlist.kind)},
            {"persistentId", PersistentIdString(playlist.persistentId)},
            {"tracks", std::span(playlist.tracks, playlist.trackCount)}};
  });
}

std::string FilesJson(const std::vector<std::string>& files) {
  Json list = Json::array();
  for (const std::string& file : files) list.push_back(MakeValid(file));
  return Printed(list);
}

}  // namespace quaylink::cli
