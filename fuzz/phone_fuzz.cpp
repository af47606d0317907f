// Lists and copies from a phone whose names, keys, values and failures are made up: any bytes but
// those that would end a string.

#include <fuzzer/FuzzedDataProvider.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <set>
#include <sstream>

#include "mobile/mobile_device_bridge.h"
#include "platform/portable/machine.h"
#include "require.h"
#include "stand_in_phone/in_process.h"

namespace quaylink::fuzz {
namespace {

using stand_in::InformationPairs;

constexpr std::size_t kLongestPath = 255;

// What the phone says is there. A folder's path ends in "/"; the phone may name an entry anything,
// and give several entries of a folder one name.
class MadeUpFiles : public stand_in::PhoneFiles {
 public:
  explicit MadeUpFiles(FuzzedDataProvider& input) {
    std::vector<std::string> folders = {"/"};
    while (input.remaining_bytes() > 0 && names_.size() < 200) {
      const std::string& folder = input.PickValueInArray({folders.front(), folders.back()});
      const std::string name = String(input, 300);
      const std::string path = folder + name;
      names_[folder].push_back(name);
      information[path] = Pairs(input);
      if (input.ConsumeBool()) folders.push_back(path + "/");
      contents_[path] = input.ConsumeRandomLengthString(40);
      names_.try_emplace(folders.back());
    }
    names_.try_emplace("/");
  }

  std::optional<stand_in::PhoneEntry> Find(std::string_view path) const override {
    if (names_.contains(path)) return stand_in::PhoneEntry{.isFolder = true};
    const auto file = contents_.find(path);
    if (file == contents_.end()) return std::nullopt;
    return stand_in::PhoneEntry{.isFolder = false, .size = file->second.size()};
  }
  std::vector<std::string> Names(std::string_view path) const override {
    return names_.find(path)->second;
  }
  std::unique_ptr<std::istream> Open(std::string_view path) const override {
    return std::make_unique<std::istringstream>(contents_.find(path)->second);
  }

  // A string as a library hands it out, without a NUL.
  static std::string String(FuzzedDataProvider& input, std::size_t longest) {
    const std::string string = input.ConsumeRandomLengthString(longest);
    return string.substr(0, string.find('\0'));
  }

  std::map<std::string, InformationPairs, std::less<>> information;

 private:
  static InformationPairs Pairs(FuzzedDataProvider& input) {
    InformationPairs pairs;
    while (pairs.size() < 5 && input.ConsumeBool()) {
      const std::string key = input.PickValueInArray<std::string>(
          {"st_ifmt", "st_size", "st_mtime", String(input, 20)});
      std::optional<std::string> value =
          input.PickValueInArray<std::string>({"S_IFDIR", "S_IFREG", String(input, 30),
                                               std::to_string(input.ConsumeIntegral<short>())});
      if (input.ConsumeIntegral<std::uint8_t>() == 0) value.reset();
      pairs.emplace_back(key, std::move(value));
    }
    return pairs;
  }

  std::map<std::string, std::vector<std::string>, std::less<>> names_;  // by folder
  std::map<std::string, std::string, std::less<>> contents_;            // by file
};

// Whether the phone shows the entry in the given light.
bool IsShownAs(const InformationPairs& pairs, bool folder) {
  return std::ranges::any_of(pairs, [folder](const auto& pair) {
    return pair.first == "st_ifmt" && (pair.second == "S_IFDIR") == folder;
  });
}

// The local file of every copy.
const std::string& LocalFilePath() {
  static const std::string path = "/proc/self/fd/" + std::to_string(::memfd_create("copy", 0));
  return path;
}

std::string LocalFileContents() {
  std::string contents;
  if (std::FILE* file = std::fopen(LocalFilePath().c_str(), "rb")) {
    char bytes[4096];
    while (const std::size_t got = std::fread(bytes, 1, sizeof bytes, file)) {
      contents.append(bytes, got);
    }
    std::fclose(file);
  }
  return contents;
}

void Copy(MobileDeviceBridge& bridge, const MadeUpFiles& files, const std::string& path) {
  const bool copied = bridge.CopyDeviceFile(LocalFilePath(), path) == 1;
  if (!copied) return;
  std::ostringstream whole;
  whole << files.Open(path)->rdbuf();
  const std::string contents = LocalFileContents();
  Require(!contents.empty() && whole.str().starts_with(contents), "a copy is what the phone holds");
}

void ListAndCopy(MobileDeviceBridge& bridge, const MadeUpFiles& files) {
  std::vector<std::string> folders;
  bridge.ListFolders("/", folders);
  Require(!folders.empty() && folders.front() == "/", "the root comes first");
  for (std::size_t i = 1; i < folders.size(); ++i) {
    const std::string& folder = folders[i];
    Require(folder.size() <= kLongestPath && folder.back() == '/', "a folder's path fits");
    Require(IsShownAs(files.information.at(folder.substr(0, folder.size() - 1)), true),
            "a folder is what the phone shows as one");
  }
  std::vector<std::string> found;
  bridge.ListFiles(folders, found);
  for (const std::string& file : found) {
    Require(file.size() <= kLongestPath, "a file's path fits");
    Require(IsShownAs(files.information.at(file), false),
            "a file is what the phone shows as no folder");
    if (files.Find(file)->isFolder) continue;
    Copy(bridge, files, file);
  }
}

void UsePhone(FuzzedDataProvider& input) {
  stand_in::PhoneSetUp setUp;
  const bool fails = input.ConsumeBool();
  const auto* failing = input.PickValueInArray(
      {"AFCDirectoryOpen", "AFCDirectoryRead", "AFCFileInfoOpen", "AFCKeyValueRead",
       "AFCFileRefOpen", "AFCFileRefRead", "AFCDirectoryClose", "AFCKeyValueClose"});
  setUp.garbage = input.ConsumeBool();
  if (input.ConsumeBool()) setUp.longestRead = input.ConsumeIntegralInRange<std::uint32_t>(1, 16);
  if (input.ConsumeBool()) setUp.unplugAfter = 20u + input.ConsumeIntegral<std::uint8_t>();
  if (fails) setUp.failures[failing] = {.skip = input.ConsumeIntegral<std::uint8_t>()};
  const auto files = std::make_shared<MadeUpFiles>(input);
  setUp.files = files;
  setUp.information = files->information;
  stand_in::StandInPhone phone(std::move(setUp));
  stand_in::SetCurrentPhone(&phone);

  portable::CurrentMachine().readDrives = nullptr;  // no look at the computer's own drives
  MobileDeviceBridge bridge(stand_in::InProcessLibraries());
  Require(bridge.Connect(true) == 1, "the phone can be connected");
  ListAndCopy(bridge, *files);
  bridge.Disconnect();
  for (const std::string& complaint : phone.Complaints()) Require(false, complaint.c_str());
}

}  // namespace
}  // namespace quaylink::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider input(data, size);
  quaylink::fuzz::UsePhone(input);
  return 0;
}
