#include "cli/collection/collection.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include "cli/base/program.h"

namespace quaylink::cli {
namespace {

std::int32_t QUAYLINK_CALL ReadStandardInput(void*, void* buffer, std::uint32_t size) {
  const std::size_t count = std::fread(buffer, 1, size, stdin);
  return count == 0 && std::ferror(stdin) != 0 ? -1 : static_cast<std::int32_t>(count);
}

}  // namespace

template <class Open>
Collection Collection::Opened(const std::string& name, Open open) {
  QuaylinkCollection* collection = nullptr;
  QuaylinkError error = {};
  error.structSize = sizeof(error);
  if (open(&collection, &error) != QUAYLINK_OK) throw Failure(name + ": " + error.message);
  return {Handle(collection), name};
}

Collection Collection::OfFile(const std::string& path, const std::string& name) {
  return Opened(name, [&](QuaylinkCollection** collection, QuaylinkError* error) {
    return QuaylinkOpenFile(path.c_str(), nullptr, collection, error);
  });
}

Collection Collection::OfStandardInput() {
  return Opened("the standard input", [](QuaylinkCollection** collection, QuaylinkError* error) {
    return QuaylinkOpenStream(ReadStandardInput, nullptr, nullptr, collection, error);
  });
}

Collection Collection::OfBytes(std::string_view database, std::string_view playCounts,
                               const std::string& name) {
  QuaylinkOpenOptions options = {};
  options.structSize = sizeof(options);
  if (!playCounts.empty()) {
    options.playCountsBytes = playCounts.data();
    options.playCountsSize = playCounts.size();
  }
  return Opened(name, [&](QuaylinkCollection** collection, QuaylinkError* error) {
    return QuaylinkOpenMemory(database.data(), database.size(), &options, collection, error);
  });
}

Collection::Collection(Handle handle, std::string name)
    : handle_(std::move(handle)), name_(std::move(name)) {
  info_.structSize = sizeof(info_);
  QuaylinkGetInfo(handle_.get(), &info_);
  tracks_.resize(info_.trackCount);
  for (Track& track : tracks_) {
    track.structSize = sizeof(QuaylinkTrack);
    track.index = static_cast<std::uint32_t>(&track - tracks_.data());
    QuaylinkGetTrack(handle_.get(), track.index, &track);
  }
  playlists_.resize(info_.playlistCount);
  for (std::uint32_t i = 0; i < info_.playlistCount; ++i) {
    playlists_[i].structSize = sizeof(QuaylinkPlaylist);
    QuaylinkGetPlaylist(handle_.get(), i, &playlists_[i]);
  }
}

std::string Collection::Problem() const {
  if (info_.damaged == 0) return {};
  return name_ + ": is damaged, or was not copied whole; " + std::to_string(tracks_.size()) +
         " of its tracks could be read";
}

std::string Collection::ProblemInDetail() const {
  if (info_.damaged == 0) return {};
  const std::string place = info_.damageOffset == QUAYLINK_NO_OFFSET
                                ? ""
                                : " (at byte " + std::to_string(info_.damageOffset) + ")";
  return info_.damage + place;
}

void Collection::PutOnDrive(char letter) {
  locations_.reserve(tracks_.size());
  for (Track& track : tracks_) {
    if (*track.location == '\0') continue;
    std::string& location = locations_.emplace_back(std::string{letter, ':'} + track.location);
    std::ranges::replace(location, '/', '\\');
    track.location = location.c_str();
  }
}

}  // namespace quaylink::cli
