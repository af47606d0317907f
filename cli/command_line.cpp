#include "cli/command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>
#include <sstream>
#include <utility>

#include "cli/commands/commands.h"
#include "cli/list_options.h"
#include "cli/system/examples.h"
#include "cli/system/system.h"
#include "cli/text/utf8.h"

namespace quaylink::cli {
namespace {

// Adds a command with options of its own. When the arguments name it, it becomes the chosen one.
template <class Options>
std::pair<CLI::App&, Options&> Add(CLI::App& app, Command& chosen, const char* name,
                                   const char* description,
                                   int (*run)(const Program&, const Options&)) {
  auto options = std::make_shared<Options>();
  CLI::App* command = app.add_subcommand(name, description);
  command->callback([&chosen, options, run] {
    chosen = [options, run](const Program& program) { return run(program, *options); };
  });
  return {*command, *options};
}

std::string Examples(std::string_view lines) {
  return "Examples:\n" + std::string(lines);
}

void AddDestination(CLI::App& command, std::string& destination, const std::string& more = {}) {
  command
      .add_option("DEST", destination,
                  "The file to write (or replace), or a folder to put a new file into" + more)
      ->transform(ReadPath())
      ->required()
      ->type_name("PATH");
}

CLI::Option* AddDryRunOption(CLI::App& command, bool& dryRun) {
  return command.add_flag("-n,--dry-run", dryRun,
                          "Show what would be done and whether there is room for it");
}

void AddEventsOption(CLI::App& command, Program& program) {
  command.add_flag("--json", program.tellsEvents,
                   "Print a line of JSON for each event, as it happens");
}

void AddStatusCommand(CLI::App& app, Command& chosen) {
  auto [command, options] = Add(app, chosen, "status",
                                "Tell whether a device is attached and can be reached", ShowStatus);
  command.add_flag("--json", options.json, "Print a JSON object");
  command.footer("The exit status is 0 when a device can be reached, else 1.\n\n" +
                 Examples(kStatusExamples));
}

void AddFromOption(CLI::App& command, std::string& from) {
  command
      .add_option("--from", from,
                  "Look for no device: FOLDER is a mounted player, a copy of one, or a backup, and "
                  "holds iPod_Control or iTunes_Control")
      ->transform(ReadPath())
      ->type_name("FOLDER");
}

void AddSourceOptions(CLI::App& command, std::string& file, std::string& from) {
  AddFromOption(command, from);
  command
      .add_option("FILE", file,
                  "A copied music database, - for the standard input; without it the database of "
                  "the attached device")
      ->transform(ReadPath())
      ->excludes("--from");
}

void AddTracksCommand(CLI::App& app, Command& chosen) {
  auto [command, options] =
      Add(app, chosen, "tracks", "List the tracks of a device or of a database file", ListTracks);
  AddSourceOptions(command, options.file, options.from);
  CLI::Option* json = command.add_flag("--json", options.json, "Print a JSON array of objects");
  command.add_flag("--csv", options.csv, "Print comma-separated values")->excludes(json);
  AddColumnsOption(command, options.columns);
  AddSortOptions(command, options.sort, options.reverse);
  AddFilterOptions(command, options.filter);
  command.footer(
      "KEY is a property as --json names it, such as year, genre, rating or playCount.\n\n" +
      Examples(kTracksExamples));
}

void AddPlaylistsCommand(CLI::App& app, Command& chosen) {
  auto [command, options] =
      Add(app, chosen, "playlists", "List the playlists of a device or of a database file",
          ListPlaylists);
  AddSourceOptions(command, options.file, options.from);
  command.add_flag("--json", options.json, "Print a JSON array of objects");
  command.footer(Examples(kPlaylistsExamples));
}

void AddExportCommand(CLI::App& app, Command& chosen, Program& program) {
  auto [command, options] =
      Add(app, chosen, "export", "Copy the device's music into a folder", Export);
  command.add_option("DEST", options.destination, "The folder, made when it is missing")
      ->transform(ReadPath())
      ->required()
      ->type_name("FOLDER");
  command
      .add_option("--name", options.pattern,
                  "How copies are named, without the extension; see below")
      ->type_name("PATTERN")
      ->capture_default_str();
  AddFromOption(command, options.from);
  CLI::Option* dryRun = AddDryRunOption(command, options.dryRun);
  command
      .add_flag("--verify", options.verify,
                "Copy nothing: read every copy and its source again, and tell what differs")
      ->excludes(dryRun);
  command.add_flag("--rescue", options.rescue,
                   "Export the music files that the database does not name, too");
  command.add_flag("--no-playlists", options.noPlaylists, "Write no playlist files");
  AddEventsOption(command, program);
  AddFilterOptions(command, options.filter);
  command.footer(
      "In a PATTERN, / parts folders, and braces hold a property as 'quaylink tracks --json' "
      "names\n"
      "it, or {folderArtist}, {number} or {file}. What stands in brackets is left out when a\n"
      "property in it is missing. Numbers are padded with zeros.\n\n"
      "DEST remembers what was copied: a track whose copy is there is skipped, and an interrupted\n"
      "export is resumed by running it again. Files that others have put there are left alone.\n"
      "The exit status is 1 when a track could not be copied.\n\n" +
      Examples(kExportExamples));
}

void AddCopyTrackCommand(CLI::App& app, Command& chosen) {
  auto [command, options] = Add(app, chosen, "copy-track", "Copy the file of one track", CopyTrack);
  command
      .add_option("INDEX", options.index, "The number that 'quaylink tracks' shows for the track")
      ->check(RefuseMalformedNumber)
      ->required()
      ->type_name("");
  AddDestination(command, options.destination);
  command.footer(Examples(kCopyTrackExamples));
}

void AddCopyDatabaseCommand(CLI::App& app, Command& chosen) {
  auto [command, options] =
      Add(app, chosen, "copy-database", "Copy the device's music database", CopyDatabase);
  AddDestination(command, options.destination);
  command.footer(Examples(kCopyDatabaseExamples));
}

void AddFilesCommand(CLI::App& app, Command& chosen) {
  auto [command, options] =
      Add(app, chosen, "files", "List every file of a phone, one a line", ListFiles);
  command.add_flag("--json", options.json, "Print a JSON array of paths");
  command.footer(Examples(kFilesExamples));
}

void AddPullCommand(CLI::App& app, Command& chosen, Program& program) {
  auto [command, options] =
      Add(app, chosen, "pull", "Copy any file of the device, or a folder of a phone", Pull);
  command
      .add_option("DEVICE_PATH", options.devicePath,
                  "A path as 'quaylink files' prints it, or the folder of such paths, to take "
                  "everything below it; for a player in disk mode a path on its "
                  "drive, such as /Notes/a.txt or F:\\Notes\\a.txt")
      ->transform(ReadDevicePath())
      ->required()
      ->type_name("");
  AddDestination(command, options.destination,
                 "; a folder of a phone goes with its tree into the folder DEST, made when it is "
                 "missing");
  AddDryRunOption(command, options.dryRun);
  AddEventsOption(command, program);
  command.footer(Examples(kPullExamples));
}

Failure UsageFailure(const CLI::App& app, const std::string& reason) {
  std::string help = "quaylink ";
  for (const CLI::App* command : app.get_subcommands()) help += command->get_name() + ' ';
  return Failure(
      "the command line is wrong: " + MakePrintable(reason) + "; see '" + help + "--help'", kUsage);
}

}  // namespace

Command ReadCommandLine(std::vector<std::string> arguments, Program& program) {
  CLI::App app("Takes the music off Apple players and phones.", "quaylink");
  app.set_version_flag("--version", "quaylink " QUAYLINK_PROGRAM_VERSION);
  app.add_flag("-q,--quiet", program.quiet, "Print results and errors only");
  app.add_flag("-v,--verbose", program.verbose, "Print more of what is done")->excludes("--quiet");
  // A phone's paths begin with "/", as options do elsewhere on Windows.
  app.allow_windows_style_options(false);
  app.require_subcommand(0, 1);
  app.fallthrough();
  app.footer(Examples(kFirstExamples) + "\n\n'quaylink COMMAND --help' tells more of a command, " +
             std::string(kWholeManual) + " everything.");
  Command chosen;
  AddStatusCommand(app, chosen);
  AddTracksCommand(app, chosen);
  AddPlaylistsCommand(app, chosen);
  AddExportCommand(app, chosen, program);
  AddCopyTrackCommand(app, chosen);
  AddCopyDatabaseCommand(app, chosen);
  AddFilesCommand(app, chosen);
  AddPullCommand(app, chosen, program);
  try {
    // The parser takes the arguments last one first.
    std::reverse(arguments.begin(), arguments.end());
    app.parse(std::move(arguments));
  } catch (const CLI::Success& request) {
    std::ostringstream string;
    app.exit(request, string);
    return [string = string.str()](const Program& asked) {
      asked.Print(string);
      return kSuccess;
    };
  } catch (const CLI::ParseError& error) {
    throw UsageFailure(app, error.what());
  }
  if (!chosen) throw UsageFailure(app, "a command is missing");
  return chosen;
}

}  // namespace quaylink::cli
