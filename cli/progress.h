// What a person sees while the program works: on a terminal only.
#pragma once

#include <condition_variable>
#include <cstddef>
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

// How far a sequence of steps has come, in one line of the error stream.
class ProgressBar {
 public:
  ProgressBar(std::size_t total, bool shown) : total_(total), shown_(shown) {}
  ~ProgressBar() { Clear(); }
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;

  // Shows that so many steps are done and what the next one works on.
  void Show(std::size_t done, std::string_view string);
  // Makes room for other lines.
  void Clear();

 private:
  std::size_t total_;
  bool shown_;
  bool drawn_ = false;
};

}  // namespace quaylink::cli
