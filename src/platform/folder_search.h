// A search of a folder's entries that closes itself.
#pragma once

#include <string>

#include "platform/windows_api.h"

namespace quaylink {

class FolderSearch {
 public:
  // Finds the first entry that matches the pattern, such as C:\Folder\*.*; "." and ".." count.
  explicit FolderSearch(const std::string& pattern)
      : search_(FindFirstFileA(pattern.c_str(), &entry_)),
        found_(search_ != INVALID_HANDLE_VALUE) {}
  ~FolderSearch() {
    if (search_ != INVALID_HANDLE_VALUE) FindClose(search_);
  }
  FolderSearch(const FolderSearch&) = delete;
  FolderSearch& operator=(const FolderSearch&) = delete;

  bool Found() const { return found_; }
  const WIN32_FIND_DATAA& Entry() const { return entry_; }
  void Next() { found_ = FindNextFileA(search_, &entry_) != 0; }

 private:
  WIN32_FIND_DATAA entry_ = {};
  HANDLE search_;
  bool found_;
};

}  // namespace quaylink
