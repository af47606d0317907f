// Copies all music off the attached player or phone: export_music FOLDER
//
// The files are numbered in the order of the database and keep the names that they have on the
// device. The folder must exist.
#include <quaylink/quaylink.h>

#include <cstddef>
#include <cstdio>
#include <exception>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

// The library's working time: from InitializeIPod to TerminateIPod.
class Quaylink {
 public:
  Quaylink() {
    if (InitializeIPod() == 0) throw std::runtime_error("the library does not start");
  }
  ~Quaylink() { TerminateIPod(); }
  Quaylink(const Quaylink&) = delete;
  Quaylink& operator=(const Quaylink&) = delete;

  std::vector<TrackRecord> Tracks(const std::string& folder) {
    // Looking for the device first gives the records locations on that device.
    if (!IsIPodConnected()) throw std::runtime_error("no player or phone is attached");
    const std::string database = folder + "/iTunesDB";
    if (!CopyITunesDB(database.c_str())) {
      throw std::runtime_error("the music database could not be copied");
    }
    const int count = ParseITunesDB(database.c_str(), 0, nullptr);
    std::vector<TrackRecord> tracks(static_cast<std::size_t>(count));
    if (count > 0) {
      tracks.resize(
          static_cast<std::size_t>(ParseITunesDB(database.c_str(), count, tracks.data())));
    }
    return tracks;
  }
};

// One connection for many files. CopyFileFromIPod would open one for each.
class Connection {
 public:
  Connection() {
    if (!ConnectIPod()) throw std::runtime_error("the device gives no connection");
  }
  ~Connection() { DisconnectIPod(); }
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  bool Copy(const char* devicePath, const std::string& destination) {
    if (CopyGenericFileFromIPod(0, devicePath, destination.c_str())) return true;
    std::remove(destination.c_str());  // a failed copy may leave a part behind
    return false;
  }
};

// Such as "0007 ABCD.mp3". Devices name their music files with plain letters.
std::string FileName(std::size_t number, const TrackRecord& track) {
  const std::string location = track.location;
  char digits[24];
  std::snprintf(digits, sizeof digits, "%04zu ", number);
  return digits + location.substr(location.find_last_of("\\/") + 1);
}

int ExportMusic(const std::string& folder) {
  Quaylink quaylink;
  const std::vector<TrackRecord> tracks = quaylink.Tracks(folder);
  const std::string prefix = folder + "/";
  std::size_t copied = 0;
  Connection connection;
  for (std::size_t i = 0; i < tracks.size(); ++i) {
    const std::string name = FileName(i + 1, tracks[i]);
    const bool isCopied = connection.Copy(tracks[i].location, prefix + name);
    std::printf("%s  %s - %s\n", isCopied ? name.c_str() : "not copied:", tracks[i].artist,
                tracks[i].title);
    copied += isCopied ? 1 : 0;
  }
  std::printf("%zu of %zu tracks copied\n", copied, tracks.size());
  return copied == tracks.size() ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: export_music FOLDER\n");
    return 2;
  }
  try {
    return ExportMusic(argv[1]);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "export_music: %s\n", error.what());
    return 1;
  }
}
