// quaylink-sample: makes sample databases, and sample machines with a player or a phone attached.

#include <CLI/CLI.hpp>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <system_error>

#include "samples/sample_music.h"

namespace fs = std::filesystem;
using namespace quaylink::samples;

namespace {

void WriteFile(const fs::path& path, const std::vector<std::uint8_t>& bytes) {
  if (path.has_parent_path()) fs::create_directories(path.parent_path());
  std::ofstream file(path, std::ios::binary);
  file.exceptions(std::ios::badbit | std::ios::failbit);
  file.write(reinterpret_cast<const char*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
}

void WriteString(const fs::path& path, const std::string& string) {
  WriteFile(path, {string.begin(), string.end()});
}

// The database, its play counts and the files of the sample music, below a device's root.
void WriteMusic(const fs::path& root, const std::string& controlFolder) {
  const auto music = SampleMusic(controlFolder);
  const fs::path folder = root / controlFolder / "iTunes";
  WriteFile(folder / "iTunesDB", WriteDatabase(SampleLibrary(music)));
  WriteFile(folder / "Play Counts", WritePlayCounts(SamplePlayCounts(music)));
  for (const SampleTrack& track : music) WriteFile(root / track.file, ToneFile(track.toneHertz));
}

// A machine with a player in disk mode on E:, among drives that are not the player's.
void MakePlayer(const fs::path& machine) {
  const fs::path drives = machine / "drives";
  WriteString(machine / "usb" / "VID_046D&PID_C077" / "5&1A2B3C4D&0&2", "");
  WriteString(machine / "usb" / "VID_05AC&PID_1261" / "000A270010203040", "");
  WriteString(drives / "c" / "iPod_Control" / "Music" / "a backup, on a fixed drive.txt", "");
  WriteString(drives / "d" / "Pictures" / "a memory stick.txt", "");
  WriteMusic(drives / "e", "iPod_Control");
}

// The folder of the stand-in libraries that belong to this program: as it is built, or installed.
fs::path OwnPhoneLibraries() {
  std::error_code error;
  const fs::path folder = fs::read_symlink("/proc/self/exe", error).parent_path();
  for (const char* place : {"stand_in_phone/libraries", QUAYLINK_STAND_IN_PHONE}) {
    if (fs::exists(folder / place, error)) return folder / place;
  }
  throw std::runtime_error("the stand-in libraries are missing; name their folder");
}

// A machine with a phone. Its file system is the folder "phone", which the stand-in for the
// vendor's libraries serves; the stand-in's script is "phone.txt".
void MakePhone(const fs::path& machine, const fs::path& libraries) {
  const fs::path installed = machine / "drives" / "c" / "Program Files" / "Common Files" / "Apple" /
                             "Mobile Device Support" / "bin";
  fs::create_directories(installed);
  for (const char* name : {"CoreFoundation.dll", "iTunesMobileDevice.dll"}) {
    fs::copy_file(libraries / name, installed / name, fs::copy_options::overwrite_existing);
  }
  WriteString(machine / "usb" / "VID_05AC&PID_1290" / "5f2e1d0c9b8a7f6e5d4c3b2a190807f6e5d4c3b2",
              "");
  const fs::path phone = machine / "phone";
  WriteMusic(phone, "iTunes_Control");
  WriteString(phone / "DCIM" / "100APPLE" / "IMG_0001.JPG", "a picture of the harbour\n");
  WriteString(phone / "Books" / "Sailing.txt", "Mind the tide.\n");
  fs::create_directories(phone / "Downloads");
  WriteString(machine / "phone.txt", "folder phone\nidentifier 5f2e1d0c9b8a7f6e5d4c3b2a\n");
}

// The same for the fuzzer of collections, whose inputs begin with the length of the play counts
// that they end with.
void MakeCollectionSeeds(const fs::path& folder) {
  const auto write = [&](const char* name, const std::vector<std::uint8_t>& database,
                         const std::vector<std::uint8_t>& counts) {
    std::vector<std::uint8_t> bytes = {static_cast<std::uint8_t>(counts.size() & 0xFF),
                                       static_cast<std::uint8_t>(counts.size() >> 8)};
    bytes.insert(bytes.end(), database.begin(), database.end());
    bytes.insert(bytes.end(), counts.begin(), counts.end());
    WriteFile(folder / name, bytes);
  };
  const auto music = SampleMusic("iPod_Control");
  write("sample", WriteDatabase(SampleLibrary({music.begin(), music.begin() + 5})),
        WritePlayCounts(SamplePlayCounts({music.begin(), music.begin() + 6})));
  write("made-up", WriteDatabase(MakeLargeLibrary(3)), WritePlayCounts({{}, {.plays = 2}, {}}, 16));
  write("every-kind", WriteDatabaseOfEveryKind(), {});
  write("compressed", Compress(WriteDatabase(MakeLargeLibrary(3))), {});
}

// Small databases that between them hold every kind of chunk and of data object, for programs that
// change them at random.
void MakeSeeds(const fs::path& folder) {
  WriteFile(folder / "sample", WriteDatabase(SampleLibrary(SampleMusic("iPod_Control"))));
  WriteFile(folder / "empty", WriteDatabase({}));
  WriteFile(folder / "made-up", WriteDatabase(MakeLargeLibrary(3)));
  WriteFile(folder / "every-kind", WriteDatabaseOfEveryKind());
  MakeCollectionSeeds(folder / "collections");
}

int Run(int argc, char** argv) {
  CLI::App app("Makes sample databases, players and phones for trying Quaylink.");
  app.require_subcommand(1);
  fs::path destination;
  fs::path libraries;
  std::uint32_t trackCount = 0;

  CLI::App* database = app.add_subcommand("database", "Write a database file");
  database->add_option("FILE", destination, "The file to write")->required();
  database->add_option("--tracks", trackCount, "A made-up library of this many tracks instead");
  CLI::App* player = app.add_subcommand("player", "Make a machine with a player attached");
  player->add_option("FOLDER", destination, "The machine's folder")->required();
  CLI::App* phone = app.add_subcommand("phone", "Make a machine with a phone attached");
  phone->add_option("FOLDER", destination, "The machine's folder")->required();
  phone->add_option("LIBRARIES", libraries,
                    "The folder of the two stand-in libraries, where it is another");
  CLI::App* seeds = app.add_subcommand("seeds", "Write a folder of small databases for fuzzers");
  seeds->add_option("FOLDER", destination, "The folder to write")->required();
  CLI11_PARSE(app, argc, argv);

  if (*player) MakePlayer(destination);
  if (*phone) MakePhone(destination, libraries.empty() ? OwnPhoneLibraries() : libraries);
  if (*seeds) MakeSeeds(destination);
  if (*database) {
    const Library library =
        trackCount > 0 ? MakeLargeLibrary(trackCount) : SampleLibrary(SampleMusic("iPod_Control"));
    WriteFile(destination, WriteDatabase(library));
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return Run(argc, argv);
  } catch (const std::exception& error) {
    std::cerr << "quaylink-sample: " << error.what() << '\n';
    return 1;
  }
}
