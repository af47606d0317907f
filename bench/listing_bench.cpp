// The library's own time for listing a phone of 10,000 files in 500 folders, per entry. The phone
// is a table in memory that costs next to nothing to ask; what the very same calls cost without the
// library is measured beside it, and taken off.
#include <benchmark/benchmark.h>

#include <array>
#include <chrono>
#include <string>
#include <vector>

#include "mobile/mobile_device_bridge.h"

namespace quaylink {
namespace {

constexpr int kFolders = 500;
constexpr int kFilesPerFolder = 20;

using Pair = std::array<const char*, 2>;
constexpr Pair kFolderPairs[] = {
    {"st_size", "68"}, {"st_blocks", "0"}, {"st_nlink", "2"}, {"st_ifmt", "S_IFDIR"}, {}};
constexpr Pair kFilePairs[] = {
    {"st_size", "4711"}, {"st_blocks", "8"}, {"st_nlink", "1"}, {"st_ifmt", "S_IFREG"}, {}};

// The phone: the root holds the folders "0" to "499", and each of those the same 20 files.
struct Phone {
  Phone() {
    for (int i = 0; i < kFolders; ++i) folderNames.push_back(std::to_string(i));
    for (int i = 0; i < kFilesPerFolder; ++i) fileNames.push_back(std::to_string(i) + ".mp3");
  }

  std::vector<std::string> folderNames;
  std::vector<std::string> fileNames;
  const std::vector<std::string>* openNames = nullptr;
  std::size_t nextName = 0;
  const Pair* nextPair = nullptr;
};
Phone phone;

// One directory and one information are open at a time; their handles only need to be no null.
template <class Object>
Object* Handle() {
  return reinterpret_cast<Object*>(&phone);
}

Status QUAYLINK_CALL OpenDirectory(AfcConnection, const char* path, AfcDirectory** directory) {
  phone.openNames = path[1] == '\0' ? &phone.folderNames : &phone.fileNames;
  phone.nextName = 0;
  *directory = Handle<AfcDirectory>();
  return 0;
}

Status QUAYLINK_CALL ReadDirectory(void*, AfcDirectory*, const char** name) {
  const auto& names = *phone.openNames;
  *name = phone.nextName < names.size() ? names[phone.nextName++].c_str() : nullptr;
  return 0;
}

Status QUAYLINK_CALL CloseDirectory(void*, AfcDirectory*) {
  return 0;
}

Status QUAYLINK_CALL OpenInformation(AfcConnection, const char*, AfcInformation** information) {
  phone.nextPair = phone.openNames == &phone.folderNames ? kFolderPairs : kFilePairs;
  *information = Handle<AfcInformation>();
  return 0;
}

Status QUAYLINK_CALL ReadKeyValue(AfcInformation*, const char** key, const char** value) {
  *key = (*phone.nextPair)[0];
  *value = (*phone.nextPair)[1];
  ++phone.nextPair;
  return 0;
}

Status QUAYLINK_CALL CloseInformation(AfcInformation*) {
  return 0;
}

PhoneLibraries LibrariesOfPhone() {
  PhoneLibraries libraries;
  libraries.areLoaded = true;
  libraries.entryPoints.afcDirectoryOpen = OpenDirectory;
  libraries.entryPoints.afcDirectoryRead = ReadDirectory;
  libraries.entryPoints.afcDirectoryClose = CloseDirectory;
  libraries.entryPoints.afcFileInfoOpen = OpenInformation;
  libraries.entryPoints.afcKeyValueRead = ReadKeyValue;
  libraries.entryPoints.afcKeyValueClose = CloseInformation;
  return libraries;
}

// A bridge that is connected to the phone above.
class Bench : public benchmark::Fixture {
 public:
  Bench() { bridge.afcConnection = 1; }

  std::size_t ListAll() {
    std::vector<std::string> folders;
    std::vector<std::string> files;
    bridge.ListFolders("/", folders);
    bridge.ListFiles(folders, files);
    return folders.size() - 1 + files.size();
  }

  // The calls into the phone that ListAll makes, without anything around them.
  void OnlyAsk() {
    const EntryPoints& e = bridge.libraries.entryPoints;
    for (int pass = 0; pass < 2; ++pass) {
      for (int folder = 0; folder <= kFolders; ++folder) {
        AfcDirectory* directory = nullptr;
        e.afcDirectoryOpen(1, folder == 0 ? "/" : "/f/", &directory);
        for (;;) {
          const char* name = nullptr;
          e.afcDirectoryRead(nullptr, directory, &name);
          if (!name) break;
          AfcInformation* information = nullptr;
          e.afcFileInfoOpen(1, name, &information);
          const char* key = nullptr;
          const char* value = nullptr;
          do {
            e.afcKeyValueRead(information, &key, &value);
            benchmark::DoNotOptimize(value);
          } while (key);
          e.afcKeyValueClose(information);
        }
        e.afcDirectoryClose(nullptr, directory);
      }
    }
  }

  MobileDeviceBridge bridge{LibrariesOfPhone()};
};

double SecondsSince(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

BENCHMARK_F(Bench, ListingAPhone)(benchmark::State& state) {
  std::size_t entries = 0;
  double listing = 0;
  double asking = 0;
  for ([[maybe_unused]] auto _ : state) {
    auto start = std::chrono::steady_clock::now();
    entries += ListAll();
    listing += SecondsSince(start);
    start = std::chrono::steady_clock::now();
    OnlyAsk();
    asking += SecondsSince(start);
  }
  const auto perEntry = [&](double seconds) {
    return seconds * 1e9 / static_cast<double>(entries);
  };
  state.counters["own_ns_per_entry"] = perEntry(listing - asking);
  state.counters["phone_ns_per_entry"] = perEntry(asking);
}

}  // namespace
}  // namespace quaylink

BENCHMARK_MAIN();
