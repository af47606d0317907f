#include "cli/source/source.h"

#include <algorithm>
#include <chrono>
#include <ctime>

#include "cli/base/paths.h"
#include "cli/text/formats.h"
#include "cli/text/utf8.h"

namespace quaylink::cli {
namespace {

FetchResult Problem(FetchResult::Kind kind, std::string_view location, std::string_view problem) {
  return {kind, MakePrintable(DevicePathOf(location)).append(": ").append(problem)};
}

// A player's clock shows the time of the place where it is: taken to be that of this computer.
std::int64_t TimeOnPlayersClock(std::uint32_t secondsSince1904) {
  using namespace std::chrono;
  if (secondsSince1904 <= QUAYLINK_SECONDS_TO_1970) return 0;
  const sys_seconds shown{seconds(secondsSince1904 - QUAYLINK_SECONDS_TO_1970)};
  const sys_days day = floor<days>(shown);
  const year_month_day date(day);
  const hh_mm_ss time(shown - day);
  std::tm local = {};
  local.tm_year = static_cast<int>(date.year()) - 1900;
  local.tm_mon = static_cast<int>(static_cast<unsigned>(date.month())) - 1;
  local.tm_mday = static_cast<int>(static_cast<unsigned>(date.day()));
  local.tm_hour = static_cast<int>(time.hours().count());
  local.tm_min = static_cast<int>(time.minutes().count());
  local.tm_sec = static_cast<int>(time.seconds().count());
  local.tm_isdst = -1;
  const std::time_t seconds = std::mktime(&local);
  return seconds > 0 ? std::int64_t{seconds} * 1'000'000'000 : 0;
}

}  // namespace

std::string DevicePathOf(std::string_view location) {
  const bool isOfDrive = location.size() > 2 && location[1] == ':' && location[2] == '\\';
  if (!isOfDrive) return std::string(location);
  std::string path(location.substr(2));
  std::ranges::replace(path, '\\', '/');
  return path;
}

FileFacts FactsInDatabase(const Track& track) {
  return {track.fileSize, TimeOnPlayersClock(track.modified)};
}

FetchResult NamesNoFile() {
  return {FetchResult::Kind::kMissing, "the music database names no file for this track"};
}

FetchResult NotTaken(const std::error_code& error) {
  const std::string problem = "cannot be written: " + ReasonOf(error);
  if (error != std::errc::no_space_on_device) return {FetchResult::Kind::kRefused, problem};
  return {FetchResult::Kind::kFull, problem + "; free some space and run again"};
}

FetchResult NoSuchFile(std::string_view location) {
  return Problem(FetchResult::Kind::kMissing, location, "there is no such file");
}

FetchResult NoOrdinaryFile(std::string_view location) {
  return Problem(FetchResult::Kind::kMissing, location,
                 "is no ordinary file, and links are not followed");
}

FetchResult NotRead(std::string_view location, std::string_view reason) {
  return Problem(FetchResult::Kind::kUnreadable, location,
                 std::string("cannot be read: ").append(reason));
}

std::string SpaceHint(std::uint64_t freeBytes) {
  constexpr std::uint64_t kLittle = 64u << 20u;
  if (freeBytes >= kLittle) return {};
  return " (only " + ShownSize(freeBytes) + " are left on the disk of the copy)";
}

}  // namespace quaylink::cli
