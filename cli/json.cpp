#include "cli/json.h"

#include <nlohmann/json.hpp>
#include <span>
#include <utility>

#include "cli/formats.h"
#include "cli/paths.h"
#include "cli/property.h"
#include "cli/utf8.h"

namespace quaylink::cli {
namespace {

using Json = nlohmann::ordered_json;

std::string Dumped(const Json& value, int indentation) {
  return value.dump(indentation, ' ', false, Json::error_handler_t::replace);
}

std::string Printed(const Json& value) {
  return Dumped(value, 2) + '\n';
}

// An array with a line for each element.
template <class Elements, class JsonOfElement>
void PrintArray(const Program& program, const Elements& elements, JsonOfElement jsonOf) {
  constexpr std::size_t kPiece = 64 * 1024;
  std::string json = "[";
  const char* gap = "\n";
  for (const auto& element : elements) {
    json += gap + Dumped(jsonOf(element), -1);
    gap = ",\n";
    if (json.size() < kPiece) continue;
    program.Print(json);
    json.clear();
  }
  program.Print(json + (elements.empty() ? "]\n" : "\n]\n"));
}

const char* KindName(DeviceKind kind) {
  return kind == DeviceKind::kPhone ? "phone" : "disk";
}

const char* FateName(Fate fate, bool planned) {
  switch (fate) {
    case Fate::kCopied:
      return "copied";
    case Fate::kSkipped:
      return "skipped";
    case Fate::kFailed:
      return "failed";
    case Fate::kPending:
      break;
  }
  return planned ? "planned" : "notReached";
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

std::string StatusJson(DeviceKind kind, bool reachable) {
  const bool attached = kind != DeviceKind::kNone;
  return Printed({{"attached", attached},
                  {"reachable", reachable},
                  {"kind", attached ? Json(KindName(kind)) : Json()}});
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

std::string ExportJson(const ExportReport& report) {
  Json tracks = Json::array();
  for (const ExportItem& item : report.items) {
    Json track = {{"index", item.track.index},
                  {"artist", item.track.artist},
                  {"album", item.track.album},
                  {"title", item.track.title},
                  {"location", item.track.location},
                  {"file", Utf8Of(report.FileOf(item))},
                  {"result", FateName(item.fate, report.planned)}};
    if (!item.problem.empty()) track["error"] = item.problem;
    tracks.push_back(std::move(track));
  }
  return Printed({{"copied", report.Count(Fate::kCopied)},
                  {"skipped", report.Count(Fate::kSkipped)},
                  {"failed", report.Count(Fate::kFailed)},
                  {report.planned ? "planned" : "notReached", report.Count(Fate::kPending)},
                  {"bytes", report.copiedBytes},
                  {"tracks", std::move(tracks)}});
}

}  // namespace quaylink::cli
