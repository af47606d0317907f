#include "cli/text/formats.h"

#include <quaylink/collection.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdio>

namespace quaylink::cli {
namespace {

// At least so many digits.
std::string Padded(std::uint64_t number, std::size_t digits) {
  const std::string string = std::to_string(number);
  return string.size() < digits ? std::string(digits - string.size(), '0') + string : string;
}

}  // namespace

std::string TimeString(std::uint32_t secondsSince1904) {
  if (secondsSince1904 == 0) return {};
  using namespace std::chrono;
  const sys_seconds time{seconds(std::int64_t{secondsSince1904} - QUAYLINK_SECONDS_TO_1970)};
  const auto day = floor<days>(time);
  const year_month_day date(day);
  const hh_mm_ss clock(time - day);
  const auto two = [](auto number) { return Padded(static_cast<std::uint64_t>(number), 2); };
  return std::to_string(static_cast<int>(date.year())) + '-' +
         two(static_cast<unsigned>(date.month())) + '-' + two(static_cast<unsigned>(date.day())) +
         'T' + two(clock.hours().count()) + ':' + two(clock.minutes().count()) + ':' +
         two(clock.seconds().count());
}

std::string LengthString(std::uint64_t milliseconds) {
  const std::uint64_t seconds = milliseconds / 1000;
  const std::uint64_t hours = seconds / 3600;
  const std::uint64_t minutes = seconds / 60 % 60;
  const std::string start =
      hours == 0 ? std::to_string(minutes) : std::to_string(hours) + ':' + Padded(minutes, 2);
  return start + ':' + Padded(seconds % 60, 2);
}

std::string ShownSize(std::uintmax_t bytes) {
  if (bytes < 1000) return std::to_string(bytes) + " bytes";
  constexpr std::array kUnits = {"kB", "MB", "GB", "TB"};
  double size = static_cast<double>(bytes) / 1000;
  std::size_t unit = 0;
  while (size >= 1000 && unit + 1 < kUnits.size()) {
    size /= 1000;
    ++unit;
  }
  std::array<char, 32> string = {};
  std::snprintf(string.data(), string.size(), "%.1f %s", size, kUnits[unit]);
  return string.data();
}

std::string PersistentIdString(std::uint64_t id) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string string(16, '0');
  for (auto digit = string.rbegin(); id != 0; id >>= 4u) *digit++ = kDigits[id & 0xFu];
  return string;
}

std::string_view PlaylistKindName(std::uint32_t kind) {
  switch (kind) {
    case QUAYLINK_MASTER:
      return "master";
    case QUAYLINK_SMART:
      return "smart";
    case QUAYLINK_PODCASTS:
      return "podcasts";
    default:
      return "ordinary";
  }
}

}  // namespace quaylink::cli
