#include "cli/collection/property.h"

#include <algorithm>

#include "cli/text/formats.h"
#include "cli/text/utf8.h"

namespace quaylink::cli {
namespace {

using enum Property::Kind;

constexpr Property kProperties[] = {
    {"index", "#", kNumber, &Track::index},
    {"id", "Id", kNumber, &Track::id},
    {"persistentId", "Persistent id", kPersistentId, &Track::persistentId},
    {"location", "Location", kString, &Track::location},
    {"title", "Title", kString, &Track::title},
    {"artist", "Artist", kString, &Track::artist},
    {"album", "Album", kString, &Track::album},
    {"albumArtist", "Album artist", kString, &Track::albumArtist},
    {"genre", "Genre", kString, &Track::genre},
    {"composer", "Composer", kString, &Track::composer},
    {"comment", "Comment", kString, &Track::comment},
    {"grouping", "Grouping", kString, &Track::grouping},
    {"description", "Description", kString, &Track::description},
    {"fileType", "File type", kString, &Track::fileType},
    {"sortTitle", "Title to sort by", kString, &Track::sortTitle},
    {"sortArtist", "Artist to sort by", kString, &Track::sortArtist},
    {"sortAlbum", "Album to sort by", kString, &Track::sortAlbum},
    {"podcastUrl", "Podcast's file", kString, &Track::podcastUrl},
    {"podcastFeed", "Podcast's feed", kString, &Track::podcastFeed},
    {"trackNumber", "Track", kNumber, &Track::trackNumber},
    {"trackCount", "Tracks", kNumber, &Track::trackCount},
    {"discNumber", "Disc", kNumber, &Track::discNumber},
    {"discCount", "Discs", kNumber, &Track::discCount},
    {"year", "Year", kNumber, &Track::year},
    {"lengthMs", "Length", kMilliseconds, &Track::lengthMs},
    {"size", "Bytes", kNumber, &Track::fileSize},
    {"bitRate", "kbit/s", kNumber, &Track::bitRate},
    {"sampleRate", "Hz", kNumber, &Track::sampleRate},
    {"bpm", "BPM", kNumber, &Track::beatsPerMinute},
    {"rating", "Rating", kNumber, &Track::rating},
    {"playCount", "Plays", kNumber, &Track::playCount},
    {"skipCount", "Skips", kNumber, &Track::skipCount},
    {"compilation", "Compilation", kTruth, &Track::compilation},
    {"checked", "Checked", kTruth, &Track::checked},
    {"mediaType", "Media", kNumber, &Track::mediaType},
    {"seasonNumber", "Season", kNumber, &Track::seasonNumber},
    {"episodeNumber", "Episode", kNumber, &Track::episodeNumber},
    {"bookmarkMs", "Bookmark", kMilliseconds, &Track::bookmarkMs},
    {"added", "Added", kTime, &Track::added},
    {"modified", "Modified", kTime, &Track::modified},
    {"lastPlayed", "Last played", kTime, &Track::lastPlayed},
    {"lastSkipped", "Last skipped", kTime, &Track::lastSkipped},
    {"released", "Released", kTime, &Track::released},
};

}  // namespace

std::span<const Property> Properties() {
  return kProperties;
}

const Property* FindProperty(std::string_view key) {
  const auto* found = std::ranges::find(kProperties, key, &Property::key);
  return found == std::end(kProperties) ? nullptr : found;
}

std::string_view StringOf(const Track& track, const Property& property) {
  const char* string = track.*std::get<const char * Track::*>(property.field);
  // A library that is older than the property leaves it null.
  return string ? string : "";
}

std::uint64_t NumberOf(const Track& track, const Property& property) {
  if (property.kind == kPersistentId)
    return track.*std::get<std::uint64_t Track::*>(property.field);
  return track.*std::get<std::uint32_t Track::*>(property.field);
}

std::string ValueOf(const Track& track, const Property& property) {
  if (property.IsString()) return std::string(StringOf(track, property));
  const std::uint64_t number = NumberOf(track, property);
  if (property.kind == kTruth) return number != 0 ? "true" : "false";
  if (property.kind == kTime) return TimeString(static_cast<std::uint32_t>(number));
  if (property.kind == kPersistentId) return PersistentIdString(number);
  return std::to_string(number);
}

std::string ShownValueOf(const Track& track, const Property& property) {
  if (property.IsString()) return MakePrintable(StringOf(track, property));
  const std::uint64_t number = NumberOf(track, property);
  if (property.kind == kTruth) return number != 0 ? "yes" : "no";
  // The index counts from 0.
  if (number == 0 && &property != &kProperties[0]) return {};
  if (property.kind == kMilliseconds) return LengthString(number);
  return ValueOf(track, property);
}

}  // namespace quaylink::cli
