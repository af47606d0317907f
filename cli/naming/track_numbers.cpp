#include "cli/naming/track_numbers.h"

#include <algorithm>

namespace quaylink::cli {
namespace {

constexpr std::size_t kFewestDigits = 2;  // of numbers of tracks and episodes

std::string PaddedTo(std::size_t digits, std::uint64_t number) {
  const std::string string = std::to_string(number);
  return std::string(digits - std::min(digits, string.size()), '0') + string;
}

std::size_t DigitsOf(std::uint64_t number) {
  return std::to_string(number).size();
}

std::string_view StringOf(const char* string) {
  return string ? string : "";
}

bool IsBlank(std::string_view string) {
  return string.find_first_not_of(' ') == std::string_view::npos;
}

// The same for all tracks of an album.
std::string KeyOf(const Track& track) {
  return std::string(FilingArtistOf(track)) + '\n' + std::string(StringOf(track.album));
}

}  // namespace

std::string_view FilingArtistOf(const Track& track) {
  const std::string_view albumArtist = StringOf(track.albumArtist);
  if (!IsBlank(albumArtist)) return albumArtist;
  if (track.compilation != 0) return "Various Artists";
  const std::string_view artist = StringOf(track.artist);
  return IsBlank(artist) ? std::string_view() : artist;
}

TrackNumbers::TrackNumbers(const std::vector<Track>& tracks) : trackCount_(tracks.size()) {
  for (const Track& track : tracks) {
    Album& album = albums_[KeyOf(track)];
    album.discs = std::max({album.discs, track.discNumber, track.discCount});
    std::uint32_t& tracksOnDisc = album.tracksOnDisc[track.discNumber];
    tracksOnDisc = std::max({tracksOnDisc, track.trackNumber, track.trackCount});
  }
}

std::string TrackNumbers::Padded(const Track& track, const Property& property) const {
  if (property.key == "trackNumber") return TrackNumberOf(track, AlbumOf(track));
  if (property.key == "discNumber") return DiscNumberOf(track, AlbumOf(track));
  const std::uint64_t number = NumberOf(track, property);
  if (property.key == "index") return PaddedTo(DigitsOf(trackCount_), number);
  const bool isOfShow = property.key == "seasonNumber" || property.key == "episodeNumber";
  return PaddedTo(isOfShow ? kFewestDigits : 1, number);
}

std::string TrackNumbers::OnAlbum(const Track& track) const {
  if (track.trackNumber == 0) return {};
  const Album* album = AlbumOf(track);
  const std::string number = TrackNumberOf(track, album);
  const bool hasSeveralDiscs = album && album->discs > 1 && track.discNumber > 0;
  return hasSeveralDiscs ? DiscNumberOf(track, album) + '-' + number : number;
}

const TrackNumbers::Album* TrackNumbers::AlbumOf(const Track& track) const {
  const auto found = albums_.find(KeyOf(track));
  return found == albums_.end() ? nullptr : &found->second;
}

std::string TrackNumbers::DiscNumberOf(const Track& track, const Album* album) const {
  return PaddedTo(DigitsOf(album ? album->discs : 0), track.discNumber);
}

std::string TrackNumbers::TrackNumberOf(const Track& track, const Album* album) const {
  if (!album) return PaddedTo(kFewestDigits, track.trackNumber);
  const auto disc = album->tracksOnDisc.find(track.discNumber);
  const std::uint32_t most = disc == album->tracksOnDisc.end() ? 0 : disc->second;
  return PaddedTo(std::max(kFewestDigits, DigitsOf(most)), track.trackNumber);
}

}  // namespace quaylink::cli
