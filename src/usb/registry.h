// Reading the registry below HKEY_LOCAL_MACHINE. Paths are names separated by backslashes. Every
// key that is opened is closed again before an operation returns.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quaylink {

// True on the Windows NT versions whose registry is known: platform NT with major version 4, 5 or
// 6.
bool IsSupportedWindowsNt();

// Splits a path at its backslashes: appends every piece that a backslash follows to `components`,
// and makes `remainder` what follows the last backslash.
void SplitRegistryPath(std::string_view path, std::vector<std::string>& components,
                       std::string& remainder);

// Appends the names of a key's subkeys, in the registry's order. The path ends in a backslash; an
// empty one means local machine itself. False when a key cannot be opened or the listing stops
// before its end; names listed until then stay in `names`.
bool EnumerateSubkeys(std::string_view path, std::vector<std::string>& names);

// Reads a value as a string: the data up to its first NUL, at most 255 bytes with it. The last
// component of the path is the value's name, empty for the key's default value. False when there is
// no such value or it is longer; `value` then keeps what it held.
bool ReadStringValue(std::string_view path, std::string& value);

}  // namespace quaylink
