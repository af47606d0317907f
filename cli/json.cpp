#include "cli/json.h"

#include <nlohmann/json.hpp>
#include <utility>

#include "cli/paths.h"
#include "cli/utf8.h"

namespace quaylink::cli {
namespace {

using Json = nlohmann::ordered_json;

std::string Printed(const Json& value) {
  return value.dump(2, ' ', false, Json::error_handler_t::replace) + '\n';
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

}  // namespace

std::string StatusJson(DeviceKind kind, bool reachable) {
  const bool attached = kind != DeviceKind::kNone;
  return Printed({{"attached", attached},
                  {"reachable", reachable},
                  {"kind", attached ? Json(KindName(kind)) : Json()}});
}

std::string TrackJson(const std::vector<Track>& tracks) {
  Json list = Json::array();
  for (const Track& track : tracks) {
    list.push_back({{"index", track.index},
                    {"location", track.location},
                    {"artist", track.artist},
                    {"title", track.title},
                    {"album", track.album}});
  }
  return Printed(list);
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
