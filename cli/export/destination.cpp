#include "cli/export/destination.h"

#include <algorithm>
#include <random>
#include <utility>

#include "cli/base/paths.h"
#include "cli/base/program.h"
#include "cli/text/folding.h"
#include "cli/text/formats.h"

namespace quaylink::cli {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kPartsPrefix = ".quaylink-parts-";

std::string RandomName() {
  std::random_device random;
  const std::uint64_t number = (std::uint64_t{random()} << 32u) | random();
  return std::string(kPartsPrefix) + PersistentIdString(number);
}

std::string_view LastComponent(std::string_view name) {
  return name.substr(name.rfind('/') + 1);
}

std::string_view FolderPart(std::string_view name) {
  const std::size_t slash = name.rfind('/');
  return slash == std::string_view::npos ? std::string_view() : name.substr(0, slash);
}

std::vector<fs::path> Reversed(std::vector<fs::path> paths) {
  std::ranges::reverse(paths);
  return paths;
}

Failure NotUsable(const fs::path& path, const std::error_code& error) {
  return Failure(Shown(path) + ": the folder cannot be used: " + ReasonOf(error));
}

}  // namespace

Destination::Destination(const fs::path& path, Use use) : path_(path) {
  std::error_code error;
  RefusePlayersFolders();
  if (use == Use::kWrite) {
    try {
      OpenToWrite();
    } catch (...) {
      RemoveMade();
      throw;
    }
    return;
  }
  folder_ = Folder::Open(path, error);
  if (folder_.IsOpen()) blockSize_ = folder_.BlockSize();
  if (error && error != std::errc::no_such_file_or_directory) throw NotUsable(path, error);
}

Destination::~Destination() {
  folders_.clear();
  if (parts_.IsOpen()) {
    std::error_code ignored;
    for (const std::string& name : parts_.Names(ignored)) parts_.Remove(name);
    parts_ = Folder();
    folder_.RemoveFolder(partsName_);
  }
  folder_ = Folder();
  RemoveMade();
}

std::string Destination::Shown(const std::string& name) const {
  return cli::Shown((path_ / PathOf(name)).make_preferred());
}

void Destination::OpenToWrite() {
  MakePath();
  std::error_code error;
  folder_ = Folder::Open(path_, error);
  if (error) throw NotUsable(path_, error);
  blockSize_ = folder_.BlockSize();
  if (!folder_.Lock(error)) {
    if (error) throw NotUsable(path_, error);
    // Whoever holds it uses it, whoever has made it.
    made_.clear();
    throw Failure(cli::Shown(path_) +
                  ": another export into this folder is under way; wait until it has ended");
  }
  RemoveLeftovers();
  partsName_ = RandomName();
  parts_ = folder_.MakePrivateFolder(partsName_, error);
  if (error) throw NotUsable(path_, error);
}

// A file of the player would be taken for its own copy there, and be lost with the player.
void Destination::RefusePlayersFolders() const {
  std::error_code error;
  for (const fs::path& folder : fs::weakly_canonical(path_, error)) {
    const std::string name = LowerCase(Utf8Of(folder));
    if (name == "ipod_control" || name == "itunes_control") {
      throw Failure(cli::Shown(path_) + ": is inside the player's own folders; choose another");
    }
  }
}

// One by one, so that those are known that are new.
void Destination::MakePath() {
  std::error_code error;
  const fs::path whole = fs::absolute(path_, error);
  fs::path folder = whole.root_path();
  for (const fs::path& component : whole.relative_path()) {
    if (component.empty()) continue;
    folder /= component;
    const fs::file_type type = fs::status(folder, error).type();
    if (type == fs::file_type::not_found && fs::create_directory(folder, error)) {
      made_.push_back(folder);
    } else if (!error && type != fs::file_type::directory) {
      throw Failure(cli::Shown(folder) + ": is in the way: it is no folder");
    }
    if (error) throw NotUsable(path_, error);
  }
}

// Folders only: somebody may have put a link in place of one on the way.
void Destination::RemoveMade() {
  for (const fs::path& made : Reversed(made_)) {
    std::error_code error;
    const Folder above = Folder::Open(made.parent_path(), error);
    if (!error) above.RemoveFolder(Utf8Of(made.filename()));
  }
}

