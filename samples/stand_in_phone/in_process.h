// The stand-in as libraries that need not be loaded.
#pragma once

#include "mobile/phone_libraries.h"
#include "stand_in_phone/stand_in_phone.h"

namespace quaylink::stand_in {

// Every entry point is one of the stand-in's functions, which act on the current phone.
PhoneLibraries InProcessLibraries();

}  // namespace quaylink::stand_in
