// Folders that are held open, and the files in them. Whatever is done in such a folder by the name
// of an entry stays in it: no link is followed, neither one that was there before nor one that is
// put there meanwhile.
//
// Names are single components in UTF-8, on POSIX systems any bytes. Errors are told as codes;
// objects that could not be opened are not open. On Windows nobody, this program included, renames
// or removes a folder while it is open.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace quaylink::cli {

// What shows of a file without reading it.
struct FileFacts {
  std::uint64_t size = 0;
  std::int64_t time = 0;  // of its last change, in nanoseconds since 1970

  friend bool operator==(const FileFacts&, const FileFacts&) = default;
};

enum class EntryKind { kMissing, kFile, kFolder, kOther };  // a link is an other one

struct Entry {
  EntryKind kind = EntryKind::kMissing;
  FileFacts facts;  // of a file
};

// What the system knows an open file or folder by; closed with this object.
class Handle {
 public:
  Handle() = default;
  explicit Handle(std::intptr_t value) : value_(value) {}
  Handle(Handle&& other) noexcept : value_(other.value_) { other.value_ = kNone; }
  Handle& operator=(Handle&& other) noexcept;
  ~Handle() { Close(); }

  bool IsOpen() const { return value_ != kNone; }
  std::intptr_t Value() const { return value_; }
  std::error_code Close();

 private:
  static constexpr std::intptr_t kNone = -1;
  std::intptr_t value_ = kNone;
};

class File {
 public:
  File() = default;

  bool IsOpen() const { return handle_.IsOpen(); }
  FileFacts Facts(std::error_code& error) const;
  // Of a file that was opened to read.
  const FileFacts& FactsWhenOpened() const { return facts_; }
  // From where the last reading ended; fewer bytes than there is room for mean the end.
  std::size_t Read(std::span<char> bytes, std::error_code& error);
  std::error_code Write(std::string_view bytes);
  // Moves at most so many bytes on from another file, by the system's own means where it has any;
  // fewer mean that file's end. `readingFailed` tells whose error it is.
  std::uint64_t Append(File& source, std::uint64_t most, std::error_code& error,
                       bool& readingFailed);
  std::error_code SetTime(std::int64_t time);
  // Takes what reading would give out of the system's memory, so that it comes from the disk.
  void Forget();
  // Waits until the file is on the disk.
  std::error_code Flush();
  std::error_code Close() { return handle_.Close(); }

 private:
  friend class Folder;
  explicit File(Handle handle) : handle_(std::move(handle)) {}

  Handle handle_;
  FileFacts facts_;
};

class Folder {
 public:
  // How many a program may hold open for later, where others do the same.
  static std::size_t MostHeld();

  // The folder of that path; the links on the way are the user's.
  static Folder Open(const std::filesystem::path& path, std::error_code& error);

  Folder() = default;
  bool IsOpen() const { return handle_.IsOpen(); }
  const std::filesystem::path& Path() const { return path_; }

  Entry Look(const std::string& name) const;
  std::vector<std::string> Names(std::error_code& error) const;
  Folder OpenFolder(const std::string& name, std::error_code& error) const;
  std::error_code MakeFolder(const std::string& name) const;
  // One that nobody else can enter, where the file system knows users.
  Folder MakePrivateFolder(const std::string& name, std::error_code& error) const;
  // Whether it was made by the user who runs the program, as far as the file system knows users.
  bool IsOwn() const;
  // An ordinary file, to read.
  File OpenFile(const std::string& name, std::error_code& error) const;
  // A file that was not there, to write and to read.
  File MakeFile(const std::string& name, std::error_code& error) const;
  // Gives an entry another name, maybe in another folder of the same file system. A file that is
  // there already is only replaced when that is asked for.
  std::error_code Move(const std::string& name, const Folder& target, const std::string& newName,
                       bool replaces) const;
  std::error_code Remove(const std::string& name) const;        // anything but a folder
  std::error_code RemoveFolder(const std::string& name) const;  // an empty one
  // For a file that something else has made: gives it the permissions of a new one and makes it
  // visible; sets the time of its last change.
  void MakeOrdinary(const std::string& name) const;
  std::error_code SetTime(const std::string& name, std::int64_t time) const;

  // A path by which the library reaches an entry; nothing when it could be led elsewhere on the
  // way, or when the system's code page lacks a character.
  std::optional<std::string> PathForLibrary(const std::string& name) const;

  // Holds the folder against other runs of the program until this object ends, however it ends.
  // False when another one holds it, or with an error.
  bool Lock(std::error_code& error);
  // Whether it is the topmost folder of a drive.
  bool IsDrive() const;
  bool SharesDriveWith(const Folder& other) const;
  // Bytes that the user may still write there.
  std::uint64_t FreeBytes(std::error_code& error) const;
  // What the file system gives out at once: a file takes a multiple of it.
  std::uint64_t BlockSize() const;
  // Waits until files below this folder are on the disk; paths have "/" between their parts.
  std::error_code Flush(std::span<const std::string> paths) const;

 private:
  Folder(Handle handle, std::filesystem::path path)
      : handle_(std::move(handle)), path_(std::move(path)) {}

  Handle handle_;
  Handle lock_;
  std::filesystem::path path_;
};

}  // namespace quaylink::cli
