#include "support/attached_phone.h"

#include <gmock/gmock.h>

#include <cstring>

#include "mobile/device_notification.h"

namespace quaylink {

AttachedPhone::AttachedPhone(stand_in::PhoneSetUp setUp)
    : phone(std::move(setUp)), bridge(std::make_unique<MobileDeviceBridge>()) {
  stand_in::SetCurrentPhone(&phone);
  // Only whether there are libraries is looked at.
  bridge->coreFoundationModule = reinterpret_cast<HMODULE>(this);
  bridge->mobileDeviceModule = reinterpret_cast<HMODULE>(this);
  bridge->entryPoints = stand_in::AllEntryPoints();
  SetUnsubscribeEntry(stand_in::UnsubscribeFromCurrentPhone);
}

AttachedPhone::~AttachedPhone() {
  if (bridge) DestroyBridge();
  EXPECT_THAT(phone.Complaints(), testing::IsEmpty());
  stand_in::SetCurrentPhone(nullptr);
}

void AttachedPhone::DestroyBridge() {
  bridge->coreFoundationModule = nullptr;
  bridge->mobileDeviceModule = nullptr;
  bridge.reset();
}

void AttachedPhone::ClearSlot(int number) {
  constexpr std::size_t kSlotSize = sizeof(DeviceEntry);
  char* slots = reinterpret_cast<char*>(&bridge->entryPoints);
  std::memset(slots + kSlotSize * static_cast<std::size_t>(number - 1), 0, kSlotSize);
}

}  // namespace quaylink
