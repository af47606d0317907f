// What a detection takes on a computer with 25 USB devices and 60 mounts, one of the devices a
// player: when its drive is found, and when it is not, the median of many detections. With a number
// it only makes so many that find nothing, for bench/detection-system-calls to count.
#include <quaylink/quaylink.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "platform/portable/machine.h"

namespace {

namespace fs = std::filesystem;

constexpr int kDevices = 25;
constexpr int kMounts = 60;
constexpr int kRemovableMounts = 4;
constexpr int kRepetitions = 201;

// What the kernel would show of that computer, in a folder for as long as the program runs.
class ComputerFolder {
 public:
  ComputerFolder()
      : path_(fs::temp_directory_path() / ("quaylink-bench-" + std::to_string(getpid()))) {
    for (int i = 0; i < kDevices; ++i) {
      const fs::path device = "sys/bus/usb/devices/1-" + std::to_string(i);
      Write(device / "idVendor", i == 7 ? "05ac" : "1d6b");
      Write(device / "idProduct", "1261");
      Write(device / "serial", "000A27001020304" + std::to_string(i));
    }
    std::string table;
    for (int i = 0; i < kMounts; ++i) {
      const bool isRemovable = i >= kMounts - kRemovableMounts;
      const std::string number = (isRemovable ? "8:" : "0:") + std::to_string(i);
      if (isRemovable) Write("sys/dev/block/" + number + "/removable", "1");
      const fs::path folder = path_ / "mnt" / std::to_string(i);
      fs::create_directories(folder);
      table += "22 21 " + number + " / " + folder.string() + " rw - vfat /dev/x rw\n";
    }
    Write("mountinfo", table);
  }
  ComputerFolder(const ComputerFolder&) = delete;
  ComputerFolder& operator=(const ComputerFolder&) = delete;
  ~ComputerFolder() { fs::remove_all(path_); }

  quaylink::portable::Machine Read() const {
    return quaylink::portable::ReadComputer(path_ / "sys", path_ / "mountinfo");
  }
  void ShowThePlayer() const {
    fs::create_directories(path_ / "mnt" / std::to_string(kMounts - 1) / "iPod_Control/Music");
  }

 private:
  void Write(const fs::path& file, const std::string& contents) {
    fs::create_directories((path_ / file).parent_path());
    std::ofstream(path_ / file) << contents << "\n";
  }

  fs::path path_;
};

void Print(const char* what, bool isFound) {
  std::vector<double> times;
  for (int i = 0; i < kRepetitions; ++i) {
    const auto begin = std::chrono::steady_clock::now();
    if ((IsIPodConnected() != 0) != isFound) std::abort();
    const std::chrono::duration<double, std::micro> time = std::chrono::steady_clock::now() - begin;
    times.push_back(time.count());
  }
  std::ranges::nth_element(times, times.begin() + kRepetitions / 2);
  std::printf("%s %.0f us\n", what, times[kRepetitions / 2]);
}

}  // namespace

int main(int argc, char** argv) {
  const ComputerFolder folder;
  quaylink::portable::SetCurrentMachine(folder.Read());
  InitializeIPod();
  if (argc == 2) {
    for (int i = std::atoi(argv[1]); i > 0; --i) IsIPodConnected();
  } else {
    Print("nothing found", false);
    folder.ShowThePlayer();
    Print("player found", true);
  }
  TerminateIPod();
  return 0;
}
