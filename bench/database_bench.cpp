// What it costs to parse and to write a large database, compared with touching its bytes once.

#include <benchmark/benchmark.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "common/local_file.h"
#include "itunesdb/database.h"
#include "quaylink/collection.h"
#include "quaylink/quaylink.h"
#include "samples/sample_database.h"

namespace {

using namespace quaylink;
namespace fs = std::filesystem;

constexpr std::uint32_t kTracks = 40'000;
constexpr std::uint32_t kFewTracks = 10'000;
constexpr std::uint32_t kManyTracks = 100'000;

// A generated database, as a file for as long as the program runs.
class DatabaseFile {
 public:
  explicit DatabaseFile(std::uint32_t trackCount)
      : path_(fs::temp_directory_path() /
              ("quaylink-bench-" + std::to_string(getpid()) + "-" + std::to_string(trackCount))) {
    const auto bytes = samples::WriteDatabase(samples::MakeLargeLibrary(trackCount));
    const LocalFile file(std::fopen(path_.c_str(), "wb"));
    std::fwrite(bytes.data(), 1, bytes.size(), file.get());
    size_ = bytes.size();
  }
  DatabaseFile(const DatabaseFile&) = delete;
  DatabaseFile& operator=(const DatabaseFile&) = delete;
  ~DatabaseFile() { fs::remove(path_); }

  const char* Path() const { return path_.c_str(); }
  std::size_t Size() const { return size_; }

 private:
  fs::path path_;
  std::size_t size_ = 0;
};

std::unique_ptr<std::uint8_t[]> ReadWhole(const DatabaseFile& database) {
  auto bytes = std::make_unique_for_overwrite<std::uint8_t[]>(database.Size());
  const LocalFile file(std::fopen(database.Path(), "rb"));
  if (std::fread(bytes.get(), 1, database.Size(), file.get()) != database.Size()) std::abort();
  return bytes;
}

void PlainRead(benchmark::State& state, const DatabaseFile& database) {
  for (auto _ : state) benchmark::DoNotOptimize(ReadWhole(database).get());
}

void CountingCall(benchmark::State& state, const DatabaseFile& database) {
  InitializeIPod();
  for (auto _ : state) benchmark::DoNotOptimize(ParseITunesDB(database.Path(), 0, nullptr));
  TerminateIPod();
}

// Opens the collection and asks every property of every track.
void Collection(benchmark::State& state, const DatabaseFile& database) {
  for (auto _ : state) {
    QuaylinkCollection* collection = nullptr;
    if (QuaylinkOpenFile(database.Path(), nullptr, &collection, nullptr) != QUAYLINK_OK) {
      std::abort();
    }
    QuaylinkTrack track{};
    track.structSize = sizeof(track);
    for (std::uint32_t i = 0; QuaylinkGetTrack(collection, i, &track) == QUAYLINK_OK; ++i) {
      benchmark::DoNotOptimize(track);
    }
    QuaylinkClose(collection);
  }
}

// With a manager of its own for every call, so that nothing is warm from the call before.
void FirstCall(benchmark::State& state, const DatabaseFile& database, std::uint32_t trackCount) {
  for (auto _ : state) {
    std::vector<TrackRecord> records(trackCount);
    InitializeIPod();
    benchmark::DoNotOptimize(
        ParseITunesDB(database.Path(), static_cast<std::int32_t>(trackCount), records.data()));
    TerminateIPod();
  }
}

// As hosts do: the count first, which is not timed here, then the records.
void FullCall(benchmark::State& state, const DatabaseFile& database, std::uint32_t trackCount) {
  std::vector<TrackRecord> records(trackCount);
  InitializeIPod();
  ParseITunesDB(database.Path(), 0, nullptr);
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        ParseITunesDB(database.Path(), static_cast<std::int32_t>(trackCount), records.data()));
  }
  TerminateIPod();
}

