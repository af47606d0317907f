#include "cli/source/folder_source.h"

#include <algorithm>
#include <initializer_list>
#include <utility>

#include "cli/base/paths.h"
#include "cli/base/program.h"
#include "cli/text/file_kinds.h"
#include "cli/text/folding.h"
#include "cli/text/utf8.h"

namespace quaylink::cli {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kControlFolders[] = {"iPod_Control", "iTunes_Control"};
// So often the caller hears of a long file.
constexpr std::uint64_t kStep = 4u << 20u;
// A disk that turns takes its time to go from one long file to another and back.
constexpr std::uint64_t kLong = 1u << 20u;
constexpr std::uint64_t kLargestDatabase = 1u << 30u;

bool IsName(std::string_view name) {
  return !name.empty() && name != "." && name != "..";
}

// The path of the folder, and the name in it.
std::pair<std::string_view, std::string> Split(std::string_view location) {
  const std::size_t slash = location.rfind('/');
  if (slash == std::string_view::npos) return {{}, std::string(location)};
  return {location.substr(0, slash), std::string(location.substr(slash + 1))};
}

bool IsMissing(const std::error_code& error) {
  return error == std::errc::no_such_file_or_directory || error == std::errc::filename_too_long ||
         error == std::errc::invalid_argument;
}

// What is there is a link, a folder, a device; or it is a file, where a folder should be.
bool IsOfOtherKind(const std::error_code& error) {
  return error == std::errc::too_many_symbolic_link_levels || error == std::errc::not_supported ||
         error == std::errc::not_a_directory || error == std::errc::no_such_device_or_address;
}

// Whether what cannot be asked about may be a file: only the attempt to open it tells.
bool MayBeFile(const std::error_code& openingError) {
  return !IsMissing(openingError) && !IsOfOtherKind(openingError);
}

FetchResult NotOpened(const std::string& location, const std::error_code& error) {
  if (location.empty()) return NamesNoFile();
  if (IsMissing(error)) return NoSuchFile(location);
  if (IsOfOtherKind(error)) return NoOrdinaryFile(location);
  return NotRead(location, ReasonOf(error));
}

FetchResult CopyContents(const std::string& location, File& source, const FileFacts& facts,
                         File& copy, const BytesCallback& tell) {
  std::error_code error;
  for (std::uint64_t left = facts.size; left > 0;) {
    const std::uint64_t most = std::min(kStep, left);
    bool readingFailed = false;
    const std::uint64_t count = copy.Append(source, most, error, readingFailed);
    if (error) return readingFailed ? NotRead(location, ReasonOf(error)) : NotTaken(error);
    if (tell) tell(count);
    if (count < most) return NotRead(location, "it ends early");
    left -= count;
  }
  if (source.Facts(error) != facts) return NotRead(location, "it was changed meanwhile");
  // Not every file system takes it.
  copy.SetTime(facts.time);
  return {};
}

}  // namespace

FolderSource::FolderSource(const fs::path& path) : path_(path) {
  root_.folder = Folder::Open(path, root_.error);
  if (root_.error) {
    throw Failure(Name() + ": the folder cannot be opened: " + ReasonOf(root_.error));
  }
  if (!Answers()) {
    throw Failure(Name() +
                  ": holds no folder iPod_Control or iTunes_Control (links are not followed)");
  }
}

std::string FolderSource::Name() const {
  return Shown(path_);
}

DatabaseFiles FolderSource::ReadDatabase() {
  for (const std::string_view control : kControlFolders) {
    const std::string folder = '/' + std::string(control) + "/iTunes/";
    for (const char* name : {"iTunesDB", "iTunesCDB"}) {
      DatabaseFiles files;
      const std::string location = folder + name;
      files.name = Shown((path_ / PathOf(location.substr(1))).make_preferred());
      std::error_code error;
      files.database = ReadFile(location, error);
      if (IsOfOtherKind(error)) {
        throw Failure(files.name + ": is no ordinary file, and links are not followed");
      }
      if (error && !IsMissing(error)) {
        throw Failure(files.name + ": the database cannot be read: " + ReasonOf(error));
      }
      if (files.database.empty()) continue;
      files.playCounts = ReadFile(folder + "Play Counts", error);
      return files;
    }
  }
  throw Failure(Name() +
                ": holds no music database; 'quaylink export --rescue' still gets its music files");
}

