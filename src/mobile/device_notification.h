// The phone that the phone library has announced. The announcement is a plain callback without an
// object of its own, so this state is the process's: a copy of the device record, the handle of the
// subscription, and the entry point that cancels it. The callback may come on a thread of the phone
// library; everything here may be called beside it.
#pragma once

#include <cstddef>
#include <cstdint>

#include "mobile/entry_points.h"

namespace quaylink {

// The callback given to the phone library. A record that carries a device is copied, and ends the
// subscription.
void QUAYLINK_CALL OnDeviceNotification(const NotificationRecord* record) noexcept;

// The address of our copy of the device record: the device argument of every call into the phone
// library.
void* DeviceArgument();

// The 32-bit word at that byte offset of the device record.
std::uint32_t DeviceRecordWord(std::size_t offset);

void ClearDeviceRecord();

// Keeps the handle of a subscription that was made.
void StoreSubscription(NotificationHandle subscription);

// Cancels the stored subscription, unless the callback has done so: each one is cancelled exactly
// once.
void CancelSubscription();

// The entry point that cancels subscriptions, or null. To be taken back before its library is
// unloaded.
void SetUnsubscribeEntry(UnsubscribeEntry entry);

}  // namespace quaylink
