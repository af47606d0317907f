#include <windows.h>

#include <cstdio>
#include <string>

#include "cli/system/own_window.h"
#include "cli/system/system.h"
#include "cli/system/wide_strings.h"
#include "cli/text/utf8.h"

namespace quaylink::cli {
namespace {

bool HasOwnWindow() {
  DWORD processes[2];
  return IsTerminal(Stream::kOutput) && GetConsoleProcessList(processes, 2) == 1;
}

std::string OwnFolder() {
  std::wstring path(32768, L'\0');
  path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
  return MakePrintable(ToUtf8(path.substr(0, path.rfind(L'\\'))));
}

}  // namespace

bool ExplainInOwnWindow() {
  if (!HasOwnWindow()) return false;
  Write(Stream::kOutput,
        "quaylink takes the music off Apple players and phones. It is told what to do by\n"
        "lines that you type:\n\n"
        "  1. Hold the Windows key and press R, type cmd, and press Enter.\n"
        "  2. In the window that opens, type these lines, with Enter after each:\n\n"
        "       cd /d \"" +
            OwnFolder() +
            "\"\n"
            "       quaylink status\n"
            "       quaylink export \"%USERPROFILE%\\Music\"\n\n"
            "The last one copies all music into your folder Music. The line quaylink --help\n"
            "tells the rest.\n\n"
            "Press Enter to close this window.\n");
  for (int character = 0; character != '\n' && character != EOF;) character = std::getchar();
  return true;
}

}  // namespace quaylink::cli
