#include <fcntl.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>

#include "cli/system/system.h"
#include "cli/text/utf8.h"

namespace quaylink::cli {

const std::string_view kWholeManual = "'man quaylink'";
const std::string_view kPhoneAdvice =
    "A phone's files are reached on Windows only, with its vendor's device software.";
const std::string_view kCsvBeginning;

namespace {

// What the signal handler reads. The path is written while no file is set.
std::array<char, 4096> removedPath;
volatile std::sig_atomic_t removesPath = 0;
volatile std::sig_atomic_t defersInterrupts = 0;
// Set by a thread, too.
std::atomic<bool> interruptRequested = false;
static_assert(std::atomic<bool>::is_always_lock_free);
std::string interruptNotice;  // set before interrupts are deferred

extern "C" void OnInterrupt(int signalNumber) {
  if (defersInterrupts != 0 && !interruptRequested.exchange(true)) {
    const int codeBefore = errno;
    [[maybe_unused]] const ssize_t ignored =
        write(STDERR_FILENO, interruptNotice.data(), interruptNotice.size());
    errno = codeBefore;
    return;
  }
  if (removesPath != 0) unlink(removedPath.data());
  // Ended by the signal itself, so that a calling shell sees it.
  std::signal(signalNumber, SIG_DFL);
  std::raise(signalNumber);
}

int DescriptorOf(Stream stream) {
  return stream == Stream::kOutput ? STDOUT_FILENO : STDERR_FILENO;
}

std::error_code LastError() {
  return {errno, std::generic_category()};
}

std::error_code TryToGrow(int descriptor, std::size_t moreBytes) {
  const off_t size = lseek(descriptor, 0, SEEK_END);
  if (size < 0) return LastError();
  const std::string more(moreBytes, '\0');
  const ssize_t written = write(descriptor, more.data(), more.size());
  const std::error_code refused = written < 0 ? LastError() : std::error_code();
  if (ftruncate(descriptor, size) != 0) return LastError();
  if (refused || static_cast<std::size_t>(written) == more.size()) return refused;
  return std::make_error_code(std::errc::no_space_on_device);
}

}  // namespace

std::vector<std::string> Arguments(int argc, char** argv) {
  return {argv + 1, argv + argc};
}

void PrepareStreams() {}

bool IsTerminal(Stream stream) {
  return isatty(DescriptorOf(stream)) == 1;
}

bool IsDumbTerminal() {
  const char* terminal = std::getenv("TERM");
  return !terminal || std::strcmp(terminal, "dumb") == 0;
}

bool ShowsColours(Stream stream) {
  return IsTerminal(stream) && !std::getenv("NO_COLOR") && !IsDumbTerminal();
}

std::size_t TerminalWidth(Stream stream) {
  winsize size = {};
  const bool known = ioctl(DescriptorOf(stream), TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
  return known ? size.ws_col : 80;
}

bool Write(Stream stream, std::string_view string) {
  std::FILE* file = stream == Stream::kOutput ? stdout : stderr;
  return std::fwrite(string.data(), 1, string.size(), file) == string.size() &&
         std::fflush(file) == 0;
}

std::string FromLibrary(std::string_view string) {
  return MakeValid(string);
}

std::optional<std::string> ToLibrary(std::string_view string) {
  return std::string(string);
}

std::optional<std::string> LocalPathForLibrary(const std::filesystem::path& path) {
  // A path that began with a letter and a colon, or a backslash, would mean a player's drive.
  std::error_code error;
  const std::filesystem::path absolute = std::filesystem::absolute(path, error);
  return (error ? path : absolute).native();
}

NameLimits LimitsBelow(const std::filesystem::path& folder) {
  // A path as the system takes it, without the zero at its end.
  constexpr std::size_t kLongestPath = 4095;
  std::error_code error;
  const std::filesystem::path absolute = std::filesystem::absolute(folder, error);
  const std::size_t above = (error ? folder : absolute).native().size() + 1;
  return {NameLimits::Measure::kBytes, 255, kLongestPath - std::min(kLongestPath, above)};
}

void MakeOrdinary(const std::filesystem::path& path, std::filesystem::perms permissions) {
  std::error_code ignored;
  std::filesystem::permissions(path, permissions, ignored);
}

std::error_code TryToGrowAndFlush(const std::filesystem::path& path, std::size_t moreBytes) {
  const int descriptor = open(path.c_str(), O_WRONLY | O_CLOEXEC);
  if (descriptor < 0) return LastError();
  std::error_code problem;
  if (moreBytes > 0) problem = TryToGrow(descriptor, moreBytes);
  if (!problem && fsync(descriptor) != 0) problem = LastError();
  if (close(descriptor) != 0 && !problem) problem = LastError();
  return problem;
}

HeldFile CreateHeldFile(const std::filesystem::path& folder, std::string_view prefix,
                        std::string_view suffix) {
  const std::string name = (folder / prefix).native() + "XXXXXX" + std::string(suffix);
  while (true) {
    std::string path = name;
    const int descriptor = mkostemps(path.data(), static_cast<int>(suffix.size()), O_CLOEXEC);
    if (descriptor < 0) throw std::filesystem::filesystem_error("held file", name, LastError());
    // A file system without locks lets nobody else have it, either.
    const bool held = flock(descriptor, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
    struct stat status = {};
    // Before the lock was held, another run may have taken the file for a forsaken one.
    if (held && fstat(descriptor, &status) == 0 && status.st_nlink > 0) return {path, descriptor};
    close(descriptor);
  }
}

void RemoveHeldFile(const HeldFile& file) {
  unlink(file.path.c_str());
  close(static_cast<int>(file.lock));
}

void RemoveUnlessHeld(const std::filesystem::path& path) {
  const int descriptor = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC);
  if (descriptor < 0) return;
  struct stat status = {};
  const bool own =
      fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) && status.st_uid == geteuid();
  if (own && flock(descriptor, LOCK_EX | LOCK_NB) == 0) unlink(path.c_str());
  close(descriptor);
}

std::string ProblemWithEnvironment() {
  // The library reads it in the same way.
  const char* machine = secure_getenv("QUAYLINK_MACHINE");
  std::error_code error;
  if (!machine || !*machine || std::filesystem::is_directory(machine, error)) return {};
  return "QUAYLINK_MACHINE names no folder: " + MakePrintable(machine);
}

void HandleInterrupts() {
  struct sigaction action = {};
  action.sa_handler = OnInterrupt;
  // Reads and writes of a copy under way go on.
  action.sa_flags = SA_RESTART;
  for (const int signalNumber : {SIGINT, SIGTERM, SIGHUP}) {
    struct sigaction before = {};
    sigaction(signalNumber, nullptr, &before);
    // A signal that the caller has the program ignore (nohup, background jobs) stays ignored.
    if (before.sa_handler != SIG_IGN) sigaction(signalNumber, &action, nullptr);
  }
  // A file-size limit is met as an error, not as the end of the program.
  std::signal(SIGXFSZ, SIG_IGN);
}

void SetRemovedOnInterrupt(const std::filesystem::path& path) {
  removesPath = 0;
  const std::string& name = path.native();
  if (name.empty() || name.size() >= removedPath.size()) return;
  *std::copy(name.begin(), name.end(), removedPath.begin()) = '\0';
  removesPath = 1;
}

void DeferInterrupts(std::string_view notice) {
  interruptNotice = notice;
  // The "^C" that a terminal shows may stand in the line of the progress bar.
  if (!notice.empty() && IsTerminal(Stream::kError)) interruptNotice.insert(0, 1, '\n');
  defersInterrupts = 1;
}

bool InterruptRequested() {
  return interruptRequested;
}

void InterruptWhenInputEnds() {
  struct stat status = {};
  if (fstat(STDIN_FILENO, &status) != 0) return;
  if (!S_ISFIFO(status.st_mode) && !S_ISSOCK(status.st_mode)) return;
  std::thread([] {
    std::array<char, 256> ignored;
    while (read(STDIN_FILENO, ignored.data(), ignored.size()) > 0) {
    }
    interruptRequested = true;
  }).detach();
}

}  // namespace quaylink::cli
