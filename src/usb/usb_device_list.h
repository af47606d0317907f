// The attached Apple USB devices, as Windows' Plug and Play tree in the registry tells them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace quaylink {

// The USB product ids that are looked for. The position of an id is its device type code.
inline constexpr std::uint16_t AppleProductIdTable[] = {  // NOLINT(readability-identifier-naming)
    0x1201, 0x1203, 0x1204, 0x1205, 0x1209, 0x120A, 0x1260, 0x1261, 0x1262,
    0x1290, 0x1291, 0x1292, 0x1300, 0x1301, 0x1263, 0x1293, 0x1294, 0x129A};

struct UsbDeviceEntry {
  std::int32_t typeCode;
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
