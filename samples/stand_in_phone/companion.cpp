// All of MobileDevice.dll, which the vendor's other library may need.
extern "C" bool CompanionIsThere() {
  return true;
}
