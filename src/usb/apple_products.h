// The products that are looked for, each with its USB product id and the road that leads to it. The
// position of a row is the product's device type code; new products go at the end.
#pragma once

#include <cstddef>
#include <cstdint>

namespace quaylink {

// A player in disk mode is a drive. A phone is reached through the vendor's libraries.
enum class ProductKind { kPlayer, kPhone };

struct AppleProduct {
  std::uint16_t id;
  ProductKind kind;
};

inline constexpr AppleProduct AppleProductIdTable[] = {  // NOLINT(readability-identifier-naming)
    {0x1201, ProductKind::kPlayer}, {0x1203, ProductKind::kPlayer}, {0x1204, ProductKind::kPlayer},
    {0x1205, ProductKind::kPlayer}, {0x1209, ProductKind::kPlayer}, {0x120A, ProductKind::kPlayer},
    {0x1260, ProductKind::kPlayer}, {0x1261, ProductKind::kPlayer}, {0x1262, ProductKind::kPlayer},
    {0x1290, ProductKind::kPhone},  {0x1291, ProductKind::kPhone},  {0x1292, ProductKind::kPhone},
    {0x1300, ProductKind::kPlayer}, {0x1301, ProductKind::kPlayer}, {0x1263, ProductKind::kPlayer},
    {0x1293, ProductKind::kPhone},  {0x1294, ProductKind::kPhone},  {0x129A, ProductKind::kPhone}};

inline bool IsPhone(std::int32_t typeCode) {
  return AppleProductIdTable[static_cast<std::size_t>(typeCode)].kind == ProductKind::kPhone;
}

}  // namespace quaylink
