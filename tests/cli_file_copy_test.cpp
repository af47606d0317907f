#include <gtest/gtest.h>

#include <filesystem>
#include <iterator>
#include <string>

#include "cli/source/file_copy.h"
#include "cli/text/formats.h"
#include "support/scratch_folder.h"

namespace quaylink::test {
namespace {

using namespace cli;

namespace fs = std::filesystem;

class FileCopy : public ScratchFolder {
 protected:
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

  const fs::path file_ = folder_ / "song.mp3";
};

TEST_F(FileCopy, GoodCopyReplacesWhatWasThereUnchangedByTheChecks) {
  for (const bool noticesWriteErrors : {true, false}) {
    WriteFile(file_, "older and longer contents");
    const CopyResult result = CopyBeside(JobOf("new", true, noticesWriteErrors), file_);
    EXPECT_TRUE(result.Good()) << result.problem;
    EXPECT_EQ(ReadFile(file_), "new");
    EXPECT_EQ(FilesInFolder(), 1u);
  }
}

TEST_F(FileCopy, FailedCopyLeavesNoPartAndKeepsWhatWasThere) {
  WriteFile(file_, "older");
  const CopyResult result = CopyBeside(JobOf("half a so", false), file_);
  EXPECT_EQ(result.problem.substr(0, 10), "unreadable");
  EXPECT_EQ(ReadFile(file_), "older");
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
