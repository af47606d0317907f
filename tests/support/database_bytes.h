// Databases as bytes, put together by hand: what a file can hold, sound or not, without the
// library's own writer.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "itunesdb/chunk.h"

namespace quaylink::test {

template <class T>
std::string Integer(T value) {
  std::string bytes(sizeof(T), '\0');
  StoreLittleEndian(reinterpret_cast<std::uint8_t*>(bytes.data()), value);
  return bytes;
}
inline std::string U8(std::uint8_t value) {
  return Integer(value);
}
inline std::string U16(std::uint16_t value) {
  return Integer(value);
}
inline std::string U32(std::uint32_t value) {
  return Integer(value);
}
inline std::string U64(std::uint64_t value) {
  return Integer(value);
}
inline std::string Zeros(std::size_t count) {
  return std::string(count, '\0');
}

inline std::string Utf16(std::u16string_view text) {
  std::string bytes;
  for (const char16_t unit : text) bytes += Integer(static_cast<std::uint16_t>(unit));
  return bytes;
}

// Bytes that are all different from their neighbours, so that a field in the wrong place shows.
inline std::string Pattern(std::size_t count) {
  std::string bytes(count, '\0');
  for (std::size_t i = 0; i < count; ++i) bytes[i] = static_cast<char>(i * 7 + 131);
  return bytes;
}

// A chunk with a total length. The fields follow the common header and are cut or filled with zeros
// to the header length.
inline std::string ChunkBytes(std::string_view tag, std::uint32_t headerLength, std::string fields,
                              std::string_view body) {
  fields.resize(headerLength - 12);
  return std::string(tag) + U32(headerLength) +
         U32(headerLength + static_cast<std::uint32_t>(body.size())) + fields + std::string(body);
}

// A list chunk, whose third word counts its items.
inline std::string ListBytes(std::string_view tag, std::uint32_t count, std::string_view items,
                             std::uint32_t headerLength = 92) {
  return std::string(tag) + U32(headerLength) + U32(count) + Zeros(headerLength - 12) +
         std::string(items);
}

inline std::string RawObject(std::uint32_t type, std::string_view body) {
  return ChunkBytes("mhod", 24, U32(type) + U32(0) + U32(0), body);
}
inline std::string TextObject(std::uint32_t type, std::u16string_view text) {
  const std::string bytes = Utf16(text);
  return RawObject(
      type, U32(1) + U32(static_cast<std::uint32_t>(bytes.size())) + U32(1) + U32(0) + bytes);
}

// A track item with the given data objects.
inline std::string Track(std::uint32_t id, std::uint32_t objectCount, std::string_view objects,
                         std::uint32_t headerLength = 388) {
  return ChunkBytes("mhit", headerLength, U32(objectCount) + U32(id), objects);
}

inline std::string DataSet(std::uint32_t type, std::string_view list) {
  return ChunkBytes("mhsd", 96, U32(type), list);
}

inline std::string Database(std::uint32_t dataSetCount, std::string_view dataSets,
                            std::uint32_t headerLength = 188) {
  return ChunkBytes("mhbd", headerLength, U32(1) + U32(25) + U32(dataSetCount), dataSets);
}

// A database with one data set of tracks.
inline std::string TrackDatabase(std::uint32_t trackCount, std::string_view tracks) {
  return Database(1, DataSet(1, ListBytes("mhlt", trackCount, tracks)));
}

inline std::span<const std::uint8_t> AsBytes(std::string_view bytes) {
  return {reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()};
}

// What the chunk's Read returns, and how many bytes it took.
struct Reading {
  std::int32_t result;
  std::uint64_t consumed;
};
inline Reading ReadBytes(Chunk& chunk, std::string_view bytes) {
  Reader reader(AsBytes(bytes));
  const std::int32_t result = chunk.Read(reader);
  return {result, reader.Position()};
}

inline std::string BytesOf(const Writer& writer) {
  const auto written = writer.Written();
  return {written.begin(), written.end()};
}

inline std::string BytesOf(const std::vector<std::uint8_t>& bytes) {
  return {bytes.begin(), bytes.end()};
}

// What the chunk writes.
inline std::string WrittenBytes(Chunk& chunk) {
  Writer writer;
  chunk.Write(writer);
  return BytesOf(writer);
}

}  // namespace quaylink::test
