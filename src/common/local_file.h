// An open local file that closes itself.
#pragma once

#include <cstdio>
#include <memory>

namespace quaylink {

struct CloseFile {
  void operator()(std::FILE* file) const { static_cast<void>(std::fclose(file)); }
};

using LocalFile = std::unique_ptr<std::FILE, CloseFile>;

}  // namespace quaylink
