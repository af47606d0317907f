// The music of the sample devices: a small made-up collection in many scripts, each track a short
// tone of its own.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "samples/sample_database.h"

namespace quaylink::samples {

struct SampleTrack {
  std::uint32_t id;
  std::u16string title;
  std::u16string artist;
  std::u16string album;
  std::u16string genre;
  std::uint32_t year;
  std::string file;  // below the device's root, its parts separated by "/"
  double toneHertz;
};

// The collection as it lies in a device's control folder, "iPod_Control" or "iTunes_Control".
std::vector<SampleTrack> SampleMusic(const std::string& controlFolder);

// The library that describes it: tracks with their properties, their albums, and a playlist of each
// kind.
Library SampleLibrary(const std::vector<SampleTrack>& music);

// What the player has counted since it got that library.
std::vector<PlayCount> SamplePlayCounts(const std::vector<SampleTrack>& music);

// A WAV file of half a second: 8000 samples a second, 16 bits, one channel.
std::vector<std::uint8_t> ToneFile(double hertz);

}  // namespace quaylink::samples
