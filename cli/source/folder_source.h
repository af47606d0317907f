// A mounted player, a copy of one, or a backup: a folder that holds what a player's drive or a
// phone holds. The links in it are not followed: whoever made it could lead a copy to any file of
// this computer.
#pragma once

#include <map>
#include <mutex>
#include <optional>
#include <unordered_map>

#include "cli/source/source.h"

namespace quaylink::cli {

// Fetch and Answers are for several threads at once, all else for one.
class FolderSource : public Source {
 public:
  // Throws a Failure when it cannot be opened, or holds nothing of a player.
  explicit FolderSource(const std::filesystem::path& path);

  std::string Name() const override;
  // Throws a Failure when there is no database, or it cannot be read.
  DatabaseFiles ReadDatabase();
  Collection ReadCollection() override;
  std::optional<FileFacts> Look(const Track& track) override;
  Entry LookAt(const std::string& location);
  FetchResult Fetch(const std::string& location, const Folder& folder, const std::string& name,
                    const BytesCallback& tell) override;
  bool Holds(const Folder& folder) override {
    return root_.folder.IsDrive() && root_.folder.SharesDriveWith(folder);
  }
  std::size_t FetchesAtOnce() override { return 2; }
  std::vector<MusicFile> MusicFiles() override;
  bool Answers() override;

 private:
  // A folder on the way to a file, kept open for the next file in it.
  struct OpenedFolder {
    Folder folder;
    std::error_code error;  // why it is not open
    // Its entries by their names in lower case, once one was not found as it is spelled.
    std::optional<std::map<std::string, std::string>> entries;
  };

  // How an entry of that name is spelled, in any letter case; null when there is none.
  static const std::string* SpellingOf(OpenedFolder& opened, const std::string& name);
  // Opens an entry by its name, in any letter case.
  template <class Open>
  static auto OpenIn(OpenedFolder& parent, const std::string& name, std::error_code& error,
                     Open open);
  // The folder of a path from the root such as "/iPod_Control/Music", or the one above at which
  // the way to it ends.
  OpenedFolder& FolderOf(std::string_view path);
  File OpenFileAt(const std::string& location, std::error_code& error);
  // Empty when there is no such file.
  std::string ReadFile(const std::string& location, std::error_code& error);
  void AddMusicFiles(const std::string& folder, std::vector<std::string>& foldersBelow,
                     std::vector<MusicFile>& files);

  std::filesystem::path path_;
  std::mutex opening_;  // guards what is open
  OpenedFolder root_;
  std::unordered_map<std::string, FileFacts> seen_;           // files, when the music was listed
  std::map<std::string, OpenedFolder, std::less<>> folders_;  // below the root, by their paths
  std::mutex longFile_;                                       // held by who reads one
};

}  // namespace quaylink::cli
