// The folder that an export fills. It may belong to somebody else: no link in it is followed, and
// copies are made in a folder of their own that nobody else can enter.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <string_view>
#include <system_error>
#include <unordered_map>
#include <vector>

#include "cli/system/folder.h"

namespace quaylink::cli {

class Destination {
 public:
  enum class Use { kLook, kWrite };

  // To write, the folder is made where it is missing and held against other exports, and what
  // killed ones have left is removed. Throws a Failure, and leaves nothing behind, when nothing can
  // be written there.
  Destination(const std::filesystem::path& path, Use use);
  // Removes the folders that this object has made and nothing has been put into.
  ~Destination();
  Destination(const Destination&) = delete;
  Destination& operator=(const Destination&) = delete;

  const std::filesystem::path& Path() const { return path_; }
  // How messages call a file there.
  std::string Shown(const std::string& name) const;

  // Names of files are paths below the folder, with "/" between their components.
  // Nothing is there where the way to it leads through a link, or something else than a folder.
  Entry Look(const std::string& name);
  File OpenFile(const std::string& name, std::error_code& error);
  // Bytes that may be written, and the bytes that a file of that size takes.
  std::uint64_t FreeBytes() const;
  std::uint64_t RoomFor(std::uint64_t size) const;

  // Where copies are made, each by a name of its own.
  const Folder& Parts() const { return parts_; }
  std::string NewPart();
  void RemovePart(const std::string& part) const { parts_.Remove(part); }
  // Gives a part its final name. A file that has it is replaced only when that is asked for.
  std::error_code Place(const std::string& part, const std::string& name, bool replaces);
  // Gives a file another name, which nothing may have yet, at once, and removes the folders that
  // are empty then.
  std::error_code Move(const std::string& name, const std::string& newName);
  std::error_code Remove(const std::string& name);
  // Waits until files are on the disk. May run beside everything else.
  std::error_code Flush(std::span<const std::string> names) const { return folder_.Flush(names); }

 private:
  void OpenToWrite();
  void RefusePlayersFolders() const;
  void MakePath();
  void RemoveMade();
  void RemoveLeftovers() const;
  // Those of an operation stay open until the next one begins.
  void CloseFolders();
  // The folder in which a file of that name is; it is made where it is missing and that is wanted.
  const Folder* FolderOf(std::string_view name, bool makes, std::error_code& error);
  void RemoveEmptyFolders(std::string_view name);

  std::filesystem::path path_;
  std::vector<std::filesystem::path> made_;  // by this object, the outermost first
  Folder folder_;                            // not open when it is not there
  Folder parts_;
  std::string partsName_;
  std::uint64_t blockSize_ = 1;
  std::size_t partCount_ = 0;
  std::unordered_map<std::string, Folder> folders_;  // below it, held open because used lately
};

}  // namespace quaylink::cli
