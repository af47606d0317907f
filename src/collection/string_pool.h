// The strings that a collection hands out: UTF-8, NUL-terminated, at addresses that stay good.
#pragma once

#include <memory>
#include <string_view>

#include "itunesdb/arena.h"

namespace quaylink {

class StringPool {
 public:
  // Each adds a string, which ends at its first NUL, and returns its place; an empty one takes
  // none. U+FFFD takes the place of what is no character. Throws std::bad_alloc.
  const char* Add(std::u16string_view text);
  const char* Add(std::string_view utf8);
  // A path as players store it, with ":" between its parts, as one with "/".
  const char* AddLocation(std::u16string_view text);

 private:
  char* Scratch(std::size_t size);
  char* Keep(const char* end);

  Arena memory_;
  std::unique_ptr<char[]> scratch_;  // where a string is made whose length is not known yet
  std::size_t scratchSize_ = 0;
};

}  // namespace quaylink
