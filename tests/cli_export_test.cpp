#include <gmock/gmock.h>

#include <cstddef>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "cli/base/program.h"
#include "cli/export/comparison.h"
#include "cli/export/destination.h"
#include "cli/export/export_run.h"
#include "cli/export/flusher.h"
#include "cli/export/journal.h"
#include "cli/export/plan.h"
#include "cli/export/report.h"
#include "cli/export/verification.h"
#include "cli/output/progress.h"
#include "cli/source/source.h"
#include "cli/text/display_width.h"
#include "support/scratch_folder.h"

namespace quaylink::test {
namespace {

using namespace cli;

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

namespace fs = std::filesystem;

constexpr char kJournal[] = ".quaylink-journal";

struct DeviceFile {
  std::string bytes;
  std::int64_t time = 1'346'589'563'000'000'000;
};

// A device that is nothing but its files.
class FilesOnly : public Source {
 public:
  std::map<std::string, DeviceFile> files;
  std::function<void()> whenFetched = [] {};

  std::string Name() const override { return "the device"; }
  Collection ReadCollection() override { throw Failure("there is none"); }
  std::optional<FileFacts> Look(const Track& track) override {
    const auto file = files.find(track.location);
    if (file == files.end()) return std::nullopt;
    return FileFacts{file->second.bytes.size(), file->second.time};
  }
  FetchResult Fetch(const std::string& location, const Folder& folder, const std::string& name,
                    const BytesCallback& tell) override {
    const auto file = files.find(location);
    if (file == files.end()) return NoSuchFile(location);
    std::error_code error;
    File copy = folder.MakeFile(name, error);
    if (!error) error = copy.Write(file->second.bytes);
    if (!error) error = copy.SetTime(file->second.time);
    if (error) return NotTaken(error);
    if (tell) tell(file->second.bytes.size());
    whenFetched();
    return {};
  }
  std::size_t FetchesAtOnce() override { return 3; }
  std::vector<MusicFile> MusicFiles() override { return {}; }
  bool Answers() override { return true; }
};

class ExportTo : public ScratchFolder {
 protected:
  void Add(const std::string& location, const std::string& name, std::uint64_t persistentId,
           const std::string& bytes) {
    source_.files[location].bytes = bytes;
    Track track;
    track.location = locations_.emplace_back(location).c_str();
    track.title = names_.emplace_back(name).c_str();
    track.artist = track.album = "";
    track.persistentId = persistentId;
    track.index = static_cast<std::uint32_t>(wanted_.size());
    wanted_.push_back({track, ItemsOf({track}).front(), name});
  }

  std::vector<Fate> Export(const std::string& player = "A") {
    Destination destination(out_, Destination::Use::kWrite);
    Journal journal(destination);
    Plan plan = MakePlan(player, wanted_, source_, destination, journal);
    ExportReport report(quiet_, out_, plan, ReportKind::kExport);
    Flusher flusher(destination, journal);
    ExportRun run(source_, destination, journal, plan, flusher, report);
    run.Run();
    run.WaitForDisk();
    return run.Fates();
  }

  std::vector<std::string> ExportedFiles() const {
    std::vector<std::string> names;
    for (const auto& entry : fs::recursive_directory_iterator(out_)) {
      const std::string name = entry.path().lexically_relative(out_).generic_string();
      if (entry.is_regular_file() && name != kJournal) names.push_back(name);
    }
    return names;
  }
  std::string Contents(const std::string& name) const { return ReadFile(out_ / name); }

