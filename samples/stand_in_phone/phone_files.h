// The file system of a stand-in phone. Paths are "/"-separated and start at the root; names may
// hold any byte but zero and "/". A name that no entry has is looked for again without regard to
// case, as phones do.
#pragma once

#include <cstdint>
#include <filesystem>
#include <istream>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quaylink::stand_in {

struct PhoneEntry {
  bool isFolder = false;
  std::uint64_t size = 0;
};

class PhoneFiles {
 public:
  virtual ~PhoneFiles() = default;

  // The entry at that path; nothing when there is none.
  virtual std::optional<PhoneEntry> Find(std::string_view path) const = 0;
  // The names in a folder, in the order in which the phone lists them, without "." and "..".
  virtual std::vector<std::string> Names(std::string_view path) const = 0;
  // A file's contents.
  virtual std::unique_ptr<std::istream> Open(std::string_view path) const = 0;
};

// A folder of the computer. Names are listed in the order of their bytes.
class FolderFiles : public PhoneFiles {
 public:
  explicit FolderFiles(std::filesystem::path root) : root_(std::move(root)) {}

  std::optional<PhoneEntry> Find(std::string_view path) const override;
  std::vector<std::string> Names(std::string_view path) const override;
  std::unique_ptr<std::istream> Open(std::string_view path) const override;

 private:
  std::filesystem::path ComputerPath(std::string_view path) const;

  std::filesystem::path root_;
};

// A tree in memory. Names are listed in the order in which they were added.
class MemoryFiles : public PhoneFiles {
 public:
  // Both add the folders above, where missing.
  void AddFile(std::string_view path, std::string contents);
  void AddFolder(std::string_view path);

  std::optional<PhoneEntry> Find(std::string_view path) const override;
  std::vector<std::string> Names(std::string_view path) const override;
  std::unique_ptr<std::istream> Open(std::string_view path) const override;

 private:
  struct Node {
    std::string name;
    bool isFolder = true;
    std::string contents;
    std::vector<std::unique_ptr<Node>> children;
  };

  Node& Add(std::string_view path);
  const Node* NodeAt(std::string_view path) const;

  Node root_;
};

}  // namespace quaylink::stand_in
