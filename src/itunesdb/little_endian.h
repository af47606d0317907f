// Integers as they stand in a database: little-endian, and at any address.
#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace quaylink {

// Strings and lists of integers are taken out of a file as they stand.
static_assert(std::endian::native == std::endian::little);

template <class T>
T LoadLittleEndian(const std::uint8_t* bytes) {
  T value;
  std::memcpy(&value, bytes, sizeof(T));
  return value;
}

template <class T>
void StoreLittleEndian(std::uint8_t* bytes, T value) {
  std::memcpy(bytes, &value, sizeof(T));
}

// An unsigned integer that is nothing but its bytes, so that a struct of them is laid out as its
// bytes in the file are. It reads and writes like the integer.
template <class T>
class LittleEndian {
  static_assert(std::is_unsigned_v<T>);

 public:
  constexpr LittleEndian(T value = 0)
      : bytes_(std::bit_cast<std::array<std::uint8_t, sizeof(T)>>(value)) {}
  constexpr operator T() const { return std::bit_cast<T>(bytes_); }

 private:
  std::array<std::uint8_t, sizeof(T)> bytes_;
};

using Field8 = LittleEndian<std::uint8_t>;
using Field16 = LittleEndian<std::uint16_t>;
using Field32 = LittleEndian<std::uint32_t>;
using Field64 = LittleEndian<std::uint64_t>;

}  // namespace quaylink
