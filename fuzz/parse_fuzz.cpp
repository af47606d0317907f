// Parses the input as a database, through the device manager from a file and through the chunks
// from memory: both read the same, and the records that come of it are whole.

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <span>
#include <string>

#include "interface/device_manager.h"
#include "itunesdb/database.h"
#include "platform/portable/machine.h"
#include "require.h"
#include "support/same_tree.h"

namespace quaylink::fuzz {
namespace {

// A file in memory, with a path.
class MemoryFile {
 public:
  MemoryFile() : descriptor_(::memfd_create("iTunesDB", 0)) {}

  void Replace(std::span<const std::uint8_t> bytes) const {
    const bool replaced =
        ::ftruncate(descriptor_, 0) == 0 && ::pwrite(descriptor_, bytes.data(), bytes.size(), 0) ==
                                                static_cast<::ssize_t>(bytes.size());
    Require(replaced, "the input can be written to a file");
  }
  std::string Path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

 private:
  int descriptor_;
};

bool EndsWithNul(const char (&field)[QUAYLINK_TEXT_SIZE]) {
  return std::find(std::begin(field), std::end(field), '\0') != std::end(field);
}

// Playlists without an identifier draw one: the same for all, so that trees can be compared.
HRESULT CreateEqualGuid(GUID* guid) {
  *guid = {0x01020304, 0x0506, 0xFFFF, {}};
  return S_OK;
}

void Parse(std::span<const std::uint8_t> bytes) {
  static const MemoryFile file;
  portable::CurrentMachine().createGuid = CreateEqualGuid;
  file.Replace(bytes);
  // Fields that the input does not have keep what they held: not what the input before left.
  static_cast<DatabaseHeader&>(theDatabase) = {};
  theDatabase.headerLength = theDatabase.totalLength = 0;
  DeviceManager manager;
  manager.driveLetter = bytes.size() % 2 == 0 ? 'E' : '\0';
  const bool parsed = manager.Parse(file.Path().c_str());

  DatabaseChunk database;
  Reader reader(bytes);
  Require(parsed == (database.Read(reader) >= 0), "file and memory give the same result");
  Require(test::SameTree(database, theDatabase), "file and memory give the same tree");

  const DataSetChunk* tracks = parsed ? database.TrackDataSet() : nullptr;
  Require(manager.trackRecords.size() == (tracks ? tracks->trackList.tracks.size() : 0),
          "there is a record for each track");
  for (const TrackRecord& record : manager.trackRecords) {
    Require(EndsWithNul(record.location) && EndsWithNul(record.artist) &&
                EndsWithNul(record.title) && EndsWithNul(record.album),
            "every string of a record ends");
  }
}

}  // namespace
}  // namespace quaylink::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  quaylink::fuzz::Parse({data, size});
  return 0;
}
