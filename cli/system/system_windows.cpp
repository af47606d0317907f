#include <windows.h>
// The order of these two matters.
#include <fcntl.h>
#include <io.h>
#include <shellapi.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <thread>

#include "cli/system/system.h"
#include "cli/system/wide_strings.h"

namespace quaylink::cli {

const std::string_view kWholeManual = "manual.html beside the folder bin";
const std::string_view kPhoneAdvice =
    "Unlock it and let it trust this computer; its vendor's device software must be installed.";
const std::string_view kCsvBeginning = "\xEF\xBB\xBF";

namespace {

// Read by the thread on which the system reports Ctrl-C. The path is written while no file is set.
std::wstring removedPath;
std::atomic<bool> removesPath = false;
std::atomic<bool> defersInterrupts = false;
std::atomic<bool> interruptRequested = false;
std::string interruptNotice;  // set before interrupts are deferred

constexpr UINT kInterruptedStatus = 130;

BOOL WINAPI OnInterrupt(DWORD event) {
  if (event == CTRL_C_EVENT && defersInterrupts && !interruptRequested.exchange(true)) {
    Write(Stream::kError, interruptNotice);
    return TRUE;
  }
  // Fails while the library has the file open.
  if (removesPath) DeleteFileW(removedPath.c_str());
  ExitProcess(kInterruptedStatus);
}

HANDLE HandleOf(Stream stream) {
  return GetStdHandle(stream == Stream::kOutput ? STD_OUTPUT_HANDLE : STD_ERROR_HANDLE);
}

std::error_code LastError() {
  return {static_cast<int>(GetLastError()), std::system_category()};
}

std::filesystem::path LockOf(const std::filesystem::path& heldFile) {
  std::filesystem::path lock = heldFile;
  return lock += ".lock";
}

std::error_code TryToGrow(HANDLE file, std::size_t moreBytes) {
  LARGE_INTEGER size = {};
  if (SetFilePointerEx(file, {}, &size, FILE_END) == 0) return LastError();
  const std::string more(moreBytes, '\0');
  DWORD written = 0;
  const BOOL accepted =
      WriteFile(file, more.data(), static_cast<DWORD>(more.size()), &written, nullptr);
  const std::error_code refused = accepted != 0 ? std::error_code() : LastError();
  if (SetFilePointerEx(file, size, nullptr, FILE_BEGIN) == 0 || SetEndOfFile(file) == 0) {
    return LastError();
  }
  if (refused || written == more.size()) return refused;
  return std::make_error_code(std::errc::no_space_on_device);
}

}  // namespace

std::vector<std::string> Arguments(int, char**) {
  int count = 0;
  wchar_t** wide = CommandLineToArgvW(GetCommandLineW(), &count);
  std::vector<std::string> arguments;
  for (int i = 1; i < count; ++i) arguments.push_back(ToUtf8(wide[i]));
  LocalFree(wide);
  // What every command of the system itself understands.
  std::replace(arguments.begin(), arguments.end(), std::string("/?"), std::string("--help"));
  return arguments;
}

void PrepareStreams() {
  // In redirected output too, line ends stay as the program writes them.
  _setmode(_fileno(stdin), _O_BINARY);
  _setmode(_fileno(stdout), _O_BINARY);
  _setmode(_fileno(stderr), _O_BINARY);
}

bool IsTerminal(Stream stream) {
  DWORD mode = 0;
  return GetConsoleMode(HandleOf(stream), &mode) != 0;
}

bool IsDumbTerminal() {
  return false;
}

bool ShowsColours(Stream stream) {
  constexpr DWORD kEscapeSequences = 0x0004;
  DWORD mode = 0;
  return !std::getenv("NO_COLOR") && GetConsoleMode(HandleOf(stream), &mode) != 0 &&
         SetConsoleMode(HandleOf(stream), mode | kEscapeSequences) != 0;
}

std::size_t TerminalWidth(Stream stream) {
  CONSOLE_SCREEN_BUFFER_INFO info = {};
  if (GetConsoleScreenBufferInfo(HandleOf(stream), &info) == 0) return 80;
  // A line that fills the last column would be followed by an empty one.
  const int width = info.srWindow.Right - info.srWindow.Left;
  return width > 0 ? static_cast<std::size_t>(width) : 80;
}

bool Write(Stream stream, std::string_view string) {
  if (IsTerminal(stream)) {
    // Older consoles refuse long writes.
    constexpr std::size_t kMost = 8000;
    const std::wstring wide = ToWide(string, CP_UTF8);
    for (std::size_t begin = 0; begin < wide.size(); begin += kMost) {
      const std::wstring piece = wide.substr(begin, kMost);
      DWORD written = 0;
      if (WriteConsoleW(HandleOf(stream), piece.data(), static_cast<DWORD>(piece.size()), &written,
                        nullptr) == 0) {
        return false;
      }
    }
    return true;
  }
  std::FILE* file = stream == Stream::kOutput ? stdout : stderr;
  return std::fwrite(string.data(), 1, string.size(), file) == string.size() &&
         std::fflush(file) == 0;
}

std::string FromLibrary(std::string_view string) {
  return ToUtf8(ToWide(string, CP_ACP));
}

std::optional<std::string> ToLibrary(std::string_view string) {
  const std::wstring wide = ToWide(string, CP_UTF8);
  // A system whose code page is UTF-8 lacks no character, and refuses to be asked.
  const bool mayLack = GetACP() != CP_UTF8;
  std::string narrow(wide.size() * 4, '\0');
  BOOL lacksCharacter = FALSE;
  const int size = WideCharToMultiByte(
      CP_ACP, mayLack ? WC_NO_BEST_FIT_CHARS : 0, wide.data(), static_cast<int>(wide.size()),
      narrow.data(), static_cast<int>(narrow.size()), nullptr, mayLack ? &lacksCharacter : nullptr);
  if (lacksCharacter != FALSE || (size == 0 && !wide.empty())) return std::nullopt;
  narrow.resize(static_cast<std::size_t>(size));
  return narrow;
}

std::optional<std::string> LocalPathForLibrary(const std::filesystem::path& path) {
  // The library's functions know no longer paths.
  std::error_code error;
  const bool isLong = std::filesystem::absolute(path, error).native().size() >= MAX_PATH;
  return isLong ? std::nullopt : ToLibrary(ToUtf8(path.native()));
}

NameLimits LimitsBelow(const std::filesystem::path& folder) {
  constexpr std::size_t kLongestPath = MAX_PATH - 1;
  std::error_code error;
  const std::filesystem::path absolute = std::filesystem::absolute(folder, error);
  const std::size_t above = (error ? folder : absolute).native().size() + 1;
  return {NameLimits::Measure::kUnits, 255, kLongestPath - std::min(kLongestPath, above)};
}

void MakeOrdinary(const std::filesystem::path& path, std::filesystem::perms) {
  SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
}

std::error_code TryToGrowAndFlush(const std::filesystem::path& path, std::size_t moreBytes) {
  // A virus scanner may be reading the new file.
  const HANDLE file = CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_DELETE,
                                  nullptr, OPEN_EXISTING, 0, nullptr);
  if (file == INVALID_HANDLE_VALUE) return LastError();
  std::error_code problem;
  if (moreBytes > 0) problem = TryToGrow(file, moreBytes);
  if (!problem && FlushFileBuffers(file) == 0) problem = LastError();
  CloseHandle(file);
  return problem;
}

