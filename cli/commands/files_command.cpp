#include "cli/commands/commands.h"
#include "cli/output/json.h"
#include "cli/source/library.h"
#include "cli/system/system.h"
#include "cli/text/utf8.h"

namespace quaylink::cli {

int ListFiles(const Program& program, const FilesOptions& options) {
  Library library(program);
  if (library.RequireDevice() == DeviceKind::kDisk) {
    program.Note("A player in disk mode is an ordinary drive: its files are listed there.");
  }
  const std::vector<std::string> files = library.ListFiles();
  if (options.json) {
    program.Print(FilesJson(files));
    return kSuccess;
  }
  // Names are lines: on a terminal none can look like two.
  const bool printable = IsTerminal(Stream::kOutput);
  std::string lines;
  for (const std::string& file : files) lines += (printable ? MakePrintable(file) : file) + '\n';
  program.Print(lines);
  if (program.verbose) program.Note(std::to_string(files.size()) + " files");
  return kSuccess;
}

}  // namespace quaylink::cli
