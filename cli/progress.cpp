#include "cli/progress.h"

#include <chrono>
#include <utility>

#include "cli/display_width.h"
#include "cli/system.h"

namespace quaylink::cli {
namespace {

// Fills the line, so that nothing of a longer one before it is left.
void Redraw(const std::string& line) {
  Write(Stream::kError, '\r' + Fit(line, TerminalWidth(Stream::kError) - 1));
}

void Erase() {
  Write(Stream::kError, '\r' + Fit("", TerminalWidth(Stream::kError) - 1) + '\r');
}

}  // namespace

Spinner::Spinner(std::string string, bool shown) : string_(std::move(string)) {
  if (shown) thread_ = std::thread([this] { Turn(); });
}

Spinner::~Spinner() {
  if (!thread_.joinable()) return;
  {
    const std::lock_guard lock(mutex_);
    isEnding_ = true;
  }
  ended_.notify_one();
  thread_.join();
  Erase();
}

void Spinner::Turn() {
  using std::chrono::steady_clock;
  constexpr std::string_view kFrames = "|/-\\";
  const auto begin = steady_clock::now();
  std::unique_lock lock(mutex_);
  for (std::size_t frame = 0; !isEnding_; ++frame) {
    const auto gone = std::chrono::duration_cast<std::chrono::seconds>(steady_clock::now() - begin);
    Redraw(std::string(1, kFrames[frame % kFrames.size()]) + ' ' + string_ + "  " +
           std::to_string(gone.count()) + " s");
    ended_.wait_for(lock, std::chrono::milliseconds(125));
  }
}

void ProgressBar::Show(std::size_t done, std::string_view string) {
  if (!shown_) return;
  constexpr std::size_t kCells = 24;
  const std::size_t filled = total_ == 0 ? kCells : done * kCells / total_;
  std::string line = '[' + std::string(filled, '#') + std::string(kCells - filled, '.') + "] ";
  line += std::to_string(done) + '/' + std::to_string(total_) + "  ";
  line += string;
  Redraw(line);
  drawn_ = true;
}

void ProgressBar::Clear() {
  if (drawn_) Erase();
  drawn_ = false;
}

}  // namespace quaylink::cli