HeldFile CreateHeldFile(const std::filesystem::path& folder, std::string_view prefix,
                        std::string_view suffix) {
  // The number is this run's alone. The file itself cannot be locked, because the library must be
  // able to write to it.
  std::filesystem::path path = folder / prefix;
  path += std::to_string(GetCurrentProcessId());
  path += suffix;
  const HANDLE lock = CreateFileW(LockOf(path).c_str(), GENERIC_WRITE | DELETE, 0, nullptr,
                                  CREATE_ALWAYS, FILE_FLAG_DELETE_ON_CLOSE, nullptr);
  if (lock == INVALID_HANDLE_VALUE) {
    throw std::filesystem::filesystem_error("lock of a held file", path, LastError());
  }
  DeleteFileW(path.c_str());
  const HANDLE file = CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                  FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) {
    const std::error_code error = LastError();
    CloseHandle(lock);
    throw std::filesystem::filesystem_error("held file", path, error);
  }
  CloseHandle(file);
  return {path, reinterpret_cast<std::intptr_t>(lock)};
}

void RemoveHeldFile(const HeldFile& file) {
  DeleteFileW(file.path.c_str());
  CloseHandle(reinterpret_cast<HANDLE>(file.lock));
}

void RemoveUnlessHeld(const std::filesystem::path& path) {
  // A lock that can be deleted outlived its run, which happens when the computer is switched off.
  const bool forsaken =
      DeleteFileW(LockOf(path).c_str()) != 0 || GetLastError() == ERROR_FILE_NOT_FOUND;
  if (forsaken) DeleteFileW(path.c_str());
}

std::string ProblemWithEnvironment() {
  return {};
}

void HandleInterrupts() {
  SetConsoleCtrlHandler(OnInterrupt, TRUE);
}

void SetRemovedOnInterrupt(const std::filesystem::path& path) {
  removesPath = false;
  removedPath = path.native();
  removesPath = !removedPath.empty();
}

void DeferInterrupts(std::string_view notice) {
  interruptNotice = notice;
  // The "^C" that a console shows may stand in the line of the progress bar.
  if (!notice.empty() && IsTerminal(Stream::kError)) interruptNotice.insert(0, 1, '\n');
  defersInterrupts = true;
}

bool InterruptRequested() {
  return interruptRequested;
}

void InterruptWhenInputEnds() {
  if (GetFileType(GetStdHandle(STD_INPUT_HANDLE)) != FILE_TYPE_PIPE) return;
  std::thread([] {
    char ignored[256];
    DWORD count = 0;
    while (ReadFile(GetStdHandle(STD_INPUT_HANDLE), ignored, sizeof ignored, &count, nullptr) !=
               0 &&
           count > 0) {
    }
    interruptRequested = true;
  }).detach();
}

}  // namespace quaylink::cli