  const fs::path out_ = folder_ / "out";
  FilesOnly source_;
  std::vector<WantedTrack> wanted_;
  std::deque<std::string> locations_;
  std::deque<std::string> names_;
  Program quiet_{.quiet = true};
};

TEST_F(ExportTo, FolderMakesEveryCopyOnceAndDamagedOnesAnew) {
  const std::string bytes = "0123456789";
  const std::vector<std::pair<std::optional<std::string>, Fate>> cases = {
      {bytes, Fate::kKept},
      {std::nullopt, Fate::kCopied},
      {"", Fate::kReplaced},
      {"01234", Fate::kReplaced},
      {std::string("01234\0\0\0\0\0", 10), Fate::kReplaced},
      {"0123456789 and more", Fate::kCopied},
      {"01234x", Fate::kCopied}};
  for (std::size_t i = 0; i < cases.size(); ++i) {
    Add("/" + std::to_string(i), "A/" + std::to_string(i) + ".mp3", i + 1, bytes);
  }
  EXPECT_THAT(Export(), testing::Each(Fate::kCopied));
  std::vector<Fate> expected;
  for (std::size_t i = 0; i < cases.size(); ++i) {
    const auto& [left, fate] = cases[i];
    const fs::path file = out_ / wanted_[i].name;
    if (!left) fs::remove(file);
    if (left && *left != bytes) WriteFile(file, *left);
    expected.push_back(fate);
  }
  EXPECT_EQ(Export(), expected);
  EXPECT_THAT(Export(), testing::Each(Fate::kKept));
  for (std::size_t i = 0; i < 5; ++i) EXPECT_EQ(Contents(wanted_[i].name), bytes) << i;
  // What was worked on is left as it is.
  EXPECT_EQ(Contents("A/5.mp3"), "0123456789 and more");
  EXPECT_EQ(Contents("A/6.mp3"), "01234x");
  EXPECT_EQ(Contents("A/5 (2).mp3"), bytes);
  EXPECT_EQ(Contents("A/6 (2).mp3"), bytes);
}

TEST_F(ExportTo, FolderMayBeWorkedOnMeanwhile) {
  Add("/1", "One.mp3", 1, "one");
  Export();
  source_.files["/1"].bytes = "another one";
  source_.whenFetched = [this] { WriteFile(out_ / "One.mp3", "edited"); };
  EXPECT_THAT(Export(), ElementsAre(Fate::kCopied));
  EXPECT_EQ(ReadFile(out_ / "One.mp3"), "edited");
  EXPECT_EQ(ReadFile(out_ / "One (2).mp3"), "another one");
}

TEST_F(ExportTo, FolderTellsBytesFromCharacters) {
  const std::vector<std::pair<std::string, std::string>> names = {{"/\xE9", "bytes"},
                                                                  {"/\xC3\xA9", "letter"}};
  for (const auto& [location, bytes] : names) Add(location, "Same.mp3", 0, bytes + " ");
  source_.files["/\xE9"].bytes.resize(source_.files["/\xC3\xA9"].bytes.size(), '!');
  Export();
  EXPECT_THAT(Export(), ElementsAre(Fate::kKept, Fate::kKept));
  EXPECT_EQ(ReadFile(out_ / "Same.mp3").substr(0, 5), "bytes");
  EXPECT_EQ(ReadFile(out_ / "Same (2).mp3").substr(0, 6), "letter");
}

TEST_F(ExportTo, FolderKeepsTracksAndPlayersApart) {
  Add("/1", "Same.mp3", 1, "one");
  Add("/2", "Same.mp3", 2, "two");
  Add("/3", "Same.mp3", 0, "three");
  Export();
  // Another player has other music by the same numbers.
  for (const char* location : {"/1", "/2", "/3"}) source_.files[location].bytes += " of B";
  Export("B");
  // The first has lost a track, has another of its name, and one that changed.
  wanted_.erase(wanted_.begin());
  for (const char* location : {"/2", "/3"}) source_.files[location].bytes.resize(3);
  source_.files["/3"].bytes = "changed";
  Add("/4", "Same.mp3", 4, "four");
  EXPECT_THAT(Export("A"), ElementsAre(Fate::kKept, Fate::kReplaced, Fate::kCopied));
  EXPECT_THAT(ExportedFiles(), testing::SizeIs(7));
  EXPECT_EQ(Contents("Same.mp3"), "one");
  EXPECT_EQ(Contents("Same (2).mp3"), "two");
  EXPECT_EQ(Contents("Same (3).mp3"), "changed");
  EXPECT_EQ(Contents("Same (6).mp3"), "three of B");
  EXPECT_EQ(Contents("Same (7).mp3"), "four");
}

TEST_F(ExportTo, FolderRenamesCopiesOfRetaggedTracks) {
  Add("/1", "A/One.mp3", 1, "one");
  Add("/2", "A/Two.mp3", 2, "two");
  Export();
  std::swap(wanted_[0].name, wanted_[1].name);
  Export();
  EXPECT_THAT(Export(), ElementsAre(Fate::kKept, Fate::kKept));
  EXPECT_THAT(ExportedFiles(), testing::SizeIs(2));
  wanted_[0].name = "B/Third.mp3";
  wanted_[1].name = "B/Fourth.mp3";
  source_.files["/2"].bytes = "two, and more";
  EXPECT_THAT(Export(), ElementsAre(Fate::kMoved, Fate::kReplaced));
  EXPECT_THAT(ExportedFiles(), UnorderedElementsAre("B/Third.mp3", "B/Fourth.mp3"));
  EXPECT_EQ(Contents("B/Third.mp3"), "one");
  EXPECT_EQ(Contents("B/Fourth.mp3"), "two, and more");
  EXPECT_FALSE(fs::exists(out_ / "A"));
  // Only the letters' case: the name stays.
  wanted_[0].name = "b/THIRD.mp3";
  EXPECT_THAT(Export(), ElementsAre(Fate::kKept, Fate::kKept));
}

TEST_F(ExportTo, FolderBelievesNoJournalBlindly) {
  Add("/1", "One.mp3", 1, "one");
  Add("/2", "Two.mp3", 2, "two");
  Export();
  const std::string journal = Contents(kJournal);
  WriteFile(folder_ / "outside.mp3", "one");
  const auto renamed = [&](const std::string& name) {
    std::string forged = journal;
    const std::string old = "\"name\":\"One.mp3\"";
    return forged.replace(forged.find(old), old.size(), "\"name\":\"" + name + "\"");
  };
  for (const std::string& forged :
       {renamed("../outside.mp3"), renamed("/outside.mp3"), renamed("A//B"), renamed(""),
        journal.substr(0, journal.find("Two.mp3")),
        std::string("\0\xFF{]\n[1]\n{\"item\":1}\n", 20), std::string()}) {
    WriteFile(out_ / kJournal, forged);
    source_.files["/1"].bytes += "!";
    Export();
    EXPECT_THAT(Export(), ElementsAre(Fate::kKept, Fate::kKept)) << forged;
    EXPECT_EQ(ReadFile(folder_ / "outside.mp3"), "one");
  }
}

TEST_F(ExportTo, FolderIsHeldAndLeftClean) {
  fs::create_directories(out_ / ".quaylink-parts-1");
  WriteFile(out_ / ".quaylink-parts-1" / "part-1", "left by a killed run");
  {
    Destination destination(out_, Destination::Use::kWrite);
    EXPECT_THROW(Export(), Failure);
  }
  EXPECT_THAT(ExportedFiles(), IsEmpty());
  WriteFile(folder_ / "file", "");
  for (const char* bad : {"file", "file/below"}) {
    EXPECT_THROW(Destination(folder_ / bad, Destination::Use::kWrite), Failure) << bad;
  }
  // What was made for nothing goes again.
  { Destination destination(folder_ / "a" / "b" / "c", Destination::Use::kWrite); }
  EXPECT_FALSE(fs::exists(folder_ / "a"));
}

TEST_F(ExportTo, FolderIsVerifiedByteForByte) {
  Add("/1", "One.mp3", 1, "one");
  Add("/2", "Two.mp3", 2, "two");
  Add("/3", "Three.mp3", 3, "three");
  Export();
  WriteFile(out_ / "Two.mp3", "too");
  fs::remove(out_ / "Three.mp3");
  Destination destination(out_, Destination::Use::kWrite);
  const Journal journal(destination);
  const Plan plan = MakePlan("A", wanted_, source_, destination, journal);
  ExportReport report(quiet_, out_, plan, ReportKind::kVerification);
  EXPECT_EQ(Verify(source_, destination, journal, plan, report), Stop::kNone);
  EXPECT_EQ(report.Count(Fate::kKept), 1u);
  EXPECT_EQ(report.Count(Fate::kFailed), 2u);
}

TEST_F(ExportTo, FolderMayHoldWhatLooksLikeACopy) {
  const std::string whole = std::string(300000, 'a') + "end";
  const std::vector<std::pair<std::string, Likeness>> cases = {
      {whole, Likeness::kSame},
      {"", Likeness::kCut},
      {whole.substr(0, 262144), Likeness::kCut},
      {whole.substr(0, 262144) + std::string(37859, '\0'), Likeness::kCut},
      {whole.substr(0, 262144) + std::string(37858, '\0') + 'x', Likeness::kOther},
      {whole + 'x', Likeness::kOther},
      {"b" + whole.substr(1), Likeness::kOther}};
  WriteFile(folder_ / "whole", whole);
  for (const auto& [bytes, likeness] : cases) {
    WriteFile(folder_ / "copy", bytes);
    std::error_code error;
    const Folder opened = Folder::Open(folder_, error);
    File copy = opened.OpenFile("copy", error);
    File other = opened.OpenFile("whole", error);
    EXPECT_EQ(Compare(copy, other), likeness) << bytes.size();
  }
}

TEST(ProgressLine, FitsWhateverTheWidth) {
  for (std::size_t width = 4; width <= 120; ++width) {
    for (const std::uint64_t done : {0u, 1'234'567'890u, 2'000'000'000u}) {
      const std::string line = ProgressLine(done, 2'000'000'000, 12.5, "岬の灯へ向かう", width);
      EXPECT_LE(DisplayWidth(line), width) << line;
    }
  }
  EXPECT_EQ(ProgressLine(0, 0, 0, "", 4), "100%");
  EXPECT_EQ(ProgressLine(500'000'000, 2'000'000'000, 10, "Song", 20), " 25%  0:30 left");
  EXPECT_EQ(ProgressLine(500'000'000, 2'000'000'000, 10, "Song", 100),
            "[#####...............] 25%  0:30 left  50.0 MB/s  500.0 MB of 2.0 GB  Song");
}

}  // namespace
}  // namespace quaylink::test
