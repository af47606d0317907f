// Reading and writing the fixed fields of a chunk's header. A kind
// lists its fields once, in file order, in a static function Visit
// of the struct that holds them; that list serves both directions:
//
//   template <class V>
//   static void Visit(V& v) {
//     v.Fields(&H::a, &H::b);
//     v.Skip(32);
//     v.Fields(&H::c);
//   }
//
// Every integer in the file is little-endian and as wide as its field.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace quaylink {

template <class T>
T LoadLittleEndian(const std::uint8_t* bytes) {
  T value = 0;
  for (std::size_t i = 0; i < sizeof(T); ++i) {
    value = static_cast<T>(value | static_cast<T>(static_cast<T>(bytes[i]) << (8 * i)));
  }
  return value;
}

template <class T>
void StoreLittleEndian(std::uint8_t* bytes, T value) {
  for (std::size_t i = 0; i < sizeof(T); ++i)
    bytes[i] = static_cast<std::uint8_t>(value >> (8 * i));
}

template <class T>
void LoadField(const std::uint8_t* bytes, T& field) {
  field = LoadLittleEndian<T>(bytes);
}
template <std::size_t N>
void LoadField(const std::uint8_t* bytes, std::array<std::uint8_t, N>& field) {
  std::memcpy(field.data(), bytes, N);
}

template <class T>
void StoreField(std::uint8_t* bytes, const T& field) {
  StoreLittleEndian(bytes, field);
}
template <std::size_t N>
void StoreField(std::uint8_t* bytes, const std::array<std::uint8_t, N>& field) {
  std::memcpy(bytes, field.data(), N);
}

// Takes fields out of bytes that belong to a header, or part of one,
// of `length` bytes. A field beyond that length gets the default of
// a new object; one that the bytes do not hold is left as it was.
template <class H>
class HeaderReader {
 public:
  HeaderReader(H& header, std::span<const std::uint8_t> bytes, std::size_t length)
      : header_(header), bytes_(bytes), length_(length) {}

  template <class... F>
  void Fields(F H::*... fields) {
    // A run of fields that are all there, as they are
    // in nearly every header, needs no look at each.
    const std::size_t end = at_ + (sizeof(F) + ...);
    if (end <= length_ && end <= bytes_.size()) {
      ((LoadField(bytes_.data() + at_, header_.*fields), at_ += sizeof(F)), ...);
    } else {
      (Field(fields), ...);
    }
  }
  void Skip(std::size_t size) { at_ += size; }

  // A 32-bit value of which the upper half is held.
  void UpperHalf(std::uint32_t H::*field) {
    if (Field(field)) header_.*field >>= 16;
  }

 private:
  // True when the field was read.
  template <class F>
  bool Field(F H::*field) {
    static constexpr H kFresh{};
    const std::size_t begin = at_;
    at_ += sizeof(F);
    if (at_ > length_) {
      header_.*field = kFresh.*field;
      return false;
    }
    if (at_ > bytes_.size()) return false;
    LoadField(bytes_.data() + begin, header_.*field);
    return true;
  }

  H& header_;
  std::span<const std::uint8_t> bytes_;
  std::size_t length_;
  std::size_t at_ = 0;
};

// Puts fields into bytes, which have room for all of them.
template <class H>
class HeaderWriter {
 public:
  HeaderWriter(const H& header, std::uint8_t* bytes) : header_(header), at_(bytes) {}

  template <class... F>
  void Fields(F H::*... fields) {
    (Field(header_.*fields), ...);
  }
  void Skip(std::size_t size) {
    std::memset(at_, 0, size);
    at_ += size;
  }
  void UpperHalf(std::uint32_t H::*field) { Field(header_.*field << 16); }

 private:
  template <class F>
  void Field(const F& field) {
    StoreField(at_, field);
    at_ += sizeof(F);
  }

  const H& header_;
  std::uint8_t* at_;
};

}  // namespace quaylink
