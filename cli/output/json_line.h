// JSON for programs that read a line at a time.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace quaylink::cli {

// Keeps the order in which properties are given.
using Json = nlohmann::ordered_json;

// Bytes that are not UTF-8 are replaced.
inline std::string JsonString(const Json& json, int indentation = -1) {
  return json.dump(indentation, ' ', false, Json::error_handler_t::replace);
}

inline std::string JsonLine(const Json& json) {
  return JsonString(json) + '\n';
}

}  // namespace quaylink::cli
