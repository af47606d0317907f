// The name by which Windows knows one of Apple's USB products.
#pragma once

#include <cstdio>
#include <string>

namespace quaylink {

inline std::string AppleHardwareId(unsigned productId) {
  char hardwareId[sizeof "VID_05AC&PID_12345678"];
  std::snprintf(hardwareId, sizeof hardwareId, "VID_05AC&PID_%04X", productId);
  return hardwareId;
}

}  // namespace quaylink
