// What kinds of files a device may put on this computer. It chooses the names of its files, and an
// operating system acts by itself on some of them, or runs them at a double click.
#pragma once

#include <string>
#include <string_view>

namespace quaylink::cli {

enum class FileKinds {
  kMedia,         // sound, films and playlists: what tracks are
  kAllButHarmful  // what a user may have on a phone: pictures, documents, and everything else
};

// The last component of a path on the device, of either form.
std::string_view FileNameOf(std::string_view location);

// With its dot; empty where there is none. What follows a dot of a sentence is no extension.
std::string_view ExtensionOf(std::string_view name);

// The name, with a "_" behind an extension that is not of these kinds: "song.exe_".
std::string Tamed(std::string name, FileKinds kinds);

}  // namespace quaylink::cli
