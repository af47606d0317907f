// Indexed access that is checked: the one place that raises the library's only exception of its
// own.
#pragma once

#include <cstddef>
#include <stdexcept>

namespace quaylink {

// The element at `index` of a list with size() and operator[]. Throws std::out_of_range beyond its
// end.
template <class List>
decltype(auto) CheckedAt(List& list, std::size_t index) {
  if (index >= list.size()) throw std::out_of_range("invalid vector<T> subscript");
  return list[index];
}

}  // namespace quaylink