Collection FolderSource::ReadCollection() {
  const DatabaseFiles files = ReadDatabase();
  return Collection::OfBytes(files.database, files.playCounts, files.name);
}

std::optional<FileFacts> FolderSource::Look(const Track& track) {
  const std::string location = DevicePathOf(track.location);
  if (const auto seen = seen_.find(location); seen != seen_.end()) return seen->second;
  const Entry entry = LookAt(location);
  if (entry.kind == EntryKind::kFile) return entry.facts;
  if (entry.kind != EntryKind::kOther) return std::nullopt;
  std::error_code error;
  OpenFileAt(location, error);
  return MayBeFile(error) ? std::optional(FactsInDatabase(track)) : std::nullopt;
}

Entry FolderSource::LookAt(const std::string& location) {
  const auto [path, name] = Split(location);
  OpenedFolder& opened = FolderOf(path);
  if (IsMissing(opened.error) || !IsName(name)) return {};
  if (opened.error) return {EntryKind::kOther, {}};
  const Entry entry = opened.folder.Look(name);
  if (entry.kind != EntryKind::kMissing) return entry;
  const std::string* spelling = SpellingOf(opened, name);
  return spelling ? opened.folder.Look(*spelling) : Entry();
}

FetchResult FolderSource::Fetch(const std::string& location, const Folder& folder,
                                const std::string& name, const BytesCallback& tell) {
  std::error_code error;
  File source = OpenFileAt(location, error);
  // Without the player there is no file either, and that is no reason to give a track up.
  if (IsMissing(error) && !Answers()) return NotRead(location, ReasonOf(error));
  if (error) return NotOpened(location, error);
  const FileFacts facts = source.FactsWhenOpened();
  std::unique_lock alone(longFile_, std::defer_lock);
  if (facts.size > kLong) alone.lock();
  File copy = folder.MakeFile(name, error);
  if (error) return NotTaken(error);
  FetchResult result = CopyContents(location, source, facts, copy, tell);
  error = copy.Close();
  if (error && result.Good()) result = NotTaken(error);
  if (!result.Good()) folder.Remove(name);
  return result;
}

std::vector<Source::MusicFile> FolderSource::MusicFiles() {
  std::vector<std::string> folders;
  for (const std::string_view control : kControlFolders) {
    std::string music = '/' + std::string(control) + "/Music";
    if (LookAt(music).kind == EntryKind::kFolder) folders.push_back(std::move(music));
  }
  std::vector<MusicFile> files;
  while (!folders.empty()) {
    const std::string folder = std::move(folders.back());
    folders.pop_back();
    AddMusicFiles(folder, folders, files);
  }
  std::ranges::sort(files, {}, &MusicFile::location);
  return files;
}

bool FolderSource::Answers() {
  // Where a player was mounted there may still be a folder.
  std::error_code error;
  OpenedFolder root;
  root.folder = Folder::Open(path_, error);
  if (error) return false;
  return std::ranges::any_of(kControlFolders, [&root](std::string_view control) {
    const std::string* spelling = SpellingOf(root, std::string(control));
    return spelling && root.folder.Look(*spelling).kind == EntryKind::kFolder;
  });
}

const std::string* FolderSource::SpellingOf(OpenedFolder& opened, const std::string& name) {
  if (!opened.entries) {
    opened.entries.emplace();
    std::error_code ignored;
    std::vector<std::string> names = opened.folder.Names(ignored);
    std::ranges::sort(names);
    for (std::string& entry : names) {
      // Bytes that are no characters would pass for one another.
      if (MakeValid(entry) == entry) opened.entries->emplace(LowerCase(entry), std::move(entry));
    }
  }
  const auto found = opened.entries->find(LowerCase(name));
  return found == opened.entries->end() ? nullptr : &found->second;
}

