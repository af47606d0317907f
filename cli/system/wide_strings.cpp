#include "cli/system/wide_strings.h"

#include <windows.h>

#include "cli/text/utf8.h"

namespace quaylink::cli {

std::wstring ToWide(std::string_view string, unsigned codePage) {
  const int size = static_cast<int>(string.size());
  const int wideSize = MultiByteToWideChar(codePage, 0, string.data(), size, nullptr, 0);
  std::wstring wide(static_cast<std::size_t>(wideSize), L'\0');
  MultiByteToWideChar(codePage, 0, string.data(), size, wide.data(), wideSize);
  return wide;
}

std::string ToUtf8(std::wstring_view wide) {
  const int wideSize = static_cast<int>(wide.size());
  const int size =
      WideCharToMultiByte(CP_UTF8, 0, wide.data(), wideSize, nullptr, 0, nullptr, nullptr);
  std::string string(static_cast<std::size_t>(size), '\0');
  WideCharToMultiByte(CP_UTF8, 0, wide.data(), wideSize, string.data(), size, nullptr, nullptr);
  return MakeValid(string);
}

}  // namespace quaylink::cli
