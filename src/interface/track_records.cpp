// From the chunks of a database to the records that a host gets.

#include <algorithm>
#include <cstring>
#include <new>
#include <string_view>

#include "common/local_file.h"
#include "common/utf16.h"
#include "interface/device_manager.h"
#include "itunesdb/database.h"
#include "platform/windows_api.h"

namespace quaylink {

namespace {

constexpr std::size_t kLongestString = QUAYLINK_TEXT_SIZE - 1;

// A string of a record in the making, in the ANSI code page.
struct AnsiString {
  char bytes[QUAYLINK_TEXT_SIZE];
  std::size_t length = 0;
  bool whole = true;  // false when only the first characters fit
};

// Zero units is an error to WideCharToMultiByte, and so is a result that does not fit: both give 0.
std::size_t ToAnsi(std::u16string_view string, char* bytes, std::size_t capacity) {
  return static_cast<std::size_t>(WideCharToMultiByte(
      CP_ACP, 0, reinterpret_cast<const WCHAR*>(string.data()), static_cast<int>(string.size()),
      bytes, static_cast<int>(capacity), nullptr, nullptr));
}

// The whole characters at the beginning of the string that fit. True when all of them do.
bool ConvertWhatFits(std::u16string_view string, AnsiString& result) {
  while (!string.empty()) {
    const bool pair = string.size() > 1 && IsHighSurrogate(string[0]) && IsLowSurrogate(string[1]);
    const std::u16string_view character = string.substr(0, pair ? 2 : 1);
    char bytes[16];
    const std::size_t length = ToAnsi(character, bytes, sizeof(bytes));
    if (length > kLongestString - result.length) return false;
    std::memcpy(result.bytes + result.length, bytes, length);
    result.length += length;
    string.remove_prefix(character.size());
  }
  return true;
}

// The string ends at its first NUL. Hardly any holds one, so that is looked for in the result.
AnsiString Convert(std::u16string_view units) {
  AnsiString result;
  if (!units.empty()) {
    result.length = ToAnsi(units, result.bytes, kLongestString);
    if (result.length > 0) {
      const void* end = std::memchr(result.bytes, '\0', result.length);
      if (end)
        result.length = static_cast<std::size_t>(static_cast<const char*>(end) - result.bytes);
    } else {
      result.whole = ConvertWhatFits(units.substr(0, units.find(u'\0')), result);
    }
  }
  result.bytes[result.length] = '\0';
  return result;
}

void CopyString(const AnsiString& string, char (&field)[QUAYLINK_TEXT_SIZE]) {
  std::memcpy(field, string.bytes, string.length + 1);
}

// Players store the location with ":" between its parts.
void CopyLocation(AnsiString string, char driveLetter, char (&field)[QUAYLINK_TEXT_SIZE]) {
  const std::size_t prefix = driveLetter ? 2 : 0;
  field[0] = '\0';
  if (!string.whole || prefix + string.length > kLongestString) return;
  std::replace(string.bytes, string.bytes + string.length, ':', driveLetter ? '\\' : '/');
  if (driveLetter) {
    field[0] = driveLetter;
    field[1] = ':';
  }
  std::memcpy(field + prefix, string.bytes, string.length + 1);
}

void AddString(const DataObjectChunk& object, char driveLetter, TrackRecord& record) {
  const auto convert = [&object] {
    return Convert({object.wideText.data(), object.wideText.size()});
  };
  switch (object.objectType) {
    case kTitleObject:
      return CopyString(convert(), record.title);
    case kLocationObject:
      return CopyLocation(convert(), driveLetter, record.location);
    case kAlbumObject:
      return CopyString(convert(), record.album);
    case kArtistObject:
      return CopyString(convert(), record.artist);
    default:
      return;
  }
}

}  // namespace

bool DeviceManager::Parse(const char* databasePath) {
  LocalFile file = OpenLocalFile(databasePath, "rb");
  if (!file) return false;
  theDatabase.Clear();
  try {
    Reader reader(file.get());
    const std::int32_t result = theDatabase.Read(reader);
    file.reset();
    theDatabase.ReleaseUnusedMemory();
    if (result < 0) return false;

    const DataSetChunk* dataSet = theDatabase.TrackDataSet();
    const std::size_t count = dataSet ? dataSet->trackList.tracks.size() : 0;
    if (count > trackRecords.max_size()) throw std::bad_alloc();
    trackRecords.reserve(count);
    trackRecords.clear();
    if (dataSet) BuildTrackRecords(dataSet->trackList);
    return true;
  } catch (const std::bad_alloc&) {
    // What was read until then is of no use, and the host is short of memory.
    theDatabase.Clear();
    theDatabase.ReleaseUnusedMemory();
    throw;
  }
}

void DeviceManager::BuildTrackRecords(const TrackListChunk& trackList) {
  for (const TrackMap::Entry& track : trackList.tracks) {
    TrackRecord& record = trackRecords.emplace_back();
    for (const auto& object : track.item->dataObjects) AddString(*object, driveLetter, record);
  }
}

}  // namespace quaylink
