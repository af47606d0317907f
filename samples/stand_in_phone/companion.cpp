// All of MobileDevice.dll, which the maker's other library may need.
extern "C" bool CompanionIsThere() {
  return true;
}
