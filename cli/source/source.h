// Where music comes from: an attached device, or a folder that holds what a player holds.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "cli/collection/collection.h"
#include "cli/system/folder.h"

namespace quaylink::cli {

// How fetching a file went.
struct FetchResult {
  enum class Kind {
    kGood,
    kMissing,     // the source has no ordinary file there
    kUnreadable,  // it could not be read
    kRefused,     // this computer did not take it
    kFull         // because its disk is full
  } kind = Kind::kGood;
  // For people; empty when good. Where this computer is to blame it lacks the name of the copy,
  // which the caller knows by a better one.
  std::string problem;

  bool Good() const { return kind == Kind::kGood; }
};

// Is told of bytes as they come, each time how many more; not every source can tell. Empty where
// nobody wants to know.
using BytesCallback = std::function<void(std::uint64_t)>;

// The database and what lies beside it, as they are.
struct DatabaseFiles {
  std::string name;  // of the database, for messages
  std::string database;
  std::string playCounts;  // empty when there are none
};

class Source {
 public:
  virtual ~Source() = default;

  // What messages call it: "the device", or the folder.
  virtual std::string Name() const = 0;

  // The music database, with the play counts beside it. Throws a Failure when there is none, or
  // nothing like one.
  virtual Collection ReadCollection() = 0;

  // The files below are called by the location that a track of that collection has.

  // What shows of a track's file without fetching it; where the source cannot tell that, what the
  // database says. Nothing when the source surely has no ordinary file there.
  virtual std::optional<FileFacts> Look(const Track& track) = 0;

  // Makes a new file in a folder that is the caller's own, with the bytes of a file of the source,
  // and its time where the source knows it. A file that could not be fetched is not left there.
  virtual FetchResult Fetch(const std::string& location, const Folder& folder,
                            const std::string& name, const BytesCallback& tell) = 0;

  // So many threads may fetch at once, and ask whether the source answers.
  virtual std::size_t FetchesAtOnce() { return 1; }

  // Whether a folder is on the player itself, and would be wiped with it.
  virtual bool Holds(const Folder&) { return false; }

  // What keeps Fetch from making any file in that folder; empty when nothing does.
  virtual std::string ObstacleIn(const Folder&) { return {}; }

  // Every file in its folders for music that has a music file's extension, in alphabetical order,
  // with what shows of it; a phone tells names only. A folder that cannot be read stands there in
  // place of its files: whoever fetches it is told why.
  struct MusicFile {
    std::string location;
    std::optional<FileFacts> facts;
  };
  virtual std::vector<MusicFile> MusicFiles() = 0;

  // Whether it is still there and answers, after a fetch that failed. A device is connected anew.
  virtual bool Answers() = 0;
};

// The location in one form for every source: a path from the device's root, such as
// "/iPod_Control/Music/F05/ABCD.mp3", whatever drive the device is at the moment.
std::string DevicePathOf(std::string_view location);

// What the database says of a track's file.
FileFacts FactsInDatabase(const Track& track);

// What becomes of a fetch: the database names no file; this computer did not take the copy; the
// source has no such file, or something else in its place; it has one that could not be read, for a
// reason.
FetchResult NamesNoFile();
FetchResult NotTaken(const std::error_code& error);
FetchResult NoSuchFile(std::string_view location);
FetchResult NoOrdinaryFile(std::string_view location);
FetchResult NotRead(std::string_view location, std::string_view reason);

// What messages add to the name of a source that is not there any more.
inline constexpr char kGone[] = " has gone away, or does not answer any more";

// What the user may want to know when the reason of a failure cannot be told: that little space is
// left. Else empty.
std::string SpaceHint(std::uint64_t freeBytes);

}  // namespace quaylink::cli
