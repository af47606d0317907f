#include "cli/text/folding.h"

#include <algorithm>
#include <iterator>

#include "cli/text/folding_tables.h"
#include "cli/text/utf8.h"

namespace quaylink::cli {
namespace {

// The last entry of a table that does not begin behind the character.
template <class Entry, std::size_t kCount>
const Entry* EntryFor(const Entry (&table)[kCount], char32_t character) {
  const Entry* next =
      std::upper_bound(std::begin(table), std::end(table), character,
                       [](char32_t value, const Entry& entry) { return value < entry.first; });
  return next == std::begin(table) ? nullptr : next - 1;
}

template <std::size_t kCount>
char32_t Moved(const FoldedRange (&table)[kCount], char32_t character) {
  const FoldedRange* range = EntryFor(table, character);
  if (!range || character > range->last || (character - range->first) % range->step != 0) {
    return character;
  }
  return static_cast<char32_t>(static_cast<std::int32_t>(character) + range->distance);
}

// A Korean syllable in its letters.
void AppendLetters(std::u32string& string, char32_t syllable) {
  constexpr char32_t kVowels = 21;
  constexpr char32_t kFinals = 28;
  const char32_t final = syllable % kFinals;
  string += 0x1100 + syllable / kFinals / kVowels;
  string += 0x1161 + syllable / kFinals % kVowels;
  if (final != 0) string += 0x11A7 + final;
}

void AppendSearched(std::u32string& string, char32_t character) {
  constexpr char32_t kFirstSyllable = 0xAC00;
  constexpr char32_t kLastSyllable = 0xD7A3;
  if (character >= kFirstSyllable && character <= kLastSyllable) {
    AppendLetters(string, character - kFirstSyllable);
    return;
  }
  const Range* accents = EntryFor(kAccents, character);
  if (accents && character <= accents->last) return;
  const FoldedCharacter* several = EntryFor(kSearchedStrings, character);
  if (several && several->first == character) {
    string += several->string;
  } else {
    string += Moved(kSearched, character);
  }
}

template <class Character>
Character AsciiLowerCase(Character c) {
  return c >= 'A' && c <= 'Z' ? static_cast<Character>(c + ('a' - 'A')) : c;
}

std::string AsciiLowerCase(std::string_view string) {
  std::string lower(string);
  for (char& c : lower) c = AsciiLowerCase(c);
  return lower;
}

}  // namespace

std::string LowerCase(std::string_view string) {
  if (IsAscii(string)) return AsciiLowerCase(string);
  std::u32string characters = Decode(string);
  for (char32_t& character : characters) {
    character = character < 0x80 ? AsciiLowerCase(character) : Moved(kLowerCase, character);
  }
  return Encode(characters);
}

std::string SearchForm(std::string_view string) {
  if (IsAscii(string)) return AsciiLowerCase(string);
  std::u32string form;
  for (const char32_t character : Decode(string)) AppendSearched(form, character);
  return Encode(form);
}

}  // namespace quaylink::cli
