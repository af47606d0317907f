#include "cli/command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <map>
#include <memory>
#include <sstream>
#include <utility>

#include "cli/commands.h"
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

// An argument that is there but empty comes from a variable that is not set, and means nothing.
std::string RefuseEmpty(const std::string& string) {
  return string.empty() ? "must not be empty" : "";
}

void AddDestination(CLI::App& command, CopyOptions& options) {
  command
      .add_option("DEST", options.destination,
                  "The file to write (or replace), or a folder to put a new file into")
      ->check(RefuseEmpty)
      ->required()
      ->type_name("PATH");
}

void AddFilterOptions(CLI::App& command, TrackFilter& filter) {
  const auto add = [&command](const char* name, std::string& string, const char* description) {
    command.add_option(name, string, description)->type_name("TEXT")->group("Which tracks");
  };
  add("--artist", filter.artist, "Only tracks whose artist holds TEXT");
  add("--album", filter.album, "Only tracks whose album holds TEXT");
  add("--match", filter.match, "Only tracks whose artist, album or title holds TEXT");
}

void AddSortOptions(CLI::App& command, TracksOptions& options) {
  const auto parse = [&options](const std::string& string) {
    static const std::map<std::string, SortKey> kKeys = {{"index", SortKey::kIndex},
                                                         {"artist", SortKey::kArtist},
                                                         {"album", SortKey::kAlbum},
                                                         {"title", SortKey::kTitle},
                                                         {"location", SortKey::kLocation}};
    const auto found = kKeys.find(string);
    if (found == kKeys.end()) {
      throw CLI::ValidationError(
          "--sort", "'" + string + "' is none of index, artist, album, title and location");
    }
    options.sort = found->second;
  };
  command
      .add_option_function<std::string>("--sort", parse,
                                        "Order by index, artist, album, title or location")
      ->type_name("KEY");
  command.add_flag("--reverse", options.reverse, "Turn the order round");
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

void AddTracksCommand(CLI::App& app, Command& chosen) {
  auto [command, options] =
      Add(app, chosen, "tracks", "List the tracks of a device or of a database file", ListTracks);
  command
      .add_option("FILE", options.file,
                  "A copied music database; without it that of the attached device")
      ->check(RefuseEmpty);
  CLI::Option* json = command.add_flag("--json", options.json, "Print a JSON array of objects");
  command.add_flag("--csv", options.csv, "Print comma-separated values")->excludes(json);
  AddFilterOptions(command, options.filter);
  AddSortOptions(command, options);
  command.footer(
      "Examples:\n"
      "  quaylink tracks\n"
      "  quaylink tracks --artist björk --sort album\n"
      "  quaylink tracks iTunesDB --json | jq '.[].title'");
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
  app.set_version_flag("--version", "quaylink " QUAYLINK_VERSION);
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
