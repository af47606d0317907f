// A phone in the test's own process, and a bridge whose slots hold the phone's functions, on a
// computer without the maker's libraries. At its end the phone must have nothing to complain about.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "mobile/mobile_device_bridge.h"
#include "stand_in_phone/entry_points.h"
#include "support/test_machine.h"

namespace quaylink {

class AttachedPhone {
 public:
  explicit AttachedPhone(stand_in::PhoneSetUp setUp = {});
  ~AttachedPhone();
  AttachedPhone(const AttachedPhone&) = delete;
  AttachedPhone& operator=(const AttachedPhone&) = delete;

  void DestroyBridge();

  // Empties the slot of that number, 1 to 23, as a library without that entry point would.
  void ClearSlot(int number);

  TestMachine machine;
  stand_in::StandInPhone phone;
  std::unique_ptr<MobileDeviceBridge> bridge;
};

}  // namespace quaylink
