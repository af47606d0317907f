// How numbers of a database are written.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace quaylink::cli {

// A time on the player's clock, as "2012-09-02T12:39:23"; empty for none.
std::string TimeString(std::uint32_t secondsSince1904);

// A length in milliseconds, as "3:59" or "1:02:03".
std::string LengthString(std::uint64_t milliseconds);

// A size for people: "3.4 MB".
std::string ShownSize(std::uintmax_t bytes);

// 16 hexadecimal digits.
std::string PersistentIdString(std::uint64_t id);

// The name of a QuaylinkPlaylistKind.
std::string_view PlaylistKindName(std::uint32_t kind);

}  // namespace quaylink::cli