// Nobody else exports into this folder: what looks like a part has been left by a run that ended.
void Destination::RemoveLeftovers() const {
  std::error_code error;
  for (const std::string& name : folder_.Names(error)) {
    if (!name.starts_with(kPartsPrefix)) continue;
    {
      const Folder left = folder_.OpenFolder(name, error);
      if (!left.IsOpen() || !left.IsOwn()) continue;
      for (const std::string& part : left.Names(error)) left.Remove(part);
    }
    folder_.RemoveFolder(name);
  }
}

void Destination::CloseFolders() {
  static const std::size_t kMostHeld = Folder::MostHeld();
  if (folders_.size() >= kMostHeld) folders_.clear();
}

const Folder* Destination::FolderOf(std::string_view name, bool makes, std::error_code& error) {
  error = {};
  const std::string_view path = FolderPart(name);
  if (!folder_.IsOpen()) error = std::make_error_code(std::errc::no_such_file_or_directory);
  if (error) return nullptr;
  if (path.empty()) return &folder_;
  const std::string key(path);
  if (const auto known = folders_.find(key); known != folders_.end()) return &known->second;
  const Folder* above = FolderOf(path, makes, error);
  if (!above) return nullptr;
  const std::string last(LastComponent(path));
  Folder folder = above->OpenFolder(last, error);
  if (makes && error == std::errc::no_such_file_or_directory) {
    error = above->MakeFolder(last);
    if (!error) folder = above->OpenFolder(last, error);
  }
  if (error) return nullptr;
  return &folders_.emplace(key, std::move(folder)).first->second;
}

Entry Destination::Look(const std::string& name) {
  CloseFolders();
  std::error_code error;
  const Folder* folder = FolderOf(name, false, error);
  return folder ? folder->Look(std::string(LastComponent(name))) : Entry();
}

File Destination::OpenFile(const std::string& name, std::error_code& error) {
  CloseFolders();
  const Folder* folder = FolderOf(name, false, error);
  return folder ? folder->OpenFile(std::string(LastComponent(name)), error) : File();
}

std::uint64_t Destination::FreeBytes() const {
  std::error_code error;
  if (folder_.IsOpen()) return folder_.FreeBytes(error);
  fs::path above = fs::absolute(path_, error);
  while (!fs::exists(above, error) && above != above.parent_path()) above = above.parent_path();
  return fs::space(above, error).available;
}

std::uint64_t Destination::RoomFor(std::uint64_t size) const {
  return (size + blockSize_ - 1) / blockSize_ * blockSize_;
}

std::string Destination::NewPart() {
  return "part-" + std::to_string(++partCount_);
}

std::error_code Destination::Place(const std::string& part, const std::string& name,
                                   bool replaces) {
  CloseFolders();
  std::error_code error;
  const Folder* folder = FolderOf(name, true, error);
  if (!folder) return error;
  return parts_.Move(part, *folder, std::string(LastComponent(name)), replaces);
}

std::error_code Destination::Move(const std::string& name, const std::string& newName) {
  CloseFolders();
  std::error_code error;
  const Folder* from = FolderOf(name, false, error);
  const Folder* to = from ? FolderOf(newName, true, error) : nullptr;
  if (!to) return error;
  error =
      from->Move(std::string(LastComponent(name)), *to, std::string(LastComponent(newName)), false);
  if (!error) RemoveEmptyFolders(name);
  return error;
}

std::error_code Destination::Remove(const std::string& name) {
  CloseFolders();
  std::error_code error;
  const Folder* folder = FolderOf(name, false, error);
  return folder ? folder->Remove(std::string(LastComponent(name))) : error;
}

void Destination::RemoveEmptyFolders(std::string_view name) {
  for (std::string_view path = FolderPart(name); !path.empty(); path = FolderPart(path)) {
    std::error_code error;
    // Some systems keep a folder that is held open.
    folders_.erase(std::string(path));
    const Folder* above = FolderOf(path, false, error);
    if (!above || above->RemoveFolder(std::string(LastComponent(path)))) return;
  }
}

}  // namespace quaylink::cli
