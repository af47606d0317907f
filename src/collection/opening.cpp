// From a file, memory or a stream to a collection.

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <optional>
#include <string_view>
#include <system_error>

#include "collection/collection.h"
#include "collection/inflation.h"
#include "collection/open_file.h"
#include "collection/play_counts.h"
#include "collection/salvage.h"
#include "collection/sequential_walk.h"
#include "common/ascii.h"
#include "itunesdb/header.h"
#include "itunesdb/writer.h"

namespace quaylink {

namespace {

constexpr std::uint32_t kBlock = 64 * 1024;

// The database on its way: a seekable file, or memory.
struct Source {
  std::FILE* file = nullptr;
  std::span<const std::uint8_t> memory;

  Reader Read() const { return file ? Reader(file) : Reader(memory); }
};

// What can be told of a flaw in one line.
std::string Sentence(const Flaw& flaw) {
  return std::string(flaw.subject) + ' ' + flaw.trouble;
}

bool Fail(Failure& failure, QuaylinkResult code, std::string message,
          std::uint64_t offset = QUAYLINK_NO_OFFSET) {
  failure = {code, offset, std::move(message)};
  return false;
}

bool BeginsAsDatabase(std::span<const std::uint8_t> bytes) {
  Reader reader(bytes);
  return CheckTag(reader, kDatabaseTag) >= 0;
}

// Reads everything there is into memory, or the beginning of what is no database.
bool ReadAll(const ReadBytes& read, Writer& bytes, Failure& failure) {
  const auto block = std::make_unique_for_overwrite<std::uint8_t[]>(kBlock);
  for (;;) {
    const std::int64_t got = read(block.get(), kBlock);
    if (got == 0) return true;
    if (got < 0 || got > kBlock) {
      return Fail(failure, QUAYLINK_CANNOT_READ, "the database cannot be read to its end",
                  bytes.Size());
    }
    const bool beginning = bytes.Size() < kTagLength;
    bytes.Append(block.get(), static_cast<std::size_t>(got));
    // Lengths in a database have 32 bits.
    if (bytes.Size() > UINT32_MAX - kBlock) {
      return Fail(failure, QUAYLINK_TOO_LARGE, "the database is too large");
    }
    if (beginning && bytes.Size() >= kTagLength && !BeginsAsDatabase(bytes.Written())) return true;
  }
}

ReadBytes ReadingOf(std::FILE* file) {
  return [file](void* buffer, std::uint32_t size) -> std::int64_t {
    const std::size_t got = std::fread(buffer, 1, size, file);
    return got == 0 && std::ferror(file) ? -1 : static_cast<std::int64_t>(got);
  };
}

bool IsSeekable(std::FILE* file) {
  return std::fseek(file, 0, SEEK_END) == 0 && std::ftell(file) > 0;
}

std::string FolderOf(std::string_view path) {
  while (!path.empty() && !IsPathSeparator(path.back())) path.remove_suffix(1);
  return std::string(path);
}

class Opening {
 public:
  Opening(const OpenOptions& options, Failure& failure) : options_(options), failure_(failure) {}

  // `path` is the database's, where it has one.
  CollectionPointer Open(Source source, const char* path);

 private:
  bool Inflate(Source& source);
  bool ReadContents(const Source& source);
  bool SaveContents(Source source);
  bool AddPlayCounts(const char* path);
  void AddPlayCounts(Reader& reader);

