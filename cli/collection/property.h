// What is known of a track, property by property: one table for everything that lists, names,
// orders or looks for them.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <variant>

#include "cli/collection/track.h"

namespace quaylink::cli {

struct Property {
  enum class Kind { kString, kNumber, kTruth, kTime, kMilliseconds, kPersistentId };

  std::string_view key;      // its name in JSON, in comma-separated values, and in options
  std::string_view heading;  // in tables
  Kind kind;
  std::variant<const char * Track::*, std::uint32_t Track::*, std::uint64_t Track::*> field;

  bool IsString() const { return kind == Kind::kString; }
};

// All of them, in the order in which they are listed.
std::span<const Property> Properties();

// Null when there is none of that name.
const Property* FindProperty(std::string_view key);

// Of a property that is a string.
std::string_view StringOf(const Track& track, const Property& property);
// Of any other: the number as stored.
std::uint64_t NumberOf(const Track& track, const Property& property);

// The value for other programs: numbers as stored, times as TimeString has them, truths as "true"
// and "false".
std::string ValueOf(const Track& track, const Property& property);
// The value for people: nothing where the database says nothing.
std::string ShownValueOf(const Track& track, const Property& property);

}  // namespace quaylink::cli
