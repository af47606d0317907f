// The arguments of a logged call, as text.
#pragma once

#include <sstream>
#include <string>

#include "mobile/entry_points.h"

namespace quaylink::stand_in {

inline constexpr Status kSuccess = 0;
inline constexpr Status kFailure = 7;

inline std::string Quoted(const char* text) {
  return text != nullptr ? '"' + std::string(text) + '"' : "null";
}

template <class First, class... Others>
std::string ArgumentList(const First& first, const Others&... others) {
  std::ostringstream text;
  text << first;
  ((text << ", " << others), ...);
  return text.str();
}

}  // namespace quaylink::stand_in
