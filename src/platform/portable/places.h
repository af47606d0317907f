// Where local paths lead to on the computer: the folders of a drive are walked one by one, so that
// no link on it leads out of it, and names are found without regard to the case of ASCII letters.
#pragma once

#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "platform/portable/windows_functions.h"

namespace quaylink::portable {

// An open file or folder of the computer, closed at the end.
class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(Descriptor&& other) noexcept : number_(other.Release()) {}
  Descriptor& operator=(Descriptor&&) = delete;
  ~Descriptor() { Close(); }

  int Number() const { return number_; }
  bool IsOpen() const { return number_ >= 0; }
  int Release();
  // False when it fails: some file systems report a failed write only here.
  bool Close();

 private:
  int number_ = -1;
};

// The entry of an open folder that a local path names. It need not exist, and when its folder does
// not either, or the path cannot be on this machine, everything that is done with it fails.
struct Place {
  Descriptor folder;
  std::string name;
  std::filesystem::path path;  // all of it; empty for one that cannot be on this machine
  bool isOnDrive = false;      // else it is the computer's own path, taken as it stands

  // False when there is no such entry.
  bool Describe(struct stat& status) const;
};

// The place of a local path (see windows_functions.h). A link that leads out of its drive leads
// nowhere. For some uses Windows wants room for more characters behind a path.
Place FindPlace(std::string_view localPath, std::size_t roomBehind = 0);

// What Windows says of a file or folder.
DWORD AttributesOf(const struct stat& status);

// The names in a folder without "." and "..", in the order of its upper-case letters. Empty when
// the folder cannot be read.
std::vector<std::string> SortedNames(const Descriptor& folder);
std::vector<std::string> SortedNames(const std::filesystem::path& folder);

}  // namespace quaylink::portable
