#include "support/attached_phone.h"

#include <gmock/gmock.h>

#include "stand_in_phone/in_process.h"

namespace quaylink::test {

AttachedPhone::AttachedPhone(stand_in::PhoneSetUp setUp, std::string_view missing)
    : phone(std::move(setUp)) {
  stand_in::SetCurrentPhone(&phone);
  PhoneLibraries libraries = stand_in::InProcessLibraries();
  int taken = 0;
  libraries.entryPoints.ForEach([&](PhoneLibrary, std::string_view name, auto& slot) {
    if (name != missing) return;
    slot = nullptr;
    ++taken;
  });
  EXPECT_EQ(taken, missing.empty() ? 0 : 1) << missing;
  bridge = std::make_unique<MobileDeviceBridge>(std::move(libraries));
}

AttachedPhone::~AttachedPhone() {
  bridge.reset();
  EXPECT_THAT(phone.Complaints(), testing::IsEmpty());
  stand_in::SetCurrentPhone(nullptr);
}

}  // namespace quaylink::test
