#include <gmock/gmock.h>

#include <cstdint>
#include <string>
#include <system_error>

#include "cli/system/folder.h"
#include "support/scratch_folder.h"

namespace quaylink::test {
namespace {

using namespace cli;

using testing::IsEmpty;
using testing::UnorderedElementsAre;

namespace fs = std::filesystem;

constexpr std::int64_t kSecond = 1'000'000'000;
constexpr std::int64_t kSomeTime = 1'346'589'563 * kSecond;

class OpenFolder : public ScratchFolder {
 protected:
  void SetUp() override {
    ScratchFolder::SetUp();
    opened_ = Folder::Open(folder_, error_);
    ASSERT_TRUE(opened_.IsOpen()) << error_.message();
  }
  void TearDown() override {
    opened_ = Folder();
    ScratchFolder::TearDown();
  }

  // Not to be found in the folder as names: they would lead out of it.
  const std::string notNames_[3] = {"", ".", ".."};
  std::error_code error_;
  Folder opened_;
};

TEST_F(OpenFolder, IsNothingElse) {
  WriteFile(folder_ / "file", "x");
  EXPECT_FALSE(Folder::Open(folder_ / "file", error_).IsOpen());
  EXPECT_EQ(error_, std::errc::not_a_directory);
  EXPECT_FALSE(Folder::Open(folder_ / "missing", error_).IsOpen());
  EXPECT_EQ(error_, std::errc::no_such_file_or_directory);
  EXPECT_FALSE(opened_.OpenFolder("file", error_).IsOpen());
  EXPECT_EQ(error_, std::errc::not_a_directory);
  EXPECT_FALSE(opened_.OpenFolder("missing", error_).IsOpen());
  EXPECT_EQ(error_, std::errc::no_such_file_or_directory);
}

TEST_F(OpenFolder, TellsItsEntries) {
  EXPECT_THAT(opened_.Names(error_), IsEmpty());
  EXPECT_FALSE(error_);
  WriteFile(folder_ / "song.mp3", "12345");
  EXPECT_FALSE(opened_.MakeFolder("Bj\xC3\xB6rk"));
  EXPECT_EQ(opened_.MakeFolder("song.mp3"), std::errc::file_exists);
  EXPECT_THAT(opened_.Names(error_), UnorderedElementsAre("song.mp3", "Bj\xC3\xB6rk"));
  EXPECT_EQ(opened_.Look("song.mp3").kind, EntryKind::kFile);
  EXPECT_EQ(opened_.Look("song.mp3").facts.size, 5u);
  EXPECT_EQ(opened_.Look("Bj\xC3\xB6rk").kind, EntryKind::kFolder);
  EXPECT_EQ(opened_.Look("missing").kind, EntryKind::kMissing);
  EXPECT_TRUE(opened_.OpenFolder("Bj\xC3\xB6rk", error_).IsOpen());
}

TEST_F(OpenFolder, MakesNoFileInThePlaceOfAnother) {
  File file = opened_.MakeFile("song.mp3", error_);
  ASSERT_TRUE(file.IsOpen());
  EXPECT_FALSE(file.Write("first"));
  EXPECT_FALSE(file.Close());
  EXPECT_FALSE(opened_.MakeFile("song.mp3", error_).IsOpen());
  EXPECT_EQ(error_, std::errc::file_exists);
  EXPECT_EQ(ReadFile(folder_ / "song.mp3"), "first");
}

TEST_F(OpenFolder, OpensOrdinaryFilesOnly) {
  EXPECT_FALSE(opened_.OpenFile("missing", error_).IsOpen());
  EXPECT_EQ(error_, std::errc::no_such_file_or_directory);
  fs::create_directory(folder_ / "folder");
  EXPECT_FALSE(opened_.OpenFile("folder", error_).IsOpen());
  EXPECT_EQ(error_, std::errc::not_supported);
  for (const std::string& name : notNames_) EXPECT_FALSE(opened_.OpenFile(name, error_).IsOpen());
}

TEST_F(OpenFolder, FilesKeepFactsAndTimes) {
  // The second one is before 1970.
  for (const std::int64_t time : {kSomeTime + 123'456'700, -kSomeTime + 100}) {
    File file = opened_.MakeFile("song.mp3", error_);
    EXPECT_FALSE(file.Write("12345"));
    EXPECT_FALSE(file.SetTime(time));
    EXPECT_EQ(file.Facts(error_), (FileFacts{5, time}));
    EXPECT_FALSE(file.Flush());
    EXPECT_FALSE(file.Close());
    EXPECT_EQ(opened_.Look("song.mp3").facts, (FileFacts{5, time}));
    EXPECT_FALSE(opened_.SetTime("song.mp3", kSomeTime));
    EXPECT_EQ(opened_.Look("song.mp3").facts, (FileFacts{5, kSomeTime}));
    EXPECT_FALSE(opened_.Remove("song.mp3"));
  }
  EXPECT_TRUE(opened_.SetTime("missing", kSomeTime));
}

TEST_F(OpenFolder, AppendsWhatAnotherFileHasFromWhereItIs) {
  std::string contents;
  for (unsigned i = 0; i < 700'000; ++i) contents += static_cast<char>(i * i % 251);
  WriteFile(folder_ / "source", contents);
  File source = opened_.OpenFile("source", error_);
  File copy = opened_.MakeFile("copy", error_);
  bool readingFailed = true;
  EXPECT_EQ(copy.Append(source, 300'001, error_, readingFailed), 300'001u);
  EXPECT_EQ(copy.Append(source, 1'000'000, error_, readingFailed), contents.size() - 300'001);
  EXPECT_EQ(copy.Append(source, 1, error_, readingFailed), 0u);
  EXPECT_FALSE(error_);
  EXPECT_FALSE(readingFailed);
  EXPECT_FALSE(copy.Close());
  EXPECT_EQ(ReadFile(folder_ / "copy"), contents);
}

TEST_F(OpenFolder, TellsWhoseErrorEndsACopy) {
  WriteFile(folder_ / "source", "12345");
  File source = opened_.OpenFile("source", error_);
  File reader = opened_.OpenFile("source", error_);
  File closed;
  bool readingFailed = true;
  // What is opened to read does not take anything.
  EXPECT_EQ(reader.Append(source, 5, error_, readingFailed), 0u);
  EXPECT_TRUE(error_);
  EXPECT_FALSE(readingFailed);
  File copy = opened_.MakeFile("copy", error_);
  EXPECT_EQ(copy.Append(closed, 5, error_, readingFailed), 0u);
  EXPECT_TRUE(error_);
  EXPECT_TRUE(readingFailed);
}

TEST_F(OpenFolder, MovesOverAnotherFileOnlyWhenAsked) {
  WriteFile(folder_ / "new", "new");
  WriteFile(folder_ / "inner" / "old", "old");
  const Folder inner = opened_.OpenFolder("inner", error_);
  EXPECT_EQ(opened_.Move("new", inner, "old", false), std::errc::file_exists);
  EXPECT_EQ(ReadFile(folder_ / "inner" / "old"), "old");
  EXPECT_FALSE(opened_.Move("new", inner, "other", false));
  EXPECT_FALSE(inner.Move("other", inner, "old", true));
  EXPECT_EQ(ReadFile(folder_ / "inner" / "old"), "new");
  EXPECT_THAT(inner.Names(error_), UnorderedElementsAre("old"));
  EXPECT_EQ(inner.Move("missing", opened_, "x", true), std::errc::no_such_file_or_directory);
}

TEST_F(OpenFolder, RemovesFilesAndEmptyFoldersByTheirOwnCalls) {
  WriteFile(folder_ / "inner" / "song.mp3", "x");
  EXPECT_TRUE(opened_.Remove("inner"));
  EXPECT_TRUE(opened_.RemoveFolder("inner"));
  {
    const Folder inner = opened_.OpenFolder("inner", error_);
    fs::permissions(folder_ / "inner" / "song.mp3", fs::perms::owner_read);
    EXPECT_TRUE(inner.RemoveFolder("song.mp3"));
    EXPECT_FALSE(inner.Remove("song.mp3"));
    EXPECT_TRUE(inner.Remove("song.mp3"));
  }
  EXPECT_FALSE(opened_.RemoveFolder("inner"));
  EXPECT_THAT(opened_.Names(error_), IsEmpty());
}

TEST_F(OpenFolder, PrivateFolderIsANewOne) {
  fs::create_directory(folder_ / "planted");
  EXPECT_FALSE(opened_.MakePrivateFolder("planted", error_).IsOpen());
  EXPECT_EQ(error_, std::errc::file_exists);
  const Folder made = opened_.MakePrivateFolder("new", error_);
  EXPECT_TRUE(made.IsOpen()) << error_.message();
  EXPECT_TRUE(made.IsOwn());
}

TEST_F(OpenFolder, IsLockedForOthersUntilItsHolderEnds) {
  Folder other = Folder::Open(folder_, error_);
  {
    Folder holder = Folder::Open(folder_, error_);
    EXPECT_TRUE(holder.Lock(error_));
    EXPECT_FALSE(other.Lock(error_));
    EXPECT_FALSE(error_) << error_.message();
  }
  EXPECT_TRUE(other.Lock(error_));
}

TEST_F(OpenFolder, LibraryReachesItsEntries) {
  const auto path = opened_.PathForLibrary("song.mp3");
  ASSERT_TRUE(path);
  WriteFile(*path, "12345");
  EXPECT_EQ(opened_.Look("song.mp3").facts.size, 5u);
  fs::permissions(folder_ / "song.mp3", fs::perms::owner_read);
  opened_.MakeOrdinary("song.mp3");
  EXPECT_NE(fs::status(folder_ / "song.mp3").permissions() & fs::perms::owner_write,
            fs::perms::none);
}

TEST_F(OpenFolder, KnowsItsDisk) {
  EXPECT_GT(opened_.FreeBytes(error_), 0u);
  EXPECT_FALSE(error_);
  EXPECT_GT(opened_.BlockSize(), 0u);
  WriteFile(folder_ / "inner" / "song.mp3", "x");
  const std::string files[] = {"inner/song.mp3"};
  EXPECT_FALSE(opened_.Flush(files));
}

TEST_F(OpenFolder, PathsMayBeLongerThanTheSystemsOwnFunctionsTake) {
  const std::string name(100, 'n');
  Folder folder = Folder::Open(folder_, error_);
  for (int depth = 0; depth < 4; ++depth) {
    ASSERT_FALSE(folder.MakeFolder(name));
    folder = folder.OpenFolder(name, error_);
    ASSERT_TRUE(folder.IsOpen()) << error_.message();
  }
  File file = folder.MakeFile("song.mp3", error_);
  EXPECT_FALSE(file.Write("x"));
  EXPECT_FALSE(file.Close());
  EXPECT_EQ(folder.Look("song.mp3").facts.size, 1u);
  EXPECT_THAT(folder.Names(error_), UnorderedElementsAre("song.mp3"));
  EXPECT_FALSE(folder.Remove("song.mp3"));
  // The system's own functions could not clean up after this test.
  for (int depth = 4; depth > 0; --depth) {
    folder = Folder();
    folder = Folder::Open(folder_, error_);
    for (int i = 1; i < depth; ++i) folder = folder.OpenFolder(name, error_);
    EXPECT_FALSE(folder.RemoveFolder(name));
  }
}

}  // namespace
}  // namespace quaylink::test
