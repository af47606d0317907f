// The attached Apple USB devices, as Windows' Plug and Play tree in the registry tells them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace quaylink {

struct UsbDeviceEntry {
  std::int32_t typeCode;  // a position in AppleProductIdTable
};

// A list lives for one detection: nothing is kept from one to the next.
class UsbDeviceList {
 public:
  // Appends an entry for every device that is attached now, in the registry's order. The result is
  // the number of entries in the list, or -1 when a listing of the registry failed; entries
  // appended until then stay.
  std::int32_t Enumerate();

  // The type code of an entry. Throws std::out_of_range beyond the end of the list.
  std::int32_t TypeAt(std::size_t index) const;

 private:
  // Appends the attached instances of one product. False when their listing failed.
  bool AppendInstances(std::string_view hardwareId, std::int32_t typeCode);

  std::vector<UsbDeviceEntry> entries_;
};

}  // namespace quaylink