template <class Open>
auto FolderSource::OpenIn(OpenedFolder& parent, const std::string& name, std::error_code& error,
                          Open open) {
  auto opened = open(parent.folder, name, error);
  const std::string* spelling = IsMissing(error) ? SpellingOf(parent, name) : nullptr;
  return spelling ? open(parent.folder, *spelling, error) : std::move(opened);
}

FolderSource::OpenedFolder& FolderSource::FolderOf(std::string_view path) {
  if (const auto known = folders_.find(path); known != folders_.end()) return known->second;
  // Folders of music are fifty on most players.
  static const std::size_t kMostHeld = Folder::MostHeld();
  if (folders_.size() >= kMostHeld) folders_.clear();
  OpenedFolder* folder = &root_;
  for (std::size_t begin = 0, end = 0; begin < path.size() && !folder->error; begin = end + 1) {
    end = std::min(path.find('/', begin), path.size());
    const std::string name(path.substr(begin, end - begin));
    if (name.empty()) continue;
    const auto [child, isNew] = folders_.try_emplace(std::string(path.substr(0, end)));
    if (isNew && IsName(name)) {
      child->second.folder =
          OpenIn(*folder, name, child->second.error,
                 [](const Folder& parent, const std::string& spelling, std::error_code& error) {
                   return parent.OpenFolder(spelling, error);
                 });
    } else if (isNew) {
      child->second.error = std::make_error_code(std::errc::no_such_file_or_directory);
    }
    folder = &child->second;
  }
  return *folder;
}

File FolderSource::OpenFileAt(const std::string& location, std::error_code& error) {
  const auto [path, name] = Split(location);
  const std::lock_guard lock(opening_);
  OpenedFolder& opened = FolderOf(path);
  error = opened.error;
  if (!error && !IsName(name)) error = std::make_error_code(std::errc::no_such_file_or_directory);
  if (error) return {};
  return OpenIn(opened, name, error,
                [](const Folder& parent, const std::string& spelling, std::error_code& problem) {
                  return parent.OpenFile(spelling, problem);
                });
}

std::string FolderSource::ReadFile(const std::string& location, std::error_code& error) {
  File file = OpenFileAt(location, error);
  if (error) return {};
  const FileFacts facts = file.Facts(error);
  if (facts.size > kLargestDatabase) error = std::make_error_code(std::errc::file_too_large);
  if (error) return {};
  std::string bytes(static_cast<std::size_t>(facts.size), '\0');
  bytes.resize(file.Read(bytes, error));
  return bytes;
}

void FolderSource::AddMusicFiles(const std::string& folder, std::vector<std::string>& foldersBelow,
                                 std::vector<MusicFile>& files) {
  OpenedFolder& opened = FolderOf(folder);
  std::error_code error = opened.error;
  const std::vector<std::string> names =
      error ? std::vector<std::string>() : opened.folder.Names(error);
  if (error) files.push_back({folder, std::nullopt});
  for (const std::string& name : names) {
    // Other systems keep there what their own files have besides their contents.
    if (name.starts_with("._")) continue;
    std::string location = folder;
    location.append(1, '/').append(name);
    const Entry entry = opened.folder.Look(name);
    if (entry.kind == EntryKind::kFolder) {
      foldersBelow.push_back(location);
    } else if (!IsMusicFileName(name)) {
      continue;
    } else if (entry.kind == EntryKind::kFile) {
      files.push_back({location, entry.facts});
      seen_.emplace(location, entry.facts);
    } else if (entry.kind == EntryKind::kOther) {
      opened.folder.OpenFile(name, error);
      if (MayBeFile(error)) files.push_back({location, std::nullopt});
    }
  }
}

}  // namespace quaylink::cli
