#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>

#include "cli/source/file_copy.h"
#include "cli/text/formats.h"

namespace quaylink::test {
namespace {

using namespace cli;

namespace fs = std::filesystem;

void WriteFile(const fs::path& path, const std::string& contents) {
  std::ofstream(path, std::ios::binary) << contents;
}

std::optional<std::string> ReadIfThere(const fs::path& path) {
  std::ifstream stream(path, std::ios::binary);
  if (!stream) return std::nullopt;
  return std::string(std::istreambuf_iterator<char>(stream), {});
}

class FileCopy : public testing::Test {
 protected:
  void SetUp() override {
    fs::remove_all(folder_);
    fs::create_directories(folder_);
  }
  void TearDown() override { fs::remove_all(folder_); }

  // A job that writes some contents and then claims what it is told to claim.
  static CopyJob JobOf(const std::string& contents, bool claim, bool noticesWriteErrors = true) {
    CopyJob job;
    job.noticesWriteErrors = noticesWriteErrors;
    job.readProblem = "unreadable";
    job.copy = [=](const char* localPath) {
      WriteFile(localPath, contents);
      return claim;
    };
    return job;
  }

  std::size_t FilesInFolder() const {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder_), {}));
  }

  const fs::path folder_ =
      fs::path(testing::TempDir()) /
      ("cli_file_copy_" +
       std::string(testing::UnitTest::GetInstance()->current_test_info()->name()));
  const fs::path file_ = folder_ / "song.mp3";
};

TEST_F(FileCopy, GoodCopyReplacesWhatWasThereUnchangedByTheChecks) {
  for (const bool noticesWriteErrors : {true, false}) {
    WriteFile(file_, "older and longer contents");
    const CopyResult result = CopyBeside(JobOf("new", true, noticesWriteErrors), file_);
    EXPECT_TRUE(result.Good()) << result.problem;
    EXPECT_EQ(ReadIfThere(file_), "new");
    EXPECT_EQ(FilesInFolder(), 1u);
  }
}

TEST_F(FileCopy, FailedCopyLeavesNoPartAndKeepsWhatWasThere) {
  WriteFile(file_, "older");
  const CopyResult result = CopyBeside(JobOf("half a so", false), file_);
  EXPECT_EQ(result.problem.substr(0, 10), "unreadable");
  EXPECT_EQ(ReadIfThere(file_), "older");
  EXPECT_EQ(FilesInFolder(), 1u);
}

TEST_F(FileCopy, EmptyCopyIsGoodOnlyWhereWriteErrorsAreNoticed) {
  EXPECT_TRUE(CopyBeside(JobOf("", true, true), file_).Good());
  fs::remove(file_);
  EXPECT_FALSE(CopyBeside(JobOf("", true, false), file_).Good());
  EXPECT_EQ(FilesInFolder(), 0u);
}

TEST_F(FileCopy, ReadOnlyMarkOfTheSourceDoesNotStay) {
  CopyJob job = JobOf("song", true);
  job.copy = [](const char* localPath) {
    WriteFile(localPath, "song");
    fs::permissions(localPath, fs::perms::owner_read);
    return true;
  };
  EXPECT_TRUE(CopyBeside(job, file_).Good());
  EXPECT_NE(fs::status(file_).permissions() & fs::perms::owner_write, fs::perms::none);
}

TEST_F(FileCopy, SizesAreShownForPeople) {
  EXPECT_EQ(ShownSize(999), "999 bytes");
  EXPECT_EQ(ShownSize(1000), "1.0 kB");
  EXPECT_EQ(ShownSize(3400000), "3.4 MB");
  EXPECT_EQ(ShownSize(7200000000000000), "7200.0 TB");
}

}  // namespace
}  // namespace quaylink::test
