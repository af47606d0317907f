// The few things that the program needs of the operating system beyond the standard library. One
// source file for each system implements them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace quaylink::cli {

// Where a user of this system finds everything about the program, for a sentence.
extern const std::string_view kWholeManual;
// What a user of this system can do when a phone does not answer.
extern const std::string_view kPhoneAdvice;
// What a file of comma-separated values begins with, so that this system's spreadsheets take it for
// UTF-8.
extern const std::string_view kCsvBeginning;

enum class Stream { kOutput, kError };

// The program's arguments in UTF-8, without its name.
std::vector<std::string> Arguments(int argc, char** argv);

// Makes the standard streams carry bytes as they are.
void PrepareStreams();
bool IsTerminal(Stream stream);
// True where a line cannot be drawn over (TERM=dumb).
bool IsDumbTerminal();
// True on a terminal that shows colours to a user who has not forbidden them (NO_COLOR).
bool ShowsColours(Stream stream);
// Columns of the terminal, 80 when it does not tell.
std::size_t TerminalWidth(Stream stream);
// Writes a UTF-8 string; false when it could not be written whole.
bool Write(Stream stream, std::string_view string);

// A string or local path that the library or the system hands out, in UTF-8, and valid.
std::string FromLibrary(std::string_view string);
// A string as the library takes it; nothing when the system's code page lacks a character of it.
std::optional<std::string> ToLibrary(std::string_view string);
// The same for a path on this computer, which must not be too long for the library either.
std::optional<std::string> LocalPathForLibrary(const std::filesystem::path& path);

// How long names may be: in bytes of UTF-8 as Linux counts, or in units of UTF-16 as Windows does.
struct NameLimits {
  enum class Measure { kBytes, kUnits } measure;
  std::size_t component;
  std::size_t path;  // a relative path as a whole, with what parts its components
};
// Those of this system for paths below a folder, which need not be there yet.
NameLimits LimitsBelow(const std::filesystem::path& folder);

// Gives a copy the permissions with which its file was made, and makes it visible: a player's files
// may be marked read-only and hidden, and copies made by the system keep such marks.
void MakeOrdinary(const std::filesystem::path& path, std::filesystem::perms permissions);

// Asks the disk for room for some more bytes behind the file's own, gives them back, and waits
// until the file is on the disk. A disk that refused part of the file refuses here again.
std::error_code TryToGrowAndFlush(const std::filesystem::path& path, std::size_t moreBytes);

// A file that shows whether the run that made it is still there.
struct HeldFile {
  std::filesystem::path path;
  std::intptr_t lock;  // ends with the run, however that ends
};

// Creates a new empty file with a name of that beginning and end. Throws filesystem_error.
HeldFile CreateHeldFile(const std::filesystem::path& folder, std::string_view prefix,
                        std::string_view suffix);
void RemoveHeldFile(const HeldFile& file);
// Removes a file that CreateHeldFile made, unless its run is still there.
void RemoveUnlessHeld(const std::filesystem::path& path);

// What is wrong with the environment in which the library is started; empty when nothing is.
std::string ProblemWithEnvironment();

// From now on Ctrl-C removes the file set here (none when empty), and ends the program. Windows
// does not let go of a file while the library writes it: one that is being copied stays there.
void HandleInterrupts();
void SetRemovedOnInterrupt(const std::filesystem::path& path);
// From now on the first Ctrl-C only makes InterruptRequested true, and writes a notice to the error
// stream; a second one ends the program.
void DeferInterrupts(std::string_view notice);
bool InterruptRequested();
// From now on the end of the standard input counts as a Ctrl-C, where that is a pipe: the program
// that has started this one holds the other end.
void InterruptWhenInputEnds();

}  // namespace quaylink::cli
