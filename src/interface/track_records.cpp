// From the chunks of a database to the records that a host gets.

#include <algorithm>
#include <array>
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

constexpr std::size_t kLongestText = QUAYLINK_TEXT_SIZE - 1;

// A text of a record in the making, in the ANSI code page.
struct AnsiText {
  char bytes[QUAYLINK_TEXT_SIZE];
  std::size_t length = 0;
  bool whole = true;  // false when only the first characters fit
};

// Zero units is an error to WideCharToMultiByte, and so is a result that does not fit: both give 0.
std::size_t ToAnsi(std::u16string_view text, char* bytes, std::size_t capacity) {
  return static_cast<std::size_t>(WideCharToMultiByte(
      CP_ACP, 0, reinterpret_cast<const WCHAR*>(text.data()), static_cast<int>(text.size()), bytes,
      static_cast<int>(capacity), nullptr, nullptr));
}

// The whole characters at the beginning of the text that fit.
void ConvertWhatFits(std::u16string_view text, AnsiText& result) {
  while (!text.empty()) {
    const bool pair = text.size() > 1 && IsHighSurrogate(text[0]) && IsLowSurrogate(text[1]);
    const std::u16string_view character = text.substr(0, pair ? 2 : 1);
    char bytes[16];
    const std::size_t length = ToAnsi(character, bytes, sizeof(bytes));
    if (length > kLongestText - result.length) return;
    std::memcpy(result.bytes + result.length, bytes, length);
    result.length += length;
    text.remove_prefix(character.size());
  }
}

// The text ends at its first NUL; hardly any holds one,
// and to see that is quicker than to search for it.
std::u16string_view UntilNul(std::u16string_view text) {
  bool anyNul = false;
  for (const char16_t unit : text) anyNul |= unit == 0;
  return anyNul ? text.substr(0, text.find(u'\0')) : text;
}

AnsiText Convert(std::u16string_view wideText) {
  AnsiText result;
  const std::u16string_view units = UntilNul(wideText);
  if (!units.empty()) {
    result.length = ToAnsi(units, result.bytes, kLongestText);
    result.whole = result.length > 0;
    if (!result.whole) ConvertWhatFits(units, result);
  }
  result.bytes[result.length] = '\0';
  return result;
}

void CopyText(const AnsiText& text, char (&field)[QUAYLINK_TEXT_SIZE]) {
  std::memcpy(field, text.bytes, text.length + 1);
}

// Players store the location with ":" between its parts.
void CopyLocation(AnsiText text, char driveLetter, char (&field)[QUAYLINK_TEXT_SIZE]) {
  const std::size_t prefix = driveLetter ? 2 : 0;
  field[0] = '\0';
  if (!text.whole || prefix + text.length > kLongestText) return;
  std::replace(text.bytes, text.bytes + text.length, ':', driveLetter ? '\\' : '/');
  if (driveLetter) {
    field[0] = driveLetter;
    field[1] = ':';
  }
  std::memcpy(field + prefix, text.bytes, text.length + 1);
}

// A text that a record takes in, not yet converted.
struct FoundText {
  std::uint32_t type = 0;
  std::u16string_view text;
};

bool IsOfRecord(std::uint32_t objectType) {
  return objectType >= kTitleObject && objectType <= kArtistObject;
}

void AddText(const FoundText& found, char driveLetter, TrackRecord& record) {
  switch (found.type) {
    case kTitleObject:
      return CopyText(Convert(found.text), record.title);
    case kLocationObject:
      return CopyLocation(Convert(found.text), driveLetter, record.location);
    case kAlbumObject:
      return CopyText(Convert(found.text), record.album);
    case kArtistObject:
      return CopyText(Convert(found.text), record.artist);
    default:
      return;
  }
}

// Several texts are looked up before any is converted, and each before its type is looked at: a
// large database lies far apart in memory, and the processor can wait for several places at once.
void AddTexts(const TrackItemChunk& item, char driveLetter, TrackRecord& record) {
  std::array<FoundText, 8> found;
  const auto count = static_cast<std::uint32_t>(item.DataObjectCount());
  for (std::uint32_t i = 0; i < count;) {
    std::size_t number = 0;
    for (; i < count && number < found.size(); ++i) {
      const DataObjectChunk& object = item.DataObjectAt(i);
      found[number] = {object.objectType, {object.wideText.data(), object.wideText.size()}};
      if (IsOfRecord(object.objectType)) ++number;
    }
    for (std::size_t k = 0; k < number; ++k) AddText(found[k], driveLetter, record);
  }
}

}  // namespace

bool DeviceManager::Parse(const char* databasePath) {
  LocalFile file = OpenLocalFile(databasePath, "rb");
  if (!file) return false;
  theDatabase.Clear();
  Stream stream(file.get());
  const std::int32_t result = theDatabase.Read(stream);
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
}

void DeviceManager::BuildTrackRecords(const TrackListChunk& trackList) {
  for (const TrackMap::Entry& track : trackList.tracks) {
    AddTexts(*track.item, driveLetter, trackRecords.emplace_back());
  }
}

}  // namespace quaylink
