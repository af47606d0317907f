// What it costs to parse and to write a database, compared with touching its bytes once: reading
// the file through a window of 64 KiB, which stays in the processor's cache, or copying its bytes.

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <list>
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

constexpr std::uint32_t kParsed[] = {2'000, 10'000, 40'000, 100'000};
constexpr std::uint32_t kWritten = 40'000;

// A generated database, as a file for as long as the program runs.
class DatabaseFile {
 public:
  explicit DatabaseFile(std::uint32_t trackCount)
      : path_(fs::temp_directory_path() /
              ("quaylink-bench-" + std::to_string(getpid()) + "-" + std::to_string(trackCount))),
        trackCount_(trackCount) {
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
  std::uint32_t TrackCount() const { return trackCount_; }

 private:
  fs::path path_;
  std::uint32_t trackCount_;
  std::size_t size_ = 0;
};

std::unique_ptr<std::uint8_t[]> ReadWhole(const DatabaseFile& database) {
  auto bytes = std::make_unique_for_overwrite<std::uint8_t[]>(database.Size());
  const LocalFile file(std::fopen(database.Path(), "rb"));
  if (std::fread(bytes.get(), 1, database.Size(), file.get()) != database.Size()) std::abort();
  return bytes;
}

void WindowedRead(benchmark::State& state, const DatabaseFile& database) {
  constexpr std::size_t kWindowSize = 64 * 1024;
  const auto window = std::make_unique_for_overwrite<std::uint8_t[]>(kWindowSize);
  for (auto _ : state) {
    const LocalFile file(std::fopen(database.Path(), "rb"));
    std::setvbuf(file.get(), nullptr, _IONBF, 0);
    std::size_t size = 0;
    while (const std::size_t got = std::fread(window.get(), 1, kWindowSize, file.get())) {
      size += got;
      benchmark::DoNotOptimize(window.get());
    }
    if (size != database.Size()) std::abort();
  }
}

std::int32_t TakeRecords(const DatabaseFile& database, std::vector<TrackRecord>& records) {
  return ParseITunesDB(database.Path(), static_cast<std::int32_t>(records.size()), records.data());
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

// As hosts do: the count first, which is not timed here, then the records.
void FullCall(benchmark::State& state, const DatabaseFile& database) {
  std::vector<TrackRecord> records(database.TrackCount());
  InitializeIPod();
  ParseITunesDB(database.Path(), 0, nullptr);
  for (auto _ : state) benchmark::DoNotOptimize(TakeRecords(database, records));
  TerminateIPod();
}

// With a manager of its own for every call, so that nothing is warm from the call before.
void FirstCall(benchmark::State& state, const DatabaseFile& database) {
  for (auto _ : state) {
    std::vector<TrackRecord> records(database.TrackCount());
    InitializeIPod();
    benchmark::DoNotOptimize(TakeRecords(database, records));
    TerminateIPod();
  }
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

// The most memory in bytes that taking the records of the database adds to a process of its own,
// the room for the records included.
double PeakMemoryOfFullCall(const DatabaseFile& database) {
  const std::string command = fs::read_symlink("/proc/self/exe").string() + " --take-records " +
                              database.Path() + " " + std::to_string(database.TrackCount());
  std::FILE* const output = popen(command.c_str(), "r");
  long kilobytes = 0;
  if (!output || std::fscanf(output, "%ld", &kilobytes) != 1 || pclose(output) != 0) std::abort();
  return static_cast<double>(kilobytes) * 1024;
}

// The most memory that this process has held so far, in kilobytes.
long PeakMemory() {
  std::ifstream status("/proc/self/status");
  for (std::string word; status >> word;) {
    if (word == "VmHWM:" && status >> word) return std::stol(word);
  }
  std::abort();
}

int TakeRecordsAlone(const char* path, const char* count) {
  const long before = PeakMemory();
  std::vector<TrackRecord> records(std::stoul(count));
  InitializeIPod();
  const auto wanted = static_cast<std::int32_t>(records.size());
  if (ParseITunesDB(path, wanted, records.data()) != wanted) return 1;
  std::printf("%ld\n", PeakMemory() - before);
  return 0;
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
    return TakeRecordsAlone(argv[2], argv[3]);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;

  std::list<DatabaseFile> databases;
  const auto add = [](const std::string& name, auto function, const DatabaseFile& database) {
    benchmark::RegisterBenchmark((name + ", " + std::to_string(database.TrackCount())).c_str(),
                                 function, std::ref(database))
        ->Unit(benchmark::kMillisecond)
        ->Repetitions(15)
        ->ReportAggregatesOnly();
  };
  for (const std::uint32_t trackCount : kParsed) {
    const DatabaseFile& database = databases.emplace_back(trackCount);
    add("read", WindowedRead, database);
    add("count", CountingCall, database);
    add("collection", Collection, database);
    add("records", FullCall, database);
    add("first call", FirstCall, database);
    if (trackCount != kWritten) continue;
    add("memcpy", CopyBytes, database);
    add("write", Write, database);
  }
  MedianReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);

  const auto median = [&reporter](const std::string& name, std::uint32_t trackCount) {
    return reporter.medians[name + ", " + std::to_string(trackCount)];
  };
  std::printf("\nMedians of 15 runs; times reading the file through a window of 64 KiB\n");
  std::printf("%8s %8s %8s %8s %11s %12s\n", "tracks", "MB", "count", "records", "first call",
              "peak memory");
  for (const DatabaseFile& database : databases) {
    const std::uint32_t tracks = database.TrackCount();
    const double read = median("read", tracks);
    std::printf("%8u %8.1f %8.1f %8.1f %11.1f %5.2f x file\n", tracks,
                static_cast<double>(database.Size()) / 1e6, median("count", tracks) / read,
                median("records", tracks) / read, median("first call", tracks) / read,
                PeakMemoryOfFullCall(database) / static_cast<double>(database.Size()));
  }
  std::printf("Cost of a track at 100,000 over that at 10,000: %.2f\n",
              median("records", 100'000) / median("records", 10'000) / 10);
  std::printf(
      "A collection of 40,000, every property of every track: %.2f times the counting call\n",
      median("collection", 40'000) / median("count", 40'000));
  std::printf("Writing %u tracks: %.2f times copying the bytes\n", kWritten,
              median("write", kWritten) / median("memcpy", kWritten));
  return 0;
}
