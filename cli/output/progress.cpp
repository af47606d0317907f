#include "cli/output/progress.h"

#include <algorithm>
#include <utility>

#include "cli/system/system.h"
#include "cli/text/display_width.h"
#include "cli/text/formats.h"

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

bool Throttle::Passes() {
  constexpr auto kGap = std::chrono::milliseconds(100);
  const auto now = std::chrono::steady_clock::now();
  if (now < next_) return false;
  next_ = now + kGap;
  return true;
}

void ProgressBar::Show(std::uint64_t done, std::string_view string) {
  if (!shown_ || !throttle_.Passes()) return;
  const std::chrono::duration<double> gone = std::chrono::steady_clock::now() - begin_;
  Redraw(ProgressLine(done, total_, gone.count(), string, TerminalWidth(Stream::kError) - 1));
  drawn_ = true;
}

std::string ProgressLine(std::uint64_t done, std::uint64_t total, double seconds,
                         std::string_view string, std::size_t width) {
  // What there is no room for is left out, the least wanted first.
  const double share =
      total == 0 ? 1 : std::min(1.0, static_cast<double>(done) / static_cast<double>(total));
  std::string line = std::to_string(static_cast<int>(share * 100)) + '%';
  if (line.size() < 4) line.insert(0, 4 - line.size(), ' ');
  const auto append = [&line, width](const std::string& more) {
    if (DisplayWidth(line) + DisplayWidth(more) <= width) line += more;
  };
  if (seconds >= 1 && done > 0) {
    const double speed = static_cast<double>(done) / seconds;
    const double left = done < total ? static_cast<double>(total - done) / speed : 0;
    append("  " + LengthString(static_cast<std::uint64_t>(left * 1000)) + " left");
    append("  " + ShownSize(static_cast<std::uint64_t>(speed)) + "/s");
  }
  append("  " + ShownSize(done) + " of " + ShownSize(total));
  constexpr std::size_t kCells = 20;
  constexpr std::size_t kRoomForString = 12;
  if (DisplayWidth(line) + kCells + kRoomForString <= width) {
    const auto filled = static_cast<std::size_t>(share * kCells);
    line = '[' + std::string(filled, '#') + std::string(kCells - filled, '.') + ']' + line;
  }
  if (const std::size_t used = DisplayWidth(line) + 2; used + kRoomForString <= width) {
    line += "  " + Fit(string, std::min(DisplayWidth(string), width - used));
  }
  return line;
}

void ProgressBar::Clear() {
  if (drawn_) Erase();
  drawn_ = false;
}

}  // namespace quaylink::cli
