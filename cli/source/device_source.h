// An attached device, reached through the library.
#pragma once

#include <memory>
#include <mutex>
#include <unordered_map>
#include <unordered_set>

#include "cli/source/folder_source.h"
#include "cli/source/library.h"

namespace quaylink::cli {

class DeviceSource : public Source {
 public:
  // Works on the device that the library has found, and for as long as the library lives.
  explicit DeviceSource(const Library& library);

  std::string Name() const override { return "the device"; }
  Collection ReadCollection() override;
  std::optional<FileFacts> Look(const Track& track) override;
  FetchResult Fetch(const std::string& location, const Folder& folder, const std::string& name,
                    const BytesCallback& tell) override;
  // The library is for one thread.
  std::size_t FetchesAtOnce() override { return Drive() ? drive_->FetchesAtOnce() : 1; }
  bool Holds(const Folder& folder) override;
  std::string ObstacleIn(const Folder& folder) override;
  std::vector<MusicFile> MusicFiles() override;
  bool Answers() override;

 private:
  bool IsPhone() const { return library_.Kind() == DeviceKind::kPhone; }
  // The player's drive as a folder, which tells what the library does not: sizes, times, and why a
  // file cannot be read. Null when it is not known which of the mounted ones it is.
  FolderSource* Drive();
  void SeekDrive();
  FetchResult FetchByLibrary(const std::string& location, const Folder& folder,
                             const std::string& name, const BytesCallback& tell) const;
  FetchResult NotCopied(const std::string& location, const Folder& folder) const;

  const Library& library_;
  char driveLetter_;
  std::string database_;  // its bytes, by which the drive is known
  std::once_flag driveSought_;
  std::unique_ptr<FolderSource> drive_;
  std::unordered_map<std::string, std::int64_t> times_;  // of a phone's tracks, by location
  std::unordered_set<std::string> listed_;               // a phone's files, once they were listed
};

}  // namespace quaylink::cli
