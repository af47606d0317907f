#include "mobile/device_notification.h"

#include <array>
#include <cstring>
#include <mutex>
#include <utility>

namespace quaylink {
namespace {

// The opaque start of a device record, as the phone library lays it out.
using DeviceRecord = std::array<unsigned char, 64>;

// Guards all that follows. Never held while calling out: the phone library has locks of its own.
std::mutex stateMutex;
alignas(8) DeviceRecord sharedDeviceRecord = {};
NotificationHandle notificationHandle = 0;  // 0 when there is no subscription to cancel
UnsubscribeEntry unsubscribeEntry = nullptr;

struct Cancellation {
  UnsubscribeEntry entry;
  NotificationHandle subscription;

  void CarryOut() const {
    if (subscription != 0 && entry) entry(subscription);
  }
};

// Takes the stored subscription out; whoever gets it cancels it. Needs the mutex.
Cancellation TakeSubscription() {
  return {unsubscribeEntry, std::exchange(notificationHandle, 0)};
}

}  // namespace

void QUAYLINK_CALL OnDeviceNotification(const NotificationRecord* record) noexcept {
  if (!record || !record->deviceRecord) return;
  std::unique_lock lock(stateMutex);
  std::memcpy(sharedDeviceRecord.data(), record->deviceRecord, sharedDeviceRecord.size());
  // A callback that runs before the subscribe call has returned finds no handle; Connect cancels
  // then.
  const Cancellation cancellation = TakeSubscription();
  lock.unlock();
  cancellation.CarryOut();
}

void* DeviceArgument() {
  return sharedDeviceRecord.data();
}

std::uint32_t DeviceRecordWord(std::size_t offset) {
  const std::lock_guard lock(stateMutex);
  std::uint32_t word = 0;
  std::memcpy(&word, sharedDeviceRecord.data() + offset, sizeof word);
  return word;
}

void ClearDeviceRecord() {
  const std::lock_guard lock(stateMutex);
  sharedDeviceRecord.fill(0);
}

void StoreSubscription(NotificationHandle subscription) {
  const std::lock_guard lock(stateMutex);
  notificationHandle = subscription;
}

void CancelSubscription() {
  std::unique_lock lock(stateMutex);
  const Cancellation cancellation = TakeSubscription();
  lock.unlock();
  cancellation.CarryOut();
}

void SetUnsubscribeEntry(UnsubscribeEntry entry) {
  const std::lock_guard lock(stateMutex);
  unsubscribeEntry = entry;
}

}  // namespace quaylink
