#include "platform/portable/handles.h"

#include <cstdio>
#include <cstdlib>

#include "platform/portable/machine.h"

namespace quaylink::portable {

void ReportBadHandle(const char* what) {
  if (!CurrentMachine().abortOnBadHandle) return;
  std::fprintf(stderr, "%s: the handle is not open\n", what);
  std::abort();
}

std::uintptr_t NextHandleValue() {
  // Multiples of 4 that do not look like small numbers, as on Windows.
  static std::uintptr_t last = 0x100;
  return last += 4;
}

Handles& OpenHandleTables() {
  static Handles handles;
  return handles;
}

OpenHandles CountOpenHandles() {
  const Handles& handles = OpenHandleTables();
  return {handles.registryKeys.Count(), handles.devices.Count(), handles.searches.Count(),
          handles.shellObjects};
}

}  // namespace quaylink::portable
