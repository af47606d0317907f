// The time for naming the tracks of a large collection, whose names are long.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <deque>
#include <string>
#include <vector>

#include "cli/naming/taken_names.h"
#include "cli/naming/track_namer.h"

namespace quaylink::cli {
namespace {

constexpr std::uint32_t kTracks = 8000;
constexpr std::uint32_t kTracksOfAlbum = 20;

struct Names {
  Names() {
    std::string concerto;
    for (int i = 0; i < 30; ++i) concerto += "Konzert für Violine und Orchester ";
    for (std::uint32_t i = 0; i < kTracks; ++i) {
      Track track;
      track.index = i;
      track.trackNumber = i % kTracksOfAlbum + 1;
      track.artist = Keep(concerto + std::to_string(i / kTracksOfAlbum / 10));
      track.album = Keep(concerto + std::to_string(i / kTracksOfAlbum));
      track.title = Keep(concerto + std::to_string(i));
      track.location = "/iPod_Control/Music/F00/ABCD.mp3";
      tracks.push_back(track);
    }
  }
  const char* Keep(std::string string) { return strings.emplace_back(std::move(string)).c_str(); }

  std::deque<std::string> strings;
  std::vector<Track> tracks;
};

void NameTracks(benchmark::State& state, const std::vector<Track>& tracks) {
  const NameLimits limits = {
      state.range(0) != 0 ? NameLimits::Measure::kUnits : NameLimits::Measure::kBytes, 255, 230};
  for (auto _ : state) {
    const TrackNamer namer(NamePattern(NamePattern::kDefault), tracks, limits);
    TakenNames taken;
    for (const Track& track : tracks) {
      benchmark::DoNotOptimize(taken.TakeFree(namer.WantedPath(track)));
    }
  }
}

void LongNames(benchmark::State& state) {
  NameTracks(state, Names().tracks);
}

void EqualNames(benchmark::State& state) {
  const Names names;
  NameTracks(state, std::vector<Track>(kTracks, names.tracks.front()));
}

BENCHMARK(LongNames)->ArgName("units")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(EqualNames)->ArgName("units")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace quaylink::cli

BENCHMARK_MAIN();
