// Makes a library that cannot be loaded without MobileDevice.dll.
extern "C" bool CompanionIsThere();

namespace quaylink::stand_in {

const bool kCompanionIsThere = CompanionIsThere();

}  // namespace quaylink::stand_in