void CopyBytes(benchmark::State& state, const DatabaseFile& database) {
  const auto bytes = ReadWhole(database);
  for (auto _ : state) {
    auto copy = std::make_unique_for_overwrite<std::uint8_t[]>(database.Size());
    std::memcpy(copy.get(), bytes.get(), database.Size());
    benchmark::DoNotOptimize(copy.get());
  }
}

void Write(benchmark::State& state, const DatabaseFile& database) {
  const LocalFile file(std::fopen(database.Path(), "rb"));
  Reader input(file.get());
  DatabaseChunk chunks;
  chunks.Read(input);
  for (auto _ : state) {
    Writer output;
    benchmark::DoNotOptimize(chunks.Write(output));
  }
}

// The peak memory in bytes of a process of its own that takes the records of the database.
std::size_t PeakMemoryOfFullCall(const DatabaseFile& database) {
  const std::string count = std::to_string(kTracks);
  const pid_t child = fork();
  if (child == 0) {
    execl("/proc/self/exe", "database_bench", "--take-records", database.Path(), count.c_str(),
          nullptr);
    _exit(127);
  }
  int status = 0;
  rusage usage{};
  if (wait4(child, &status, 0, &usage) != child || status != 0) std::abort();
  return static_cast<std::size_t>(usage.ru_maxrss) * 1024;
}

int TakeRecords(const char* path, const char* count) {
  std::vector<TrackRecord> records(std::stoul(count));
  InitializeIPod();
  const auto wanted = static_cast<std::int32_t>(records.size());
  return ParseITunesDB(path, wanted, records.data()) == wanted ? 0 : 1;
}

// Prints as usual, and keeps the medians.
class MedianReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    ConsoleReporter::ReportRuns(runs);
    for (const Run& run : runs) {
      if (run.aggregate_name == "median") {
        medians[run.run_name.function_name] = run.GetAdjustedRealTime();
      }
    }
  }

  std::map<std::string, double> medians;  // in milliseconds
};

}  // namespace

int main(int argc, char** argv) {
  if (argc == 4 && std::strcmp(argv[1], "--take-records") == 0)
    return TakeRecords(argv[2], argv[3]);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;

  const DatabaseFile database(kTracks);
  const DatabaseFile few(kFewTracks);
  const DatabaseFile many(kManyTracks);
  const auto add = [](const char* name, auto function, auto&... arguments) {
    benchmark::RegisterBenchmark(name, function, std::ref(arguments)...)
        ->Unit(benchmark::kMillisecond)
        ->Repetitions(15)
        ->ReportAggregatesOnly();
  };
  add("plain read", PlainRead, database);
  add("counting call", CountingCall, database);
  add("collection", Collection, database);
  add("full call", FullCall, database, kTracks);
  add("first call", FirstCall, database, kTracks);
  add("full call, 10,000 tracks", FullCall, few, kFewTracks);
  add("full call, 100,000 tracks", FullCall, many, kManyTracks);
  add("memcpy", CopyBytes, database);
  add("write", Write, database);
  MedianReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);

  std::map<std::string, double>& median = reporter.medians;
  const auto print = [](const char* what, double ratio, const char* unit) {
    std::printf("%-46s %6.2f %s\n", what, ratio, unit);
  };
  std::printf("\n%u tracks, %.1f MB; medians of 15 runs\n", kTracks,
              static_cast<double>(database.Size()) / 1e6);
  print("ParseITunesDB, counting", median["counting call"] / median["plain read"], "plain reads");
  print("Collection, every property of every track", median["collection"] / median["counting call"],
        "counting calls");
  print("ParseITunesDB, records", median["full call"] / median["plain read"], "plain reads");
  print("ParseITunesDB, records, nothing warm", median["first call"] / median["plain read"],
        "plain reads");
  print("Write", median["write"] / median["memcpy"], "memcpys");
  print("Cost of a track at 100,000 over 10,000",
        median["full call, 100,000 tracks"] / median["full call, 10,000 tracks"] / 10, "");
  print("Peak memory, records handed out",
        static_cast<double>(PeakMemoryOfFullCall(database)) / static_cast<double>(database.Size()),
        "times the file");
  return 0;
}
