// Listing and copying the files of a phone.
#include <gmock/gmock.h>

#include <climits>
#include <map>

#include "support/attached_phone.h"

namespace quaylink::test {
namespace {

using stand_in::MemoryFiles;
using testing::ElementsAre;
using testing::IsEmpty;

using Paths = std::vector<std::string>;

// An open connection to a phone with the given files.
class OpenPhone : public AttachedPhone {
 public:
  explicit OpenPhone(std::shared_ptr<const MemoryFiles> files = std::make_shared<MemoryFiles>(),
                     std::string_view missing = {})
      : AttachedPhone({.files = std::move(files)}, missing) {
    EXPECT_EQ(bridge->Connect(true), 1);
    phone.ForgetLog();
  }
  ~OpenPhone() { bridge->Disconnect(); }

  Paths Folders() {
    Paths folders;
    EXPECT_EQ(bridge->ListFolders("/", folders), 1);
    return folders;
  }
  Paths Files() {
    Paths files;
    EXPECT_EQ(bridge->ListFiles(Folders(), files), 1);
    return files;
  }
  std::string Copy(const std::string& devicePath, std::int32_t result = 1) {
    EXPECT_EQ(bridge->CopyDeviceFile(machine.LocalPath("copy"), devicePath), result);
    return machine.ReadFile(machine.LocalPath("copy"));
  }
};

std::string InRoot(const std::string& name) {
  std::string path = "/";
  return path.append(name);
}

std::string Bytes(std::size_t size) {
  std::string bytes(size, '\0');
  for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<char>(i * 7 + i / 251);
  return bytes;
}

TEST(Listing, IsBreadthFirstInTheOrderOfThePhone) {
  const auto files = std::make_shared<MemoryFiles>();
  for (const char* path : {"/z/deep/last", "/top", "/a/x", "/z/first", "/a/b/y"})
    files->AddFile(path, "1");
  files->AddFolder("/empty");
  OpenPhone phone(files);
  EXPECT_THAT(phone.Folders(), ElementsAre("/", "/z/", "/a/", "/empty/", "/z/deep/", "/a/b/"));
  EXPECT_THAT(phone.Files(), ElementsAre("/top", "/z/first", "/a/x", "/z/deep/last", "/a/b/y"));
}

TEST(Listing, OpensEachFolderAndReadsEachEntryTwice) {
  const auto files = std::make_shared<MemoryFiles>();
  for (int folder = 0; folder < 500; ++folder) {
    for (int file = 0; file < 20; ++file) {
      files->AddFile("/Music/F" + std::to_string(folder) + "/" + std::to_string(file) + ".mp3",
                     "1");
    }
  }
  OpenPhone phone(files);
  EXPECT_EQ(phone.Files().size(), 10000u);
  EXPECT_EQ(phone.phone.Log("AFCDirectoryOpen").size(), 2u * 502);
  std::map<std::string, int> readings;
  for (const std::string& call : phone.phone.Log("AFCFileInfoOpen")) ++readings[call];
  EXPECT_EQ(readings.size(), 501u + 10000 + 2 * 502);
  for (const auto& [call, count] : readings) {
    const bool isDot = call.ends_with("/.\")") || call.ends_with("/..\")");
    EXPECT_EQ(count, isDot ? 1 : 2) << call;
  }
}

TEST(Listing, FailsAtAFolderThatCannotBeOpenedAndKeepsWhatWasFound) {
  const auto files = std::make_shared<MemoryFiles>();
  for (const char* path : {"/a/1", "/b/2", "/c/3"}) files->AddFile(path, "1");
  OpenPhone phone(files);
  Paths folders;
  phone.phone.setUp.failures["AFCDirectoryOpen"] = {.skip = 2};
  EXPECT_EQ(phone.bridge->ListFolders("/", folders), 0);
  EXPECT_THAT(folders, ElementsAre("/", "/a/", "/b/", "/c/"));
  Paths found;
  EXPECT_EQ(phone.bridge->ListFiles({"/a/", "/b/", "/gone/", "/c/"}, found), 0);
  EXPECT_THAT(found, ElementsAre("/a/1", "/b/2"));
}

TEST(Listing, LeavesOutWhatThePhoneFailsToTell) {
  const auto files = std::make_shared<MemoryFiles>();
  for (const char* path : {"/1", "/2", "/3"}) files->AddFile(path, "1");
  struct Case {
    const char* failing;
    unsigned skip;
    Paths found;
  };
  // A file's information has five pairs, the fourth of them its format; "." and ".." come first.
  const Case cases[] = {
      {"AFCFileInfoOpen", 3, {"/1", "/3"}},
      {"AFCKeyValueRead", 6 + 6 + 6 + 3, {"/1", "/3"}},
      {"AFCKeyValueRead", 6 + 6 + 6 + 4, {"/1", "/2", "/3"}},
      {"AFCDirectoryRead", 4, {"/1", "/2"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << c.failing << " " << c.skip);
    OpenPhone phone(files);
    phone.phone.setUp.garbage = true;
    phone.phone.setUp.failures[c.failing] = {.skip = c.skip};
    Paths found;
    EXPECT_EQ(phone.bridge->ListFiles({"/"}, found), 1);
    EXPECT_EQ(found, c.found);
  }
}

TEST(Listing, TellsFoldersFromFilesByTheirFormatAlone) {
  const auto files = std::make_shared<MemoryFiles>();
  for (const char* path : {"/link", "/none", "/null", "/case", "/dir"}) files->AddFile(path, "1");
  OpenPhone phone(files);
  phone.phone.setUp.information = {
      {"/link", {{"st_ifmt", "S_IFLNK"}, {"st_size", "1"}}},
      {"/none", {{"st_size", "S_IFDIR"}}},
      {"/null", {{"st_ifmt", std::nullopt}}},
      {"/case", {{"ST_IFMT", "S_IFDIR"}, {"st_ifmt", "s_ifdir"}}},
      {"/dir", {{"st_ifmt", "S_IFDIR"}}},
  };
  Paths found;
  EXPECT_EQ(phone.bridge->ListFiles({"/"}, found), 1);
  EXPECT_THAT(found, ElementsAre("/link", "/null", "/case"));
  Paths folders;
  EXPECT_EQ(phone.bridge->ListFolders("/", folders), 0);  // "/dir/" is no folder that opens
  EXPECT_THAT(folders, ElementsAre("/", "/dir/"));
}

TEST(Listing, SkipsPathsOfMoreThan255Bytes) {
  const auto files = std::make_shared<MemoryFiles>();
  const std::string fits = InRoot(std::string(254, 'f'));
  const std::string folderFits = InRoot(std::string(253, 'd'));
  files->AddFile(fits, "1");
  files->AddFile(fits + "f", "1");
  files->AddFile(InRoot(std::string(1000, 'f')), "1");
  files->AddFolder(folderFits);
  files->AddFolder(folderFits + "d");
  files->AddFile(folderFits + "/beyond", "1");
  OpenPhone phone(files);
  EXPECT_THAT(phone.Folders(), ElementsAre("/", folderFits + "/"));
  EXPECT_THAT(phone.Files(), ElementsAre(fits));
  Paths found;
  EXPECT_EQ(phone.bridge->ListFolders(InRoot(std::string(254, 'd')) + "/", found), 0);
}

TEST(Listing, PassesNamesByteForByte) {
  std::string name;
  for (int c = 1; c <= UCHAR_MAX; ++c) {
    if (c != '/') name.push_back(static_cast<char>(c));
  }
  const auto files = std::make_shared<MemoryFiles>();
  files->AddFile(InRoot(name.substr(0, 127)), "1");
  files->AddFile(InRoot(name.substr(127)) + "/...", "1");
  OpenPhone phone(files);
  EXPECT_THAT(phone.Files(),
              ElementsAre(InRoot(name.substr(0, 127)), InRoot(name.substr(127)) + "/..."));
}

TEST(Copying, ReadsNoMoreThanIsExpectedUntilAllIsThere) {
  const struct {
    std::size_t size;
    std::uint32_t longestRead;
    std::vector<unsigned> reads;
  } cases[] = {
      {1, UINT32_MAX, {1}},
      {24575, UINT32_MAX, {24575}},
      {24576, UINT32_MAX, {24576}},
      {24577, UINT32_MAX, {24576, 1}},
      {60000, UINT32_MAX, {24576, 24576, 10848}},
      {60000, 20000, {24576, 24576, 20000}},
      {25000, 24575, {24576, 425}},
  };
  for (const auto& [size, longestRead, reads] : cases) {
    SCOPED_TRACE(size);
    const auto files = std::make_shared<MemoryFiles>();
    files->AddFile("/file", Bytes(size));
    OpenPhone phone(files);
    phone.phone.setUp.longestRead = longestRead;
    EXPECT_TRUE(phone.Copy("/file") == Bytes(size));
    Paths calls;
    for (const unsigned read : reads)
      calls.push_back("AFCFileRefRead(" + std::to_string(read) + ")");
    EXPECT_EQ(phone.phone.Log("AFCFileRefRead"), calls);
    EXPECT_THAT(phone.phone.Log("AFCFileRefOpen"), ElementsAre("AFCFileRefOpen(\"/file\", 2)"));
  }
}

TEST(Copying, GoesByTheStatedSize) {
  struct Case {
    std::optional<std::string> size;
    std::int32_t result;
    const char* copied;
  };
  const Case cases[] = {
      {"10", 1, "abcdefghij"},
      {"0010", 1, "abcdefghij"},
      {" \t+3xyz", 1, "abc"},  // less than the file holds
      {"4.9", 1, "abcd"},
      {"11", 0, "abcdefghij"},  // more than it holds
      {"99999999999", 0, "abcdefghij"},
      {"99999999999999999999999", 0, "abcdefghij"},
      {"0", 0, ""},
      {"-5", 0, ""},
      {"", 0, ""},
      {"x6", 0, ""},
      {std::nullopt, 0, ""},
  };
  const auto files = std::make_shared<MemoryFiles>();
  files->AddFile("/file", "abcdefghij");
  for (const Case& c : cases) {
    SCOPED_TRACE(c.size.value_or("null"));
    OpenPhone phone(files);
    phone.phone.setUp.information["/file"] = {{"st_size", c.size}, {"st_ifmt", "S_IFREG"}};
    EXPECT_EQ(phone.Copy("/file", c.result), c.copied);
  }
}

TEST(Copying, FailsWithAnEmptyFileWhenThePhoneRefuses) {
  const auto files = std::make_shared<MemoryFiles>();
  files->AddFile("/file", "abc");
  files->AddFolder("/folder");
  files->AddFile("/empty", "");
  OpenPhone phone(files);
  phone.phone.setUp.garbage = true;
  phone.machine.WriteFile(phone.machine.LocalPath("copy"), "what was there before");
  for (const char* path : {"/missing", "/folder", "/empty"}) EXPECT_EQ(phone.Copy(path, 0), "");
  for (const char* failing : {"AFCFileInfoOpen", "AFCKeyValueRead", "AFCFileRefOpen"}) {
    SCOPED_TRACE(failing);
    phone.phone.setUp.failures[failing] = {};
    EXPECT_EQ(phone.Copy("/file", 0), "");
  }
  EXPECT_EQ(phone.Copy("/file"), "abc");
}

TEST(Copying, RefusesAReadThatDeliversMoreThanWasAskedFor) {
  const auto files = std::make_shared<MemoryFiles>();
  files->AddFile("/file", "abc");
  OpenPhone phone(files);
  phone.bridge->libraries.entryPoints.afcFileRefRead = [](AfcConnection, FileReference, void*,
                                                          std::uint32_t* length) -> Status {
    ++*length;
    return 0;
  };
  EXPECT_EQ(phone.Copy("/file", 0), "");
}

void ExpectFileOperationsRefused(AttachedPhone& attached, bool listing, bool copying) {
  const std::string localPath = attached.machine.LocalPath("copy");
  Paths paths = {"left from before"};
  if (listing) {
    EXPECT_EQ(attached.bridge->ListFolders("/", paths), 0);
    EXPECT_EQ(attached.bridge->ListFiles({"/"}, paths), 0);
    EXPECT_THAT(paths, IsEmpty());
  }
  if (copying) {
    EXPECT_EQ(attached.bridge->CopyDeviceFile(localPath, "/file"), 0);
    EXPECT_FALSE(attached.machine.Exists(localPath));
  }
  EXPECT_THAT(attached.phone.Log(), IsEmpty());
}

TEST(FileOperations, CallNothingWithoutAConnection) {
  AttachedPhone attached;
  ExpectFileOperationsRefused(attached, true, true);
}

TEST(FileOperations, CallNothingWhenAnEntryPointThatTheyNeedIsMissing) {
  const struct {
    const char* missing;
    bool listing;
    bool copying;
  } cases[] = {
      {"AFCDirectoryOpen", true, false}, {"AFCDirectoryClose", true, false},
      {"AFCDirectoryRead", true, false}, {"AFCFileRefOpen", false, true},
      {"AFCFileRefRead", false, true},   {"AFCFileRefClose", false, true},
      {"AFCFileInfoOpen", true, true},   {"AFCKeyValueRead", true, true},
      {"AFCKeyValueClose", true, true},
  };
  for (const auto& [missing, listing, copying] : cases) {
    SCOPED_TRACE(missing);
    OpenPhone phone(std::make_shared<MemoryFiles>(), missing);
    ExpectFileOperationsRefused(phone, listing, copying);
  }
}

}  // namespace
}  // namespace quaylink::test
