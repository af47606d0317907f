#include "stand_in_phone/in_process.h"

namespace quaylink::stand_in {

PhoneLibraries InProcessLibraries() {
  PhoneLibraries libraries;
  libraries.areLoaded = true;
  libraries.entryPoints = {
      .cfStringCreateWithCString = CFStringCreateWithCString,
      .cfAllocatorGetDefault = CFAllocatorGetDefault,
      .cfStringGetSystemEncoding = CFStringGetSystemEncoding,
      .amDeviceNotificationSubscribe = AMDeviceNotificationSubscribe,
      .amDeviceConnect = AMDeviceConnect,
      .amDeviceDisconnect = AMDeviceDisconnect,
      .amDeviceStartSession = AMDeviceStartSession,
      .amDeviceStopSession = AMDeviceStopSession,
      .amDeviceStartService = AMDeviceStartService,
      .amDeviceIsPaired = AMDeviceIsPaired,
      .amDeviceValidatePairing = AMDeviceValidatePairing,
      .amDevicePair = AMDevicePair,
      .afcConnectionOpen = AFCConnectionOpen,
      .afcConnectionClose = AFCConnectionClose,
      .afcDirectoryOpen = AFCDirectoryOpen,
      .afcDirectoryClose = AFCDirectoryClose,
      .afcDirectoryRead = AFCDirectoryRead,
      .afcFileRefOpen = AFCFileRefOpen,
      .afcFileRefRead = AFCFileRefRead,
      .afcFileRefClose = AFCFileRefClose,
      .afcFileInfoOpen = AFCFileInfoOpen,
      .afcKeyValueRead = AFCKeyValueRead,
      .afcKeyValueClose = AFCKeyValueClose,
      .amDeviceNotificationUnsubscribe = AMDeviceNotificationUnsubscribe,
  };
  return libraries;
}

}  // namespace quaylink::stand_in