  const OpenOptions& options_;
  Failure& failure_;
  CollectionPointer collection_ = std::make_unique<QuaylinkCollection>();
  Writer inflated_;
  std::optional<Flaw> compressionFlaw_;
};

CollectionPointer Opening::Open(Source source, const char* path) {
  if (!Inflate(source) || !ReadContents(source) || !AddPlayCounts(path)) return nullptr;
  Contents& contents = *collection_->contents;
  if (compressionFlaw_) contents.flaw = compressionFlaw_;
  contents.tracks.Sort();
  contents.playlists.Resolve(contents.tracks);
  if (contents.flaw) collection_->damage = Sentence(*contents.flaw);
  return std::move(collection_);
}

bool Opening::Inflate(Source& source) {
  Reader reader = source.Read();
  const Inflation inflation = InflateDatabase(reader, inflated_);
  if (inflation == Inflation::kTooLarge) {
    return Fail(failure_, QUAYLINK_TOO_LARGE, "the compressed database is too large");
  }
  if (inflation == Inflation::kNotCompressed) return true;
  source = {nullptr, inflated_.Written()};
  collection_->compressed = true;
  if (inflation != Inflation::kInflated) {
    compressionFlaw_ = Flaw{inflated_.Size(), "the compressed database",
                            inflation == Inflation::kCut ? kIsCut : kIsBroken};
  }
  return true;
}

bool Opening::ReadContents(const Source& source) {
  auto& contents = collection_->contents = std::make_unique<Contents>();
  Reader reader = source.Read();
  const WalkResult result = WalkSequentially(reader, !options_.strict, *contents);
  if (source.file && std::ferror(source.file)) {
    return Fail(failure_, QUAYLINK_CANNOT_READ, "the database cannot be read to its end",
                reader.Position());
  }
  if (result == WalkResult::kNoDatabase) {
    return Fail(failure_, QUAYLINK_NOT_A_DATABASE, "this is no music database");
  }
  if (options_.strict && (compressionFlaw_ || result == WalkResult::kRefused)) {
    const Flaw& flaw = compressionFlaw_ ? *compressionFlaw_ : *contents->flaw;
    return Fail(failure_, QUAYLINK_DAMAGED, Sentence(flaw), flaw.offset);
  }
  return options_.strict || !contents->flaw || SaveContents(source);
}

bool Opening::SaveContents(Source source) {
  collection_->contents.reset();
  Writer bytes;
  if (source.file) {
    std::fseek(source.file, 0, SEEK_END);
    bytes.Reserve(static_cast<std::size_t>(std::max(std::ftell(source.file), 0L)));
    std::rewind(source.file);
    if (!ReadAll(ReadingOf(source.file), bytes, failure_)) return false;
    source.memory = bytes.Written();
  }
  collection_->contents = std::make_unique<Contents>();
  Salvage(source.memory, *collection_->contents);
  return true;
}

bool Opening::AddPlayCounts(const char* path) {
  if (options_.playCountsPath) {
    const LocalFile file = OpenForReading(options_.playCountsPath);
    if (!file) {
      return Fail(failure_, QUAYLINK_CANNOT_OPEN,
                  "the play counts cannot be opened: " + std::generic_category().message(errno));
    }
    Reader reader(file.get());
    AddPlayCounts(reader);
  } else if (options_.playCountsBytes.data()) {
    Reader reader(options_.playCountsBytes);
    AddPlayCounts(reader);
  } else if (path && options_.playCountsBeside) {
    if (const LocalFile file = OpenOrdinaryFile((FolderOf(path) + "Play Counts").c_str())) {
      Reader reader(file.get());
      AddPlayCounts(reader);
    }
  }
  return true;
}

void Opening::AddPlayCounts(Reader& reader) {
  const bool taken = TakePlayCounts(reader, *collection_->contents);
  collection_->playCounts = taken ? QUAYLINK_PLAY_COUNTS_TAKEN : QUAYLINK_PLAY_COUNTS_LEFT;
}

CollectionPointer OpenBytes(const Writer& bytes, const char* path, const OpenOptions& options,
                            Failure& failure) {
  return Opening(options, failure).Open({nullptr, bytes.Written()}, path);
}

// The compressed database beside an empty one; none where the empty file is no player's database.
std::string CompressedBeside(std::string_view path) {
  std::string folder = FolderOf(path);
  if (!EqualsIgnoringCase(path.substr(folder.size()), "iTunesDB")) return {};
  return folder + "iTunesCDB";
}

}  // namespace

CollectionPointer OpenFile(const char* path, const OpenOptions& options, Failure& failure) {
  const LocalFile file = OpenForReading(path);
  if (!file) {
    Fail(failure, QUAYLINK_CANNOT_OPEN,
         "the database cannot be opened: " + std::generic_category().message(errno));
    return nullptr;
  }
  if (IsSeekable(file.get())) return Opening(options, failure).Open({file.get(), {}}, path);
  std::clearerr(file.get());
  Writer bytes;
  if (!ReadAll(ReadingOf(file.get()), bytes, failure)) return nullptr;
  if (bytes.Size() == 0) {
    const std::string compressed = CompressedBeside(path);
    const LocalFile beside = compressed.empty() ? nullptr : OpenOrdinaryFile(compressed.c_str());
    if (beside && IsSeekable(beside.get())) {
      return Opening(options, failure).Open({beside.get(), {}}, path);
    }
  }
  return OpenBytes(bytes, path, options, failure);
}

CollectionPointer OpenMemory(std::span<const std::uint8_t> bytes, const OpenOptions& options,
                             Failure& failure) {
  return Opening(options, failure).Open({nullptr, bytes}, nullptr);
}

CollectionPointer OpenStream(const ReadBytes& read, const OpenOptions& options, Failure& failure) {
  Writer bytes;
  if (!ReadAll(read, bytes, failure)) return nullptr;
  return OpenBytes(bytes, nullptr, options, failure);
}

}  // namespace quaylink
