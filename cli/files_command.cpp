#include "cli/commands.h"
#include "cli/json.h"
#include "cli/library.h"
#include "cli/system.h"
#include "cli/utf8.h"

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
  // Programs get the names byte for byte, people without what would steer their terminal.
  const bool printable = IsTerminal(Stream::kOutput);
  std::string lines;
  for (const std::string& file : files) lines += (printable ? MakePrintable(file) : file) + '\n';
  program.Print(lines);
  if (program.verbose) program.Note(std::to_string(files.size()) + " files");
  return kSuccess;
}

}  // namespace quaylink::cli
