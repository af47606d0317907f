// A phone in the test's own process, and a bridge that works with the phone's functions, on a
// computer without the vendor's libraries. At its end the phone must have nothing to complain
// about.
#pragma once

#include <memory>
#include <string_view>

#include "mobile/mobile_device_bridge.h"
#include "stand_in_phone/stand_in_phone.h"
#include "support/test_machine.h"

namespace quaylink::test {

class AttachedPhone {
 public:
  // With the name of an entry point, the libraries are without that one.
  explicit AttachedPhone(stand_in::PhoneSetUp setUp = {}, std::string_view missing = {});
  ~AttachedPhone();
  AttachedPhone(const AttachedPhone&) = delete;
  AttachedPhone& operator=(const AttachedPhone&) = delete;

  TestMachine machine;
  stand_in::StandInPhone phone;
  std::unique_ptr<MobileDeviceBridge> bridge;
};

}  // namespace quaylink::test
