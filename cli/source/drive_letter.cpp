#include "cli/source/drive_letter.h"

#include <quaylink/quaylink.h>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

#include "cli/base/program.h"
#include "cli/base/temporary_file.h"
#include "cli/system/system.h"
#include "cli/text/folding.h"
#include "cli/text/utf8.h"

namespace quaylink::cli {
namespace {

// A chunk of a database: the tag, the header's length, the length of all of it, the words that
// follow these, and what the header stands before.
std::string Chunk(std::string_view tag, std::uint32_t headerLength, std::string_view body,
                  std::uint32_t thirdWord, std::initializer_list<std::uint32_t> words) {
  std::string chunk(tag);
  const auto append = [&chunk](std::uint32_t word) {
    for (unsigned shift = 0; shift < 32; shift += 8) chunk += static_cast<char>(word >> shift);
  };
  append(headerLength);
  append(thirdWord);
  for (const std::uint32_t word : words) append(word);
  chunk.resize(headerLength);
  return chunk.append(body);
}

std::string Chunk(std::string_view tag, std::uint32_t headerLength, std::string_view body,
                  std::initializer_list<std::uint32_t> words) {
  return Chunk(tag, headerLength, body, headerLength + static_cast<std::uint32_t>(body.size()),
               words);
}

// A database of one track, whose location is one letter long.
std::string DatabaseOfOneTrack() {
  constexpr std::uint32_t kLocation = 2;
  constexpr std::uint32_t kTracks = 1;
  using namespace std::string_view_literals;
  constexpr std::string_view kString = "\1\0\0\0\2\0\0\0\1\0\0\0\0\0\0\0x\0"sv;
  const std::string location = Chunk("mhod", 24, kString, {kLocation, 0, 0});
  const std::string track = Chunk("mhit", 156, location, {1, 1});
  const std::string list = Chunk("mhlt", 92, track, 1, {});
  return Chunk("mhbd", 104, Chunk("mhsd", 96, list, {kTracks}), {1, 25, 1});
}

}  // namespace

char PlayersDriveLetter() {
  const TemporaryFile file;
  std::ofstream(file.Path(), std::ios::binary) << DatabaseOfOneTrack();
  const std::optional<std::string> path = LocalPathForLibrary(file.Path());
  TrackRecord record = {};
  const bool known = path && ParseITunesDB(path->c_str(), 1, &record) == 1;
  return known && record.location[1] == ':' ? record.location[0] : '\0';
}

std::string PathOnDrive(std::string_view path, char letter) {
  const std::string drive = {letter, ':'};
  std::string_view rest = path;
  if (LowerCase(path.substr(0, 2)) == LowerCase(drive)) rest.remove_prefix(2);
  const auto isSeparator = [](char c) { return c == '/' || c == '\\'; };
  // Two of them begin the name of another computer.
  const bool isOnDrive =
      !rest.empty() && isSeparator(rest[0]) && (rest.size() < 2 || !isSeparator(rest[1]));
  if (!isOnDrive) {
    throw Failure(MakePrintable(path) + ": is not on the player's drive, which is " + drive);
  }
  std::string onDrive = drive + std::string(rest);
  std::ranges::replace(onDrive, '/', '\\');
  return onDrive;
}

}  // namespace quaylink::cli
