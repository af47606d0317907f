// The exported functions: they check what the host passes, keep exceptions in, and leave the rest
// to what is below.

#include <algorithm>
#include <cstring>
#include <new>
#include <stdexcept>

#include "collection/collection.h"

namespace quaylink {

namespace {

// More than any version of a struct will ever have.
constexpr std::uint32_t kLargestStruct = 64 * 1024;

// The sizes of the structs in the first version are the smallest that a host can have.
template <class Struct>
bool HasSoundSize(const Struct* value) {
  return value && value->structSize >= sizeof(Struct) && value->structSize <= kLargestStruct;
}

// Gives the host a struct, with zeros for the fields that only the host knows.
template <class Struct>
void HandOut(Struct value, Struct* destination) {
  value.structSize = destination->structSize;
  std::memset(static_cast<void*>(destination), 0, destination->structSize);
  std::memcpy(destination, &value, sizeof(value));
}

bool IsUtf8Tail(char c) {
  return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

void HandOut(const Failure& failure, QuaylinkError* error) {
  if (!error) return;
  QuaylinkError value{};
  value.code = failure.code;
  value.offset = failure.offset;
  std::size_t length = std::min(failure.message.size(), sizeof(value.message) - 1);
  while (length < failure.message.size() && length > 0 && IsUtf8Tail(failure.message[length])) {
    --length;
  }
  std::memcpy(value.message, failure.message.data(), length);
  HandOut(value, error);
}

// False when the host asks for what this version does not know.
bool TakeOptions(const QuaylinkOpenOptions* given, OpenOptions& options) {
  if (!given) return true;
  if (!HasSoundSize(given) || given->reading > QUAYLINK_STRICT ||
      given->playCounts > QUAYLINK_PLAY_COUNTS_IGNORED || given->reserved != 0) {
    return false;
  }
  const auto* bytes = reinterpret_cast<const unsigned char*>(given);
  if (std::any_of(bytes + sizeof(*given), bytes + given->structSize,
                  [](unsigned char byte) { return byte != 0; })) {
    return false;
  }
  options.strict = given->reading == QUAYLINK_STRICT;
  options.playCountsBeside = given->playCounts == QUAYLINK_PLAY_COUNTS_BESIDE;
  options.playCountsPath = given->playCountsPath;
  if (given->playCountsBytes) {
    options.playCountsBytes = {static_cast<const std::uint8_t*>(given->playCountsBytes),
                               given->playCountsSize};
  }
  return true;
}

// Lets `open` open a collection, with what can go wrong before and in it.
template <class Open>
QuaylinkResult OpenWith(bool soundArguments, const QuaylinkOpenOptions* given,
                        QuaylinkCollection** collection, QuaylinkError* error, Open open) {
  if (collection) *collection = nullptr;
  if (error && !HasSoundSize(error)) return QUAYLINK_INVALID_ARGUMENT;
  Failure failure;
  try {
    OpenOptions options;
    if (!collection || !soundArguments || !TakeOptions(given, options)) {
      failure.code = QUAYLINK_INVALID_ARGUMENT;
      failure.message = "an argument is not as it should be";
    } else {
      *collection = open(options, failure).release();
    }
  } catch (const std::bad_alloc&) {
    failure = {QUAYLINK_NO_MEMORY, QUAYLINK_NO_OFFSET, {}};
  } catch (const std::length_error&) {
    failure = {QUAYLINK_NO_MEMORY, QUAYLINK_NO_OFFSET, {}};
  }
  if (failure.code == QUAYLINK_NO_MEMORY) {
    static constexpr char kMessage[] = "out of memory";
    failure.message.assign(kMessage);  // which a string holds without any memory
  }
  HandOut(failure, error);
  return failure.code;
}

template <class Table, class Struct>
QuaylinkResult GiveItem(const Table& table, std::uint32_t index, Struct* destination) {
  if (index >= table.size()) return QUAYLINK_OUT_OF_RANGE;
  HandOut(table[index], destination);
  return QUAYLINK_OK;
}

}  // namespace

}  // namespace quaylink

using namespace quaylink;

static_assert(QUAYLINK_COLLECTION_VERSION_MAJOR == PROJECT_VERSION_MAJOR &&
                  QUAYLINK_COLLECTION_VERSION_MINOR == PROJECT_VERSION_MINOR &&
                  QUAYLINK_COLLECTION_VERSION_PATCH == PROJECT_VERSION_PATCH,
              "the header tells the library's version");

QuaylinkResult QUAYLINK_CALL QuaylinkOpenFile(const char* path, const QuaylinkOpenOptions* options,
                                              QuaylinkCollection** collection,
                                              QuaylinkError* error) {
  return OpenWith(
      path != nullptr, options, collection, error,
      [&](const OpenOptions& taken, Failure& failure) { return OpenFile(path, taken, failure); });
}

QuaylinkResult QUAYLINK_CALL QuaylinkOpenMemory(const void* bytes, size_t size,
                                                const QuaylinkOpenOptions* options,
                                                QuaylinkCollection** collection,
                                                QuaylinkError* error) {
  return OpenWith(
      bytes != nullptr || size == 0, options, collection, error,
      [&](const OpenOptions& taken, Failure& failure) {
        return OpenMemory({static_cast<const std::uint8_t*>(bytes), size}, taken, failure);
      });
}

QuaylinkResult QUAYLINK_CALL QuaylinkOpenStream(QuaylinkReadCallback read, void* context,
                                                const QuaylinkOpenOptions* options,
                                                QuaylinkCollection** collection,
                                                QuaylinkError* error) {
  return OpenWith(read != nullptr, options, collection, error,
                  [&](const OpenOptions& taken, Failure& failure) {
                    return OpenStream(
                        [&](void* buffer, std::uint32_t size) -> std::int64_t {
                          return read(context, buffer, size);
                        },
                        taken, failure);
                  });
}

void QUAYLINK_CALL QuaylinkClose(QuaylinkCollection* collection) {
  delete collection;
}

QuaylinkResult QUAYLINK_CALL QuaylinkGetInfo(const QuaylinkCollection* collection,
                                             QuaylinkInfo* info) {
  if (!collection || !HasSoundSize(info)) return QUAYLINK_INVALID_ARGUMENT;
  const Contents& contents = *collection->contents;
  QuaylinkInfo value{};
  value.trackCount = contents.tracks.size();
  value.playlistCount = contents.playlists.size();
  value.compressed = collection->compressed;
  value.playCounts = collection->playCounts;
  value.damaged = contents.flaw.has_value();
  value.damageOffset = contents.flaw ? contents.flaw->offset : QUAYLINK_NO_OFFSET;
  value.damage = collection->damage.c_str();
  HandOut(value, info);
  return QUAYLINK_OK;
}

QuaylinkResult QUAYLINK_CALL QuaylinkGetTrack(const QuaylinkCollection* collection, uint32_t index,
                                              QuaylinkTrack* track) {
  if (!collection || !HasSoundSize(track)) return QUAYLINK_INVALID_ARGUMENT;
  return GiveItem(collection->contents->tracks, index, track);
}

QuaylinkResult QUAYLINK_CALL QuaylinkGetPlaylist(const QuaylinkCollection* collection,
                                                 uint32_t index, QuaylinkPlaylist* playlist) {
  if (!collection || !HasSoundSize(playlist)) return QUAYLINK_INVALID_ARGUMENT;
  return GiveItem(collection->contents->playlists, index, playlist);
}

uint32_t QUAYLINK_CALL QuaylinkCollectionVersion(void) {
  return QUAYLINK_COLLECTION_VERSION_NUMBER;
}
