#include "cli/utf8.h"

#include <cstddef>
#include <cstdint>

namespace quaylink::cli {
namespace {

struct Sequence {
  char32_t character;
  std::size_t length;  // in bytes
};

// The character that begins at a place. Over-long forms, surrogates and cut sequences count as one
// bad byte.
Sequence DecodeAt(std::string_view string, std::size_t position) {
  const auto lead = static_cast<unsigned char>(string[position]);
  if (lead < 0x80) return {lead, 1};
  constexpr Sequence kBadByte = {kReplacement, 1};
  const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || string.size() - position < length) return kBadByte;
  char32_t character = lead & (0xFFu >> (length + 1));
  for (std::size_t i = 1; i < length; ++i) {
    const auto next = static_cast<unsigned char>(string[position + i]);
    if ((next & 0xC0u) != 0x80) return kBadByte;
    character = (character << 6) | (next & 0x3Fu);
  }
  constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
  const bool surrogate = character >= 0xD800 && character <= 0xDFFF;
  if (character < kSmallest[length] || character > 0x10FFFF || surrogate) return kBadByte;
  return {character, length};
}

// Upper-case letters whose lower-case forms lie at one distance, or, with distance 0, each right
// behind its upper-case form. The final sigma goes with the other one.
struct CaseRange {
  char32_t first, last;
  std::int32_t distance;
};
constexpr CaseRange kCaseRanges[] = {
    {0x41, 0x5A, 32},      {0xC0, 0xD6, 32},      {0xD8, 0xDE, 32},        {0x100, 0x12F, 0},
    {0x132, 0x137, 0},     {0x139, 0x148, 0},     {0x14A, 0x177, 0},       {0x178, 0x178, -121},
    {0x179, 0x17E, 0},     {0x181, 0x181, 210},   {0x182, 0x185, 0},       {0x186, 0x186, 206},
    {0x187, 0x188, 0},     {0x189, 0x18A, 205},   {0x18B, 0x18C, 0},       {0x18E, 0x18E, 79},
    {0x18F, 0x18F, 202},   {0x190, 0x190, 203},   {0x191, 0x192, 0},       {0x193, 0x193, 205},
    {0x194, 0x194, 207},   {0x196, 0x196, 211},   {0x197, 0x197, 209},     {0x198, 0x199, 0},
    {0x19C, 0x19C, 211},   {0x19D, 0x19D, 213},   {0x19F, 0x19F, 214},     {0x1A0, 0x1A5, 0},
    {0x1A6, 0x1A6, 218},   {0x1A7, 0x1A8, 0},     {0x1A9, 0x1A9, 218},     {0x1AC, 0x1AD, 0},
    {0x1AE, 0x1AE, 218},   {0x1AF, 0x1B0, 0},     {0x1B1, 0x1B2, 217},     {0x1B3, 0x1B6, 0},
    {0x1B7, 0x1B7, 219},   {0x1B8, 0x1B9, 0},     {0x1BC, 0x1BD, 0},       {0x1C4, 0x1C4, 2},
    {0x1C5, 0x1C6, 0},     {0x1C7, 0x1C7, 2},     {0x1C8, 0x1C9, 0},       {0x1CA, 0x1CA, 2},
    {0x1CB, 0x1DC, 0},     {0x1DE, 0x1EF, 0},     {0x1F1, 0x1F1, 2},       {0x1F2, 0x1F5, 0},
    {0x1F6, 0x1F6, -97},   {0x1F7, 0x1F7, -56},   {0x1F8, 0x21F, 0},       {0x220, 0x220, -130},
    {0x222, 0x233, 0},     {0x23A, 0x23A, 10795}, {0x23B, 0x23C, 0},       {0x23D, 0x23D, -163},
    {0x23E, 0x23E, 10792}, {0x241, 0x242, 0},     {0x243, 0x243, -195},    {0x244, 0x244, 69},
    {0x245, 0x245, 71},    {0x246, 0x24F, 0},     {0x386, 0x386, 38},      {0x388, 0x38A, 37},
    {0x38C, 0x38C, 64},    {0x38E, 0x38F, 63},    {0x391, 0x3A1, 32},      {0x3A3, 0x3AB, 32},
    {0x3C2, 0x3C2, 1},     {0x400, 0x40F, 80},    {0x410, 0x42F, 32},      {0x460, 0x481, 0},
    {0x48A, 0x4BF, 0},     {0x4C0, 0x4C0, 15},    {0x4C1, 0x4CE, 0},       {0x4D0, 0x52F, 0},
    {0x531, 0x556, 48},    {0x1E00, 0x1E95, 0},   {0x1E9E, 0x1E9E, -7615}, {0x1EA0, 0x1EFF, 0},
    {0xFF21, 0xFF3A, 32},
};

char32_t ToLower(char32_t character) {
  for (const CaseRange& range : kCaseRanges) {
    if (character < range.first || character > range.last) continue;
    if (range.distance != 0)
      return static_cast<char32_t>(static_cast<std::int32_t>(character) + range.distance);
    const bool upper = (character - range.first) % 2 == 0;
    return upper ? character + 1 : character;
  }
  return character;
}

void Append(std::string& string, char32_t character) {
  const auto tail = [&](unsigned shift) {
    return static_cast<char>(0x80u | ((character >> shift) & 0x3Fu));
  };
  if (character < 0x80) {
    string += static_cast<char>(character);
  } else if (character < 0x800) {
    string += {static_cast<char>(0xC0u | (character >> 6)), tail(0)};
  } else if (character < 0x10000) {
    string += {static_cast<char>(0xE0u | (character >> 12)), tail(6), tail(0)};
  } else {
    string += {static_cast<char>(0xF0u | (character >> 18)), tail(12), tail(6), tail(0)};
  }
}

}  // namespace

std::u32string Decode(std::string_view string) {
  std::u32string characters;
  characters.reserve(string.size());
  for (std::size_t position = 0; position < string.size();) {
    const Sequence sequence = DecodeAt(string, position);
    characters += sequence.character;
    position += sequence.length;
  }
  return characters;
}

std::string Encode(std::u32string_view characters) {
  std::string string;
  string.reserve(characters.size());
  for (const char32_t character : characters) Append(string, character);
  return string;
}

std::string MakeValid(std::string_view string) {
  return Encode(Decode(string));
}

std::string MakePrintable(std::string_view string) {
  std::u32string characters = Decode(string);
  for (char32_t& character : characters) {
    if (IsControl(character)) character = kReplacement;
  }
  return Encode(characters);
}

bool IsControl(char32_t character) {
  const bool turnsDirection =
      (character >= 0x202A && character <= 0x202E) || (character >= 0x2066 && character <= 0x2069);
  return character < 0x20 || (character >= 0x7F && character < 0xA0) || character == 0x2028 ||
         character == 0x2029 || turnsDirection;
}

std::string FoldCase(std::string_view string) {
  std::u32string characters = Decode(string);
  for (char32_t& character : characters) character = ToLower(character);
  return Encode(characters);
}

}  // namespace quaylink::cli
