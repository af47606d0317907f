#include "stand_in_phone/phone_files.h"

#include <algorithm>
#include <fstream>
#include <sstream>

#include "common/ascii.h"

namespace quaylink::stand_in {
namespace {

namespace fs = std::filesystem;

// The names along a path, with "." and ".." followed.
std::vector<std::string> Components(std::string_view path) {
  std::vector<std::string> components;
  while (!path.empty()) {
    const std::string_view name = path.substr(0, path.find('/'));
    path.remove_prefix(std::min(name.size() + 1, path.size()));
    if (name.empty() || name == ".") continue;
    if (name != "..") {
      components.emplace_back(name);
    } else if (!components.empty()) {
      components.pop_back();
    }
  }
  return components;
}

fs::path ChildIgnoringCase(const fs::path& folder, const std::string& name) {
  std::error_code error;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder, error)) {
    if (EqualsIgnoringCase(entry.path().filename().string(), name)) return entry.path();
  }
  return folder / name;
}

}  // namespace

fs::path FolderFiles::ComputerPath(std::string_view path) const {
  fs::path computerPath = root_;
  for (const std::string& name : Components(path)) {
    fs::path child = computerPath / name;
    std::error_code error;
    computerPath = fs::exists(child, error) ? child : ChildIgnoringCase(computerPath, name);
  }
  return computerPath;
}

std::optional<PhoneEntry> FolderFiles::Find(std::string_view path) const {
  const fs::path computerPath = ComputerPath(path);
  std::error_code error;
  const fs::file_status status = fs::status(computerPath, error);
  if (fs::is_directory(status)) return PhoneEntry{true, 0};
  if (!fs::is_regular_file(status)) return std::nullopt;
  const std::uintmax_t size = fs::file_size(computerPath, error);
  if (error) return std::nullopt;
  return PhoneEntry{false, size};
}

std::vector<std::string> FolderFiles::Names(std::string_view path) const {
  std::vector<std::string> names;
  std::error_code error;
  for (const fs::directory_entry& entry : fs::directory_iterator(ComputerPath(path), error)) {
    names.push_back(entry.path().filename().string());
  }
  std::ranges::sort(names);
  return names;
}

std::unique_ptr<std::istream> FolderFiles::Open(std::string_view path) const {
  return std::make_unique<std::ifstream>(ComputerPath(path), std::ios::binary);
}

void MemoryFiles::AddFile(std::string_view path, std::string contents) {
  Node& node = Add(path);
  node.isFolder = false;
  node.contents = std::move(contents);
}

void MemoryFiles::AddFolder(std::string_view path) {
  Add(path);
}

MemoryFiles::Node& MemoryFiles::Add(std::string_view path) {
  Node* node = &root_;
  for (const std::string& name : Components(path)) {
    const auto child = std::ranges::find(
        node->children, name, [](const auto& c) -> auto& { return c->name; });
    if (child != node->children.end()) {
      node = child->get();
    } else {
      node = node->children.emplace_back(std::make_unique<Node>()).get();
      node->name = name;
    }
  }
  return *node;
}

const MemoryFiles::Node* MemoryFiles::NodeAt(std::string_view path) const {
  const Node* node = &root_;
  for (const std::string& name : Components(path)) {
    const Node* next = nullptr;
    for (const auto& child : node->children) {
      if (child->name == name) {
        next = child.get();
        break;
      }
      if (!next && EqualsIgnoringCase(child->name, name)) next = child.get();
    }
    if (!next) return nullptr;
    node = next;
  }
  return node;
}

std::optional<PhoneEntry> MemoryFiles::Find(std::string_view path) const {
  const Node* node = NodeAt(path);
  if (!node) return std::nullopt;
  return PhoneEntry{node->isFolder, node->contents.size()};
}

std::vector<std::string> MemoryFiles::Names(std::string_view path) const {
  std::vector<std::string> names;
  if (const Node* node = NodeAt(path)) {
    for (const auto& child : node->children) names.push_back(child->name);
  }
  return names;
}

std::unique_ptr<std::istream> MemoryFiles::Open(std::string_view path) const {
  const Node* node = NodeAt(path);
  return std::make_unique<std::istringstream>(node ? node->contents : std::string(),
                                              std::ios::binary);
}

}  // namespace quaylink::stand_in
