// What must hold for every input of a fuzzer.
#pragma once

#include <cstdio>
#include <cstdlib>

namespace quaylink::fuzz {

// Ends the program, which makes the fuzzer keep its input, when the condition does not hold.
inline void Require(bool condition, const char* what) {
  if (condition) return;
  std::fprintf(stderr, "Broken: %s\n", what);
  std::abort();
}

}  // namespace quaylink::fuzz
