#include "stand_in_phone/phone_script.h"

#include <climits>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <sstream>
#include <stdexcept>

namespace quaylink::stand_in {
namespace {

// The rest of a line, which may hold blanks.
std::string Rest(std::istream& line) {
  std::string rest;
  std::getline(line >> std::ws, rest);
  return rest;
}

void SetAnnouncement(PhoneSetUp& setUp, const std::string& when) {
  if (when == "at-once") {
    setUp.announcement = Announcement::kBeforeSubscribeReturns;
  } else if (when == "never") {
    setUp.announcement = Announcement::kNever;
  } else {
    setUp.announcement = Announcement::kFromAnotherThread;
    setUp.announcementDelay = std::chrono::milliseconds(std::stoi(when));
  }
}

void SetFailure(PhoneSetUp& setUp, std::istream& line, unsigned count) {
  std::string name;
  unsigned first = 1;
  line >> name;
  if (!line.eof()) line >> first;
  setUp.failures[name] = {first - 1, count};
}

void Follow(PhoneSetUp& setUp, const std::string& instruction, std::istream& line,
            const std::filesystem::path& folder) {
  if (instruction == "folder") {
    setUp.files = std::make_shared<FolderFiles>(folder / Rest(line));
  } else if (instruction == "identifier") {
    const std::string identifier = Rest(line);
    setUp.identifier = identifier == "none" ? std::nullopt : std::optional(identifier);
  } else if (instruction == "announce") {
    SetAnnouncement(setUp, Rest(line));
  } else if (instruction == "second-phone") {
    setUp.secondPhone = true;
  } else if (instruction == "unpaired") {
    setUp.paired = false;
  } else if (instruction == "pairing-records") {
    setUp.pairingRecords = folder / Rest(line);
  } else if (instruction == "fail") {
    SetFailure(setUp, line, 1);
  } else if (instruction == "fail-from") {
    SetFailure(setUp, line, UINT_MAX);
  } else if (instruction == "garbage") {
    setUp.garbage = true;
  } else if (instruction == "read-at-most") {
    line >> setUp.longestRead;
  } else if (instruction == "unplug-after" || instruction == "replug-after") {
    line >> setUp.unplugAfter.emplace();
    setUp.comesBack = instruction == "replug-after";
  } else if (instruction == "size") {
    std::string size;
    line >> size;
    setUp.information[Rest(line)] = {{"st_size", size}, {"st_ifmt", "S_IFREG"}};
  } else if (instruction == "log") {
    setUp.logFile = folder / Rest(line);
  } else {
    throw std::runtime_error("not an instruction: " + instruction);
  }
}

}  // namespace

PhoneSetUp ReadScript(std::istream& script, const std::filesystem::path& folder) {
  PhoneSetUp setUp;
  for (std::string words; std::getline(script, words);) {
    std::istringstream line(words);
    std::string instruction;
    if (!(line >> instruction) || instruction.starts_with('#')) continue;
    Follow(setUp, instruction, line, folder);
    if (line.fail()) throw std::runtime_error("an instruction lacks something: " + words);
  }
  return setUp;
}

PhoneSetUp SetUpFromEnvironment() {
  const char* name = std::getenv("STAND_IN_PHONE");
  if (!name) return {};
  try {
    std::ifstream script(name);
    if (!script) throw std::runtime_error("cannot be opened");
    return ReadScript(script, std::filesystem::path(name).parent_path());
  } catch (const std::exception& error) {
    std::cerr << "stand-in phone: " << name << ": " << error.what() << '\n';
    std::exit(EXIT_FAILURE);
  }
}

}  // namespace quaylink::stand_in
