#include "samples/sample_music.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <numbers>
#include <string_view>

#include "itunesdb/little_endian.h"

namespace quaylink::samples {

namespace {

constexpr std::uint32_t kFirstTrackId = 52;
constexpr std::uint32_t kSomeDay = 3'429'434'363;  // 2012-09-02T12:39:23, counted from 1904

struct Entry {
  const char16_t* title;
  const char16_t* artist;
  const char16_t* album;
  const char16_t* genre;
  std::uint32_t year;
  const char* file;
};

constexpr Entry kCollection[] = {
    {u"Morning on the Quay", u"The Harbour Lights", u"Tides", u"Folk", 1998, "F00/HBLA.wav"},
    {u"Low Water", u"The Harbour Lights", u"Tides", u"Folk", 1998, "F00/HBLB.wav"},
    {u"What the Gulls Said", u"The Harbour Lights", u"Tides", u"Folk", 1998, "F01/HBLC.wav"},
    {u"Café au lait", u"Élodie Ménard", u"Après l'été", u"Chanson", 2004, "F01/ELOA.wav"},
    {u"Où vont les bateaux?", u"Élodie Ménard", u"Après l'été", u"Chanson", 2004, "F02/ELOB.wav"},
    {u"港の朝", u"海辺の楽団", u"潮風", u"ジャズ", 2012, "F02/UMIA.wav"},
    {u"灯台のうた", u"海辺の楽団", u"潮風", u"ジャズ", 2012, "F03/UMIB.wav"},
    {u"Старый маяк", u"Северный хор", u"Белые ночи", u"Хоровая музыка", 1987, "F03/SEVA.wav"},
    {u"Παλιά αποβάθρα", u"Νίκος Λιμάνης", u"Θάλασσα", u"Folk", 2001, "F04/LIMA.wav"},
    {u"סירה קטנה", u"להקת הנמל", u"גלים", u"Pop", 2015, "F04/NAMA.wav"},
    {u"Sea Shanty \U0001F3B5", u"Various: Artists", u"Songs / Work", u"Folk", 2009, "F05/SHAA.wav"},
    {u"Sea Shanty \U0001F3B5", u"Various: Artists", u"Songs / Work", u"Folk", 2009, "F05/SHAB.wav"},
    {u"Untitled...", u"Aux", u"CON", u"Rock", 2020, "F06/AUXA.wav"},
    {u"", u"", u"", u"", 0, "F06/NONE.wav"},
};

void Append(std::vector<std::uint8_t>& bytes, std::string_view string) {
  std::ranges::copy(string, std::back_inserter(bytes));
}

template <class T>
void AppendInteger(std::vector<std::uint8_t>& bytes, T value) {
  std::uint8_t encoded[sizeof(T)];
  StoreLittleEndian(encoded, value);
  std::ranges::copy(encoded, std::back_inserter(bytes));
}

// The form in which a database stores a path: ":" before each part.
std::u16string Location(const std::string& file) {
  std::u16string location = u":";
  for (const char c : file) location += c == '/' ? u':' : static_cast<char16_t>(c);
  return location;
}

// The rest of what a player knows of a track, a little different for each.
TrackItemHeader Properties(const SampleTrack& track, std::uint32_t number) {
  TrackItemHeader header;
  header.persistentId = 0xA5000000'00000000u + track.id;
  header.fileSize = static_cast<std::uint32_t>(ToneFile(track.toneHertz).size());
  header.lengthMs = 500;
  header.bitRate = 128;
  header.sampleRate = 8000;
  header.mediaType = 1;
  header.year = track.year;
  header.trackNumber = track.album.empty() ? 0 : number % 3 + 1;
  header.trackCount = track.album.empty() ? 0 : 3;
  header.discNumber = header.discCount = track.album.empty() ? 0 : 1;
  header.rating = static_cast<std::uint8_t>(number % 6 * 20);
  header.playCount = number % 4;
  header.partOfCompilation = track.artist.starts_with(u"Various") ? 1 : 0;
  header.added = header.modified = kSomeDay + number * 3600;
  header.lastPlayed = header.playCount > 0 ? kSomeDay + (number + 48) * 3600 : 0;
  return header;
}

}  // namespace

std::vector<SampleTrack> SampleMusic(const std::string& controlFolder) {
  std::vector<SampleTrack> music;
  for (const Entry& entry : kCollection) {
    const auto number = static_cast<std::uint32_t>(music.size());
    music.push_back({kFirstTrackId + 2 * number, entry.title, entry.artist, entry.album,
                     entry.genre, entry.year, controlFolder + "/Music/" + entry.file,
                     220.0 * std::exp2(static_cast<double>(number) / 12.0)});
  }
  return music;
}

Library SampleLibrary(const std::vector<SampleTrack>& music) {
  Library library;
  Playlist all{u"My player", true, {}};
  Playlist favourites{u"Favourites \u2605", false, {}};
  Playlist recent{u"Since 2010", false, {}, true};
  for (const SampleTrack& track : music) {
    Track described{track.id,
                    {{kLocationObject, Location(track.file)}, {6, u"WAV audio file"}},
                    Properties(track, static_cast<std::uint32_t>(library.tracks.size()))};
    if (!track.title.empty()) described.strings.push_back({kTitleObject, track.title});
    if (!track.artist.empty()) described.strings.push_back({kArtistObject, track.artist});
    if (!track.album.empty()) {
      described.strings.push_back({kAlbumObject, track.album});
      const auto known = std::ranges::find(library.albums, track.album, &Album::title);
      if (known == library.albums.end()) library.albums.push_back({track.album, track.artist});
    }
    if (!track.genre.empty()) described.strings.push_back({kGenreObject, track.genre});
    library.tracks.push_back(std::move(described));
    if (track.year >= 2010) recent.trackIds.push_back(track.id);
    all.trackIds.push_back(track.id);
    if (track.id % 3 == 0) favourites.trackIds.push_back(track.id);
  }
  library.playlists = {std::move(all),
                       std::move(favourites),
                       std::move(recent),
                       {u"Podcasts", false, {}, false, true}};
  return library;
}

std::vector<PlayCount> SamplePlayCounts(const std::vector<SampleTrack>& music) {
  std::vector<PlayCount> counts(music.size());
  counts[3] = {.plays = 5, .lastPlayed = kSomeDay + 86400, .rating = 100};
  counts[5] = {.bookmarkMs = 250, .rating = 100, .skips = 1, .lastSkipped = kSomeDay + 86460};
  return counts;
}

std::vector<std::uint8_t> ToneFile(double hertz) {
  constexpr std::uint32_t kRate = 8000;
  constexpr std::uint32_t kSamples = kRate / 2;
  constexpr std::uint32_t kBytes = kSamples * 2;
  std::vector<std::uint8_t> bytes;
  Append(bytes, "RIFF");
  AppendInteger(bytes, std::uint32_t{36 + kBytes});
  Append(bytes, "WAVEfmt ");
  AppendInteger(bytes, std::uint32_t{16});  // of the format that follows
  AppendInteger(bytes, std::uint16_t{1});   // PCM
  AppendInteger(bytes, std::uint16_t{1});   // channel
  AppendInteger(bytes, kRate);
  AppendInteger(bytes, std::uint32_t{kRate * 2});  // bytes a second
  AppendInteger(bytes, std::uint16_t{2});          // bytes a sample
  AppendInteger(bytes, std::uint16_t{16});         // bits a sample
  Append(bytes, "data");
  AppendInteger(bytes, kBytes);
  for (std::uint32_t i = 0; i < kSamples; ++i) {
    const double seconds = static_cast<double>(i) / kRate;
    const double value = 9000.0 * std::sin(2.0 * std::numbers::pi * hertz * seconds);
    AppendInteger(bytes, static_cast<std::uint16_t>(static_cast<std::int16_t>(value)));
  }
  return bytes;
}

}  // namespace quaylink::samples
