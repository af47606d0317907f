// What parsing a database takes through the exported functions, in milliseconds, the median of many
// calls: "parse_time FILE". The same program on both systems; scripts/compare-speed sets one beside
// the other.

#include <quaylink/quaylink.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <vector>

namespace {

constexpr int kRepetitions = 15;

template <class Operation>
void Print(const char* name, Operation operation) {
  std::vector<double> times;
  for (int i = 0; i < kRepetitions; ++i) {
    const auto begin = std::chrono::steady_clock::now();
    operation();
    const std::chrono::duration<double, std::milli> time = std::chrono::steady_clock::now() - begin;
    times.push_back(time.count());
  }
  std::nth_element(times.begin(), times.begin() + kRepetitions / 2, times.end());
  std::printf("%s %.1f\n", name, times[kRepetitions / 2]);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  const char* const file = argv[1];
  InitializeIPod();
  const int32_t count = ParseITunesDB(file, 0, nullptr);
  if (count <= 0) return 1;
  std::vector<TrackRecord> records(static_cast<std::size_t>(count));
  Print("counting", [&] { ParseITunesDB(file, 0, nullptr); });
  Print("records", [&] { ParseITunesDB(file, count, records.data()); });
  Print("records-nothing-warm", [&] {
    TerminateIPod();
    InitializeIPod();
    ParseITunesDB(file, count, records.data());
  });
  TerminateIPod();
  return 0;
}
