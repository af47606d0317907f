#include <windows.h>

#include <algorithm>
#include <cwctype>
#include <limits>
#include <utility>

#include "cli/system/folder.h"
#include "cli/system/system.h"
#include "cli/system/wide_strings.h"

namespace quaylink::cli {
namespace {

namespace fs = std::filesystem;

constexpr wchar_t kLockName[] = L".quaylink-lock";
// In this form the system takes names as they are: of any length, and none is that of a device.
constexpr std::wstring_view kLongPrefix = L"\\\\?\\";
constexpr DWORD kReadersAndWriters = FILE_SHARE_READ | FILE_SHARE_WRITE;

std::error_code ErrorOf(DWORD code) {
  return {static_cast<int>(code), std::system_category()};
}

std::error_code ErrorUnless(BOOL succeeded) {
  return succeeded != FALSE ? std::error_code() : ErrorOf(GetLastError());
}

HANDLE Native(const Handle& handle) {
  return reinterpret_cast<HANDLE>(handle.Value());
}

Handle Opened(const std::wstring& path, DWORD access, DWORD share, DWORD creation, DWORD flags,
              std::error_code& error) {
  const HANDLE handle = CreateFileW(path.c_str(), access, share, nullptr, creation, flags, nullptr);
  error = ErrorUnless(handle != INVALID_HANDLE_VALUE);
  return Handle(reinterpret_cast<std::intptr_t>(handle));
}

fs::path Absolute(const fs::path& path) {
  std::wstring absolute(32768, L'\0');
  const DWORD size =
      GetFullPathNameW(path.c_str(), static_cast<DWORD>(absolute.size()), absolute.data(), nullptr);
  if (size == 0 || size >= absolute.size()) return path;
  absolute.resize(size);
  return absolute;
}

std::wstring LongForm(const fs::path& absolute) {
  const std::wstring& path = absolute.native();
  if (path.starts_with(kLongPrefix)) return path;
  // A share of the network.
  if (path.starts_with(L"\\\\")) return std::wstring(kLongPrefix) + L"UNC" + path.substr(1);
  return std::wstring(kLongPrefix) + path;
}

std::wstring LongForm(const fs::path& folder, std::wstring_view name) {
  std::wstring path = LongForm(folder);
  if (!path.ends_with(L'\\')) path += L'\\';
  return path.append(name);
}

// The path of an entry; empty for what is no name of one.
std::wstring EntryPath(const fs::path& folder, const std::string& name) {
  const bool isName =
      !name.empty() && name != "." && name != ".." && std::ranges::none_of(name, [](char c) {
        return std::string_view("\\/:*?\"<>|").find(c) != std::string_view::npos ||
               static_cast<unsigned char>(c) < 0x20;
      });
  return isName ? LongForm(folder, ToWide(name, CP_UTF8)) : std::wstring();
}

std::error_code NoName() {
  return std::make_error_code(std::errc::invalid_argument);
}

// Times are counted from 1601, in steps of 100 ns.
constexpr std::int64_t kStep = 100;
constexpr std::int64_t kStepsTo1970 = 116'444'736'000'000'000;

std::int64_t TimeOf(const FILETIME& time) {
  const auto steps = std::int64_t{time.dwHighDateTime} << 32u | std::int64_t{time.dwLowDateTime};
  constexpr std::int64_t kLast = std::numeric_limits<std::int64_t>::max() / kStep;
  return std::clamp(steps - kStepsTo1970, -kLast, kLast) * kStep;
}

FILETIME FileTimeOf(std::int64_t time) {
  const auto steps = static_cast<std::uint64_t>(time / kStep + kStepsTo1970);
  return {static_cast<DWORD>(steps), static_cast<DWORD>(steps >> 32u)};
}

FileFacts FactsOf(DWORD sizeHigh, DWORD sizeLow, const FILETIME& time) {
  return {std::uint64_t{sizeHigh} << 32u | sizeLow, TimeOf(time)};
}

EntryKind KindOf(DWORD attributes) {
  if ((attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) return EntryKind::kOther;
  return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? EntryKind::kFolder : EntryKind::kFile;
}

// Nothing when that cannot be told.
EntryKind KindOf(const Handle& handle) {
  BY_HANDLE_FILE_INFORMATION info = {};
  const bool isOnDisk = GetFileType(Native(handle)) == FILE_TYPE_DISK;
  if (!isOnDisk || GetFileInformationByHandle(Native(handle), &info) == 0) return EntryKind::kOther;
  return KindOf(info.dwFileAttributes);
}

Handle OpenedFolder(const std::wstring& path, DWORD flags, std::error_code& error) {
  // Who may not delete it, may not rename it either, nor what is above it.
  return Opened(path, FILE_LIST_DIRECTORY | FILE_READ_ATTRIBUTES, kReadersAndWriters, OPEN_EXISTING,
                FILE_FLAG_BACKUP_SEMANTICS | flags, error);
}

}  // namespace

Handle& Handle::operator=(Handle&& other) noexcept {
  std::swap(value_, other.value_);
  return *this;
}

std::error_code Handle::Close() {
  if (!IsOpen()) return {};
  return ErrorUnless(CloseHandle(reinterpret_cast<HANDLE>(std::exchange(value_, kNone))));
}

FileFacts File::Facts(std::error_code& error) const {
  BY_HANDLE_FILE_INFORMATION info = {};
  error = ErrorUnless(GetFileInformationByHandle(Native(handle_), &info));
  return FactsOf(info.nFileSizeHigh, info.nFileSizeLow, info.ftLastWriteTime);
}

std::size_t File::Read(std::span<char> bytes, std::error_code& error) {
  constexpr std::size_t kMost = 1u << 20u;
  std::size_t sum = 0;
  while (sum < bytes.size()) {
    const auto wanted = static_cast<DWORD>(std::min(bytes.size() - sum, kMost));
    DWORD count = 0;
    if (ReadFile(Native(handle_), bytes.data() + sum, wanted, &count, nullptr) == 0) {
      error = ErrorOf(GetLastError());
      break;
    }
    if (count == 0) break;
    sum += count;
  }
  return sum;
}

std::error_code File::Write(std::string_view bytes) {
  constexpr std::size_t kMost = 1u << 20u;
  while (!bytes.empty()) {
    const auto wanted = static_cast<DWORD>(std::min(bytes.size(), kMost));
    DWORD count = 0;
    if (WriteFile(Native(handle_), bytes.data(), wanted, &count, nullptr) == 0) {
      return ErrorOf(GetLastError());
    }
    if (count == 0) return std::make_error_code(std::errc::no_space_on_device);
    bytes.remove_prefix(count);
  }
  return {};
}

std::uint64_t File::Append(File& source, std::uint64_t most, std::error_code& error,
                           bool& readingFailed) {
  readingFailed = false;
  constexpr std::uint64_t kMost = 256u * 1024u;
  std::vector<char> buffer(static_cast<std::size_t>(std::min(most, kMost)));
  std::uint64_t sum = 0;
  while (sum < most) {
    const auto wanted =
        static_cast<std::size_t>(std::min<std::uint64_t>(buffer.size(), most - sum));
    const std::size_t count = source.Read(std::span(buffer).first(wanted), error);
    readingFailed = static_cast<bool>(error);
    if (!error) error = Write({buffer.data(), count});
    if (error) break;
    sum += count;
    if (count < wanted) break;
  }
  return sum;
}

std::error_code File::SetTime(std::int64_t time) {
  const FILETIME changed = FileTimeOf(time);
  return ErrorUnless(::SetFileTime(Native(handle_), nullptr, nullptr, &changed));
}

// The system forgets a file's bytes by no call that a user may make.
void File::Forget() {}

std::error_code File::Flush() {
  return ErrorUnless(FlushFileBuffers(Native(handle_)));
}

std::size_t Folder::MostHeld() {
  constexpr std::size_t kMost = 250;
  return kMost;
}

Folder Folder::Open(const fs::path& path, std::error_code& error) {
  const fs::path absolute = Absolute(path);
  Handle handle = OpenedFolder(LongForm(absolute), 0, error);
  if (!handle.IsOpen()) return {};
  if (KindOf(handle) == EntryKind::kFile) {
    error = std::make_error_code(std::errc::not_a_directory);
    return {};
  }
  return {std::move(handle), absolute};
}

Entry Folder::Look(const std::string& name) const {
  const std::wstring path = EntryPath(path_, name);
  if (path.empty()) return {};
  WIN32_FILE_ATTRIBUTE_DATA data = {};
  if (GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data) == 0) {
    const DWORD code = GetLastError();
    const bool isMissing =
        code == ERROR_FILE_NOT_FOUND || code == ERROR_PATH_NOT_FOUND || code == ERROR_INVALID_NAME;
    // What cannot be asked about is there.
    return {isMissing ? EntryKind::kMissing : EntryKind::kOther, {}};
  }
  const EntryKind kind = KindOf(data.dwFileAttributes);
  if (kind != EntryKind::kFile) return {kind, {}};
  return {kind, FactsOf(data.nFileSizeHigh, data.nFileSizeLow, data.ftLastWriteTime)};
}

std::vector<std::string> Folder::Names(std::error_code& error) const {
  error = {};
  WIN32_FIND_DATAW data = {};
  const HANDLE search = FindFirstFileW(LongForm(path_, L"*").c_str(), &data);
  if (search == INVALID_HANDLE_VALUE) {
    // The root of an empty drive has not even entries for itself.
    if (GetLastError() != ERROR_FILE_NOT_FOUND) error = ErrorOf(GetLastError());
    return {};
  }
  std::vector<std::string> names;
  do {
    std::string name = ToUtf8(data.cFileName);
    if (name != "." && name != "..") names.push_back(std::move(name));
  } while (FindNextFileW(search, &data) != 0);
  if (GetLastError() != ERROR_NO_MORE_FILES) error = ErrorOf(GetLastError());
  FindClose(search);
  return names;
}

Folder Folder::OpenFolder(const std::string& name, std::error_code& error) const {
  const std::wstring path = EntryPath(path_, name);
  error = NoName();
  if (path.empty()) return {};
  Handle handle = OpenedFolder(path, FILE_FLAG_OPEN_REPARSE_POINT, error);
  if (!handle.IsOpen()) return {};
  if (KindOf(handle) == EntryKind::kFolder)
    return {std::move(handle), path_ / ToWide(name, CP_UTF8)};
  error = std::make_error_code(std::errc::not_a_directory);
  return {};
}

std::error_code Folder::MakeFolder(const std::string& name) const {
  const std::wstring path = EntryPath(path_, name);
  return path.empty() ? NoName() : ErrorUnless(CreateDirectoryW(path.c_str(), nullptr));
}

Folder Folder::MakePrivateFolder(const std::string& name, std::error_code& error) const {
  // Files that are moved keep the rights that they got from the folder in which they were made, so
  // those of a private one would stay with them. Nobody can put another folder in its place once it
  // is open, and files are made in it only under names that were not there.
  error = MakeFolder(name);
  return error ? Folder() : OpenFolder(name, error);
}

bool Folder::IsOwn() const {
  return true;
}

File Folder::OpenFile(const std::string& name, std::error_code& error) const {
  const std::wstring path = EntryPath(path_, name);
  error = NoName();
  if (path.empty()) return {};
  File file(Opened(path, GENERIC_READ, kReadersAndWriters | FILE_SHARE_DELETE, OPEN_EXISTING,
                   FILE_FLAG_OPEN_REPARSE_POINT | FILE_FLAG_SEQUENTIAL_SCAN, error));
  const EntryKind kind = file.IsOpen() ? KindOf(file.handle_) : Look(name).kind;
  if (file.IsOpen() && kind == EntryKind::kFile) {
    file.facts_ = file.Facts(error);
    return file;
  }
  // Folders are refused as files are that one may not read.
  if (file.IsOpen() || kind == EntryKind::kFolder) {
    error = std::make_error_code(std::errc::not_supported);
  }
  return {};
}

File Folder::MakeFile(const std::string& name, std::error_code& error) const {
  const std::wstring path = EntryPath(path_, name);
  error = NoName();
  if (path.empty()) return {};
  // It may be moved while it is open, which to Windows is a way of deleting it.
  return File(Opened(path, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_DELETE,
                     CREATE_NEW, FILE_ATTRIBUTE_NORMAL, error));
}

std::error_code Folder::Move(const std::string& name, const Folder& target,
                             const std::string& newName, bool replaces) const {
  const std::wstring from = EntryPath(path_, name);
  const std::wstring to = EntryPath(target.path_, newName);
  if (from.empty() || to.empty()) return NoName();
  return ErrorUnless(
      MoveFileExW(from.c_str(), to.c_str(), replaces ? DWORD{MOVEFILE_REPLACE_EXISTING} : 0));
}

std::error_code Folder::Remove(const std::string& name) const {
  const std::wstring path = EntryPath(path_, name);
  if (path.empty()) return NoName();
  const DWORD attributes = GetFileAttributesW(path.c_str());
  if (attributes != INVALID_FILE_ATTRIBUTES) {
    const bool isFolder = (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    const bool isLink = (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
    if (isFolder && !isLink) return std::make_error_code(std::errc::is_a_directory);
    if (isFolder) return ErrorUnless(RemoveDirectoryW(path.c_str()));
    // A mark would keep it.
    if ((attributes & FILE_ATTRIBUTE_READONLY) != 0) MakeOrdinary(name);
  }
  return ErrorUnless(DeleteFileW(path.c_str()));
}

std::error_code Folder::RemoveFolder(const std::string& name) const {
  const std::wstring path = EntryPath(path_, name);
  return path.empty() ? NoName() : ErrorUnless(RemoveDirectoryW(path.c_str()));
}

void Folder::MakeOrdinary(const std::string& name) const {
  SetFileAttributesW(EntryPath(path_, name).c_str(), FILE_ATTRIBUTE_NORMAL);
}

std::error_code Folder::SetTime(const std::string& name, std::int64_t time) const {
  const std::wstring path = EntryPath(path_, name);
  if (path.empty()) return NoName();
  std::error_code error;
  File file(Opened(path, FILE_WRITE_ATTRIBUTES, kReadersAndWriters | FILE_SHARE_DELETE,
                   OPEN_EXISTING, FILE_FLAG_OPEN_REPARSE_POINT, error));
  return error ? error : file.SetTime(time);
}

std::optional<std::string> Folder::PathForLibrary(const std::string& name) const {
  // The library's functions know no longer paths.
  const auto reachable = [](const std::optional<std::string>& path) {
    return path && path->size() < MAX_PATH;
  };
  const std::wstring wideName = ToWide(name, CP_UTF8);
  std::optional<std::string> path = ToLibrary(ToUtf8((path_ / wideName).native()));
  if (reachable(path)) return path;
  std::wstring shortForm(32768, L'\0');
  shortForm.resize(GetShortPathNameW(LongForm(path_).c_str(), shortForm.data(),
                                     static_cast<DWORD>(shortForm.size())));
  if (shortForm.starts_with(kLongPrefix)) shortForm.erase(0, kLongPrefix.size());
  if (shortForm.empty() || shortForm.starts_with(L"UNC\\")) return std::nullopt;
  path = ToLibrary(ToUtf8((fs::path(shortForm) / wideName).native()));
  return reachable(path) ? path : std::nullopt;
}

bool Folder::Lock(std::error_code& error) {
  lock_ = Opened(LongForm(path_, kLockName), GENERIC_WRITE | DELETE, 0, OPEN_ALWAYS,
                 FILE_ATTRIBUTE_HIDDEN | FILE_FLAG_DELETE_ON_CLOSE | FILE_FLAG_OPEN_REPARSE_POINT,
                 error);
  if (error == ErrorOf(ERROR_SHARING_VIOLATION)) error = {};
  return lock_.IsOpen();
}

bool Folder::IsDrive() const {
  return path_ == path_.root_path();
}

// By its letter: what one drive is called by two letters is not known for one.
bool Folder::SharesDriveWith(const Folder& other) const {
  return std::ranges::equal(path_.root_name().native(), other.path_.root_name().native(), {},
                            std::towlower, std::towlower);
}

std::uint64_t Folder::FreeBytes(std::error_code& error) const {
  ULARGE_INTEGER available = {};
  error =
      ErrorUnless(GetDiskFreeSpaceExW(LongForm(path_, {}).c_str(), &available, nullptr, nullptr));
  return available.QuadPart;
}

std::uint64_t Folder::BlockSize() const {
  std::wstring root(32768, L'\0');
  DWORD sectors = 0, sectorSize = 0, freeBlocks = 0, blocks = 0;
  const bool known =
      GetVolumePathNameW(path_.c_str(), root.data(), static_cast<DWORD>(root.size())) != 0 &&
      GetDiskFreeSpaceW(root.c_str(), &sectors, &sectorSize, &freeBlocks, &blocks) != 0;
  return known && sectors > 0 && sectorSize > 0 ? std::uint64_t{sectors} * sectorSize : 1;
}

std::error_code Folder::Flush(std::span<const std::string> paths) const {
  std::error_code problem;
  for (const std::string& path : paths) {
    std::wstring wide = ToWide(path, CP_UTF8);
    std::ranges::replace(wide, L'/', L'\\');
    std::error_code error;
    File file(Opened(LongForm(path_, wide), GENERIC_WRITE, kReadersAndWriters | FILE_SHARE_DELETE,
                     OPEN_EXISTING, FILE_FLAG_OPEN_REPARSE_POINT, error));
    if (!error) error = file.Flush();
    if (error && !problem) problem = error;
  }
  return problem;
}

}  // namespace quaylink::cli
