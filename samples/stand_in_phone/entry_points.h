// The stand-in's entry points, which all act on one current phone.
#pragma once

#include "mobile/entry_points.h"
#include "stand_in_phone/stand_in_phone.h"

namespace quaylink::stand_in {

// The phone that the entry points act on: the given one, or the one that the environment describes
// as long as none was given.
StandInPhone& CurrentPhone();
void SetCurrentPhone(StandInPhone* phone);

// All slots filled with the stand-in's functions.
EntryPoints AllEntryPoints();
// The one entry point that has no slot.
Status QUAYLINK_CALL UnsubscribeFromCurrentPhone(NotificationHandle subscription);

}  // namespace quaylink::stand_in
