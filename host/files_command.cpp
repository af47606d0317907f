#include <memory>
#include <nlohmann/json.hpp>

#include "host/library.h"
#include "host/program.h"
#include "host/system.h"
#include "host/utf8.h"

namespace quaylink::host {
namespace {

int ListFiles(const Program& program, bool json) {
  Library library(program);
  if (library.RequireDevice() == DeviceKind::kDisk) {
    program.Note("A player in disk mode is an ordinary drive: its files are listed there.");
  }
  const std::vector<std::string> files = library.ListFiles();
  if (json) {
    nlohmann::json list = nlohmann::json::array();
    for (const std::string& file : files) list.push_back(MakeValid(file));
    program.Print(list.dump(2) + '\n');
    return kSuccess;
  }
  // Programs get the names byte for byte, people without what would steer their terminal.
  const bool printable = IsTerminal(Stream::kOutput);
  std::string lines;
  for (const std::string& file : files) lines += (printable ? MakePrintable(file) : file) + '\n';
  program.Print(lines);
  if (program.verbose) program.Note(std::to_string(files.size()) + " files");
  return kSuccess;
}

}  // namespace

void AddFilesCommand(CLI::App& app, Program& program) {
  auto json = std::make_shared<bool>(false);
  CLI::App* command = app.add_subcommand("files", "List every file of a phone, one a line");
  command->add_flag("--json", *json, "Print a JSON array of paths");
  command->footer(
      "Examples:\n"
      "  quaylink files\n"
      "  quaylink files --json | jq -r '.[]' | grep -i jpg");
  command->callback([&program, json] {
    program.command = [&program, json] { return ListFiles(program, *json); };
  });
}

}  // namespace quaylink::host
