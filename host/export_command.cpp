#include <memory>
#include <stdexcept>

#include "host/export.h"
#include "host/library.h"
#include "host/paths.h"
#include "host/program.h"
#include "host/track_options.h"

namespace quaylink::host {
namespace {

struct ExportArguments {
  std::string destination;
  std::string pattern = std::string(NamePattern::kDefault);
  TrackFilter filter;
  bool dryRun = false;
  bool json = false;
};

int Export(const Program& program, const ExportArguments& arguments) {
  const NamePattern pattern = [&] {
    try {
      return NamePattern(arguments.pattern);
    } catch (const std::invalid_argument& error) {
      throw Failure("--name " + arguments.pattern + ": " + error.what(), kUsage);
    }
  }();
  Library library(program);
  library.RequireDevice();
  const std::vector<Track> tracks = library.ReadDeviceDatabase();
  // Paths come from all tracks, so that a filter does not change the name of any.
  const std::vector<std::string> paths = PathsFor(tracks, pattern);
  Exporter exporter(program, library, PathOf(arguments.destination), arguments.json);
  for (const Track& track : tracks) {
    if (Matches(arguments.filter, track)) exporter.Add(track, paths[track.index]);
  }
  return arguments.dryRun ? exporter.ShowPlan() : exporter.Run();
}

}  // namespace

void AddExportCommand(CLI::App& app, Program& program) {
  auto arguments = std::make_shared<ExportArguments>();
  CLI::App* command = app.add_subcommand("export", "Copy the device's music into a folder");
  command->add_option("DEST", arguments->destination, "The folder, made when it is missing")
      ->required()
      ->type_name("FOLDER");
  command
      ->add_option("--name", arguments->pattern,
                   "How copies are named: {artist}, {album}, {title}, {index} and {file} stand for "
                   "properties of the track, / parts folders")
      ->type_name("PATTERN")
      ->capture_default_str();
  command->add_flag("-n,--dry-run", arguments->dryRun, "Show what would be copied, copy nothing");
  command->add_flag("--json", arguments->json, "Print a JSON object with the fate of each track");
  AddFilterOptions(*command, arguments->filter);
  command->footer(
      "Files that an earlier run has finished are skipped, so an interrupted export is resumed by\n"
      "running it again. The exit status is 1 when a track could not be copied.\n\n"
      "Examples:\n"
      "  quaylink export ~/Music\n"
      "  quaylink export ~/Music --artist björk --dry-run\n"
      "  quaylink export ~/Podcasts --album \"radio\" --name \"{album}/{index} {title}\"");
  command->callback([&program, arguments] {
    program.command = [&program, arguments] { return Export(program, *arguments); };
  });
}

}  // namespace quaylink::host
