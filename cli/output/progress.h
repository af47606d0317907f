// What a person sees while the program works: on a terminal only.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

namespace quaylink::cli {

// Turns on the error stream, with the seconds gone, while one long call is under way.
class Spinner {
 public:
  Spinner(std::string string, bool shown);
  ~Spinner();
  Spinner(const Spinner&) = delete;
  Spinner& operator=(const Spinner&) = delete;

 private:
  void Turn();

  std::string string_;
  std::mutex mutex_;
  std::condition_variable ended_;
  bool isEnding_ = false;
  std::thread thread_;
};

// Lets something through a few times a second only.
class Throttle {
 public:
  bool Passes();

 private:
  std::chrono::steady_clock::time_point next_ = {};
};

// How many of so many bytes have come, how fast, and how long the others will take, in one line of
// the error stream.
class ProgressBar {
 public:
  ProgressBar(std::uint64_t total, bool shown) : total_(total), shown_(shown) {}
  ~ProgressBar() { Clear(); }
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;

  // Shows that so many bytes are done and what the next ones belong to.
  void Show(std::uint64_t done, std::string_view string);
  // Makes room for other lines.
  void Clear();

 private:
  std::uint64_t total_;
  bool shown_;
  bool drawn_ = false;
  Throttle throttle_;
  std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
};

// The line that a bar shows after so many seconds, at most so many columns wide.
std::string ProgressLine(std::uint64_t done, std::uint64_t total, double seconds,
                         std::string_view string, std::size_t width);

}  // namespace quaylink::cli
