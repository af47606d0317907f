#include "cli/export/playlist_files.h"

#include <algorithm>
#include <cstddef>
#include <span>
#include <system_error>
#include <utility>

#include "cli/base/paths.h"
#include "cli/naming/safe_names.h"
#include "cli/text/folding.h"
#include "cli/text/formats.h"
#include "cli/text/utf8.h"

namespace quaylink::cli {
namespace {

std::string ContentsOf(const QuaylinkPlaylist& playlist, const PlaylistExport& playlists) {
  std::string contents = "#EXTM3U\n";
  for (std::uint32_t i = 0; i < playlist.trackCount; ++i) {
    const std::uint32_t index = playlist.tracks[i];
    const std::string& copy = playlists.copies[index];
    if (copy.empty()) continue;
    const Track& track = playlists.collection.Tracks()[index];
    contents += "#EXTINF:" + std::to_string((track.lengthMs + 500) / 1000) + ',' + NameOf(track);
    contents += "\n../" + copy + '\n';
  }
  return contents;
}

// What the journal knows lists by; some have neither a number nor a name of their own.
std::vector<std::string> ItemsOf(std::span<const QuaylinkPlaylist> playlists) {
  DistinctItems distinct;
  std::vector<std::string> items;
  for (const QuaylinkPlaylist& playlist : playlists) {
    const std::string id = PersistentIdString(playlist.persistentId);
    items.push_back(
        distinct.Add("playlist " + (playlist.persistentId != 0 ? id : std::string(playlist.name))));
  }
  return items;
}

std::string Read(Destination& destination, const std::string& name) {
  std::error_code error;
  File file = destination.OpenFile(name, error);
  if (!file.IsOpen()) return {};
  std::string bytes(static_cast<std::size_t>(file.Facts(error).size), '\0');
  bytes.resize(file.Read(bytes, error));
  return bytes;
}

class Writer {
 public:
  Writer(Plan& plan, Destination& destination, Journal& journal, Flusher& flusher,
         ExportReport& report)
      : plan_(plan),
        destination_(destination),
        journal_(journal),
        flusher_(flusher),
        report_(report) {}

  bool Write(const std::string& item, const std::string& wanted, const std::string& contents) {
    Record record;
    record.player = plan_.player;
    record.item = item;
    record.wanted = wanted;
    const Record* earlier = journal_.Find(record.player, record.item);
    const Entry there = earlier ? destination_.Look(earlier->name) : Entry();
    const bool keepsName = earlier && LowerCase(earlier->wanted) == LowerCase(wanted);
    const bool ours = there.kind == EntryKind::kFile && there.facts == earlier->copy;
    bool replaces = false;
    if (keepsName && ours) {
      if (earlier->durable && there.facts.size == contents.size() &&
          Read(destination_, earlier->name) == contents) {
        return true;
      }
      record.name = earlier->name;
      replaces = true;
    } else if (keepsName && there.kind == EntryKind::kMissing) {
      record.name = earlier->name;
    } else {
      record.name = NewName(wanted, contents);
      if (record.name.empty()) return true;
    }
    // The file of a list that was renamed goes, unless somebody has worked on it.
    const std::string outdated = ours && !keepsName ? earlier->name : std::string();
    if (!Place(record, contents, replaces)) return false;
    if (!outdated.empty()) destination_.Remove(outdated);
    return true;
  }

 private:
  // Empty when there is a file already that says the same.
  std::string NewName(const std::string& wanted, const std::string& contents) {
    std::string name;
    for (int i = 0; i < kMostNames; ++i) {
      name = plan_.names.TakeFree(wanted);
      const Entry there = destination_.Look(name);
      if (there.kind == EntryKind::kMissing) return name;
      if (there.kind == EntryKind::kFile && there.facts.size == contents.size() &&
          Read(destination_, name) == contents) {
        return {};
      }
    }
    return name;
  }

  bool Place(Record& record, const std::string& contents, bool replaces) {
    const std::string part = destination_.NewPart();
    std::error_code error;
    File file = destination_.Parts().MakeFile(part, error);
    if (!error) error = file.Write(contents);
    if (!error) record.copy = file.Facts(error);
    if (!error) error = file.Close();
    std::string problem;
    try {
      if (!error) journal_.Announce(record);
      if (!error) {
        error = destination_.Place(part, record.name, replaces);
        if (error) journal_.TakeBack();
      }
      if (!error) flusher_.Add(record);
      if (error) {
        problem = destination_.Shown(record.name) + ": cannot be written: " + ReasonOf(error);
      }
    } catch (const Failure& failure) {
      problem = failure.what();
    }
    if (!problem.empty()) destination_.RemovePart(part);
    report_.TellPlaylist(record.name, problem);
    return problem.empty();
  }

  Plan& plan_;
  Destination& destination_;
  Journal& journal_;
  Flusher& flusher_;
  ExportReport& report_;
};

}  // namespace

bool ExportPlaylists(const PlaylistExport& playlists, Plan& plan, Destination& destination,
                     Journal& journal, Flusher& flusher, ExportReport& report) {
  Writer writer(plan, destination, journal, flusher, report);
  bool good = true;
  const std::vector<std::string> items = ItemsOf(playlists.collection.Playlists());
  for (std::size_t i = 0; i < items.size(); ++i) {
    const QuaylinkPlaylist& playlist = playlists.collection.Playlists()[i];
    const bool wanted = playlists.names.empty() ||
                        std::ranges::any_of(playlists.names, [&playlist](const std::string& name) {
                          return SearchForm(name) == SearchForm(playlist.name);
                        });
    if (playlist.kind == QUAYLINK_MASTER || !wanted) continue;
    const std::string name = "Playlists/" + SafeFileName(std::string(playlist.name) + ".m3u8",
                                                         FileKinds::kMedia, playlists.limits);
    good &= writer.Write(items[i], name, ContentsOf(playlist, playlists));
  }
  return good;
}

}  // namespace quaylink::cli
