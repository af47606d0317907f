#include "cli/command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>
#include <sstream>
#include <utility>

#include "cli/commands.h"
#include "cli/list_options.h"
#include "cli/system.h"
#include "cli/utf8.h"

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

void AddDestination(CLI::App& command, CopyOptions& options) {
  command
      .add_option("DEST", options.destination,
                  "The file to write (or replace), or a folder to put a new file into")
      ->check(RefuseEmpty)
      ->required()
      ->type_name("PATH");
}

void AddStatusCommand(CLI::App& app, Command& chosen) {
  auto [command, options] = Add(app, chosen, "status",
                                "Tell whether a device is attached and can be reached", ShowStatus);
  command.add_flag("--json", options.json, "Print a JSON object");
  command.footer(
      "The exit status is 0 when a device can be reached, else 1.\n\n"
      "Examples:\n"
      "  quaylink status\n"
      "  quaylink status -q && quaylink export ~/Music");
}

CLI::Option* AddFileOption(CLI::App& command, std::string& file) {
  return command
      .add_option("FILE", file,
                  "A copied music database, - for the standard input; without it the database of "
                  "the attached device")
      ->check(RefuseEmpty);
}

void AddTracksCommand(CLI::App& app, Command& chosen) {
  auto [command, options] =
      Add(app, chosen, "tracks", "List the tracks of a device or of a database file", ListTracks);
  AddFileOption(command, options.file);
  CLI::Option* json = command.add_flag("--json", options.json, "Print a JSON array of objects");
  command.add_flag("--csv", options.csv, "Print comma-separated values")->excludes(json);
  AddColumnsOption(command, options.columns);
  AddSortOptions(command, options.sort, options.reverse);
  AddFilterOptions(command, options.filter);
  command.footer(
      "KEY is a property as --json names it, such as year, genre, rating or playCount.\n\n"
      "Examples:\n"
      "  quaylink tracks\n"
      "  quaylink tracks --artist bjork --sort album\n"
      "  quaylink tracks --kind podcast --columns released,bookmarkMs --sort released\n"
      "  quaylink tracks iTunesDB --json | jq '.[].title'");
}

void AddPlaylistsCommand(CLI::App& app, Command& chosen) {
  auto [command, options] =
      Add(app, chosen, "playlists", "List the playlists of a device or of a database file",
          ListPlaylists);
  AddFileOption(command, options.file);
  command.add_flag("--json", options.json, "Print a JSON array of objects");
  command.footer(
      "Examples:\n"
      "  quaylink playlists\n"
      "  quaylink playlists iTunesDB --json | jq '.[].name'\n"
      "  quaylink tracks --playlist Favourites");
}

void AddExportCommand(CLI::App& app, Command& chosen) {
  auto [command, options] =
      Add(app, chosen, "export", "Copy the device's music into a folder", Export);
  command.add_option("DEST", options.destination, "The folder, made when it is missing")
      ->check(RefuseEmpty)
      ->required()
      ->type_name("FOLDER");
  command
      .add_option("--name", options.pattern,
                  "How copies are named: {artist}, {album}, {title}, {index} and {file} stand "
                  "for properties of the track, / parts folders")
      ->type_name("PATTERN")
      ->capture_default_str();
  command.add_flag("-n,--dry-run", options.dryRun, "Show what would be copied, copy nothing");
  command.add_flag("--json", options.json, "Print a JSON object with the fate of each track");
  AddFilterOptions(command, options.filter);
  command.footer(
      "Files that an earlier run has finished are skipped, so an interrupted export is resumed by\n"
      "running it again. The exit status is 1 when a track could not be copied.\n\n"
      "Examples:\n"
      "  quaylink export ~/Music\n"
      "  quaylink export ~/Music --artist björk --dry-run\n"
      "  quaylink export ~/Podcasts --album \"radio\" --name \"{album}/{index} {title}\"");
}

void AddCopyTrackCommand(CLI::App& app, Command& chosen) {
  auto [command, options] = Add(app, chosen, "copy-track", "Copy the file of one track", CopyTrack);
  command
      .add_option("INDEX", options.index, "The number that 'quaylink tracks' shows for the track")
      ->check(RefuseMalformedNumber)
      ->required()
      ->type_name("");
  AddDestination(command, options);
  command.footer(
      "Examples:\n"
      "  quaylink copy-track 12 song.mp3\n"
      "  quaylink copy-track 12 ~/Music");
}

void AddCopyDatabaseCommand(CLI::App& app, Command& chosen) {
  auto [command, options] =
      Add(app, chosen, "copy-database", "Copy the device's music database", CopyDatabase);
  AddDestination(command, options);
  command.footer(
      "Example:\n"
      "  quaylink copy-database backup.iTunesDB && quaylink tracks backup.iTunesDB");
}

void AddFilesCommand(CLI::App& app, Command& chosen) {
  auto [command, options] =
      Add(app, chosen, "files", "List every file of a phone, one a line", ListFiles);
  command.add_flag("--json", options.json, "Print a JSON array of paths");
  command.footer(
      "Examples:\n"
      "  quaylink files\n"
      "  quaylink files --json | jq -r '.[]' | grep -i jpg");
}

void AddPullCommand(CLI::App& app, Command& chosen) {
  auto [command, options] = Add(app, chosen, "pull", "Copy any file of the device", Pull);
  command
      .add_option("DEVICE_PATH", options.devicePath,
                  "A path as 'quaylink files' prints it; for a player in disk mode a path on its "
                  "drive, such as F:\\Notes\\a.txt")
      ->check(RefuseEmpty)
      ->required()
      ->type_name("");
  AddDestination(command, options);
  command.footer(
      "Examples:\n"
      "  quaylink pull /DCIM/100APPLE/IMG_0001.JPG ~/Pictures\n"
      "  mkdir -p ~/Pictures/phone\n"
      "  quaylink files | grep -i jpg |\n"
      "    while IFS= read -r f; do quaylink pull \"$f\" ~/Pictures/phone; done");
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
  app.footer(
      "Examples:\n"
      "  quaylink status              is a player attached?\n"
      "  quaylink tracks              list its music\n"
      "  quaylink export ~/Music      copy all of it\n\n"
      "'quaylink COMMAND --help' tells more of a command, " +
      std::string(kWholeManual) + " everything.");
  Command chosen;
  AddStatusCommand(app, chosen);
  AddTracksCommand(app, chosen);
  AddPlaylistsCommand(app, chosen);
  AddExportCommand(app, chosen);
  AddCopyTrackCommand(app, chosen);
  AddCopyDatabaseCommand(app, chosen);
  AddFilesCommand(app, chosen);
  AddPullCommand(app, chosen);
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
