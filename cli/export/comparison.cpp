#include "cli/export/comparison.h"

#include <algorithm>
#include <cstddef>
#include <span>
#include <system_error>
#include <vector>

namespace quaylink::cli {

Likeness Compare(File& copy, File& whole) {
  constexpr std::size_t kBlock = 256 * 1024;
  std::vector<char> left(kBlock);
  std::vector<char> right(kBlock);
  bool same = true;
  while (true) {
    std::error_code error;
    const std::size_t leftCount = copy.Read(left, error);
    const std::size_t rightCount = error ? 0 : whole.Read(right, error);
    if (error) return Likeness::kUnread;
    if (leftCount > rightCount) return Likeness::kOther;
    const auto end = left.begin() + static_cast<std::ptrdiff_t>(leftCount);
    const auto difference =
        same ? std::mismatch(left.begin(), end, right.begin()).first : left.begin();
    if (difference != end) {
      same = false;
      if (std::any_of(difference, end, [](char byte) { return byte != '\0'; })) {
        return Likeness::kOther;
      }
    }
    if (leftCount < rightCount) return Likeness::kCut;
    if (leftCount < kBlock) return same ? Likeness::kSame : Likeness::kCut;
  }
}

}  // namespace quaylink::cli
