// How a playlist's identifier is made of a GUID and a random number.

#include <gtest/gtest.h>

#include <set>

#include "itunesdb/playlists.h"
#include "platform/portable/machine.h"
#include "support/test_machine.h"

namespace quaylink {
namespace {

TEST(NewPersistentIdTest, CombinesThreePartsOfTheGuidWithFifteenRandomBits) {
  TestMachine machine;
  std::uint64_t seen = 0;
  portable::CurrentMachine().createGuid = [](GUID* guid) {
    *guid = {0x12345678, 0x9ABC, 0x8004, {1, 2, 3, 4, 5, 6, 7, 8}};
    return S_OK;
  };
  for (int i = 0; i < 200; ++i) {
    const std::uint64_t id = NewPersistentId();
    EXPECT_EQ(id >> 16, 0x12345678'9ABCU) << "nothing is carried into the upper parts";
    EXPECT_EQ(id & 0x8004, 0x8004U);
    seen |= id;
  }
  EXPECT_EQ(seen & 0xFFFF, 0xFFFFU);
}

TEST(NewPersistentIdTest, DrawsFromTheSystemWhenThereIsNoGuid) {
  TestMachine machine;
  portable::CurrentMachine().createGuid = [](GUID* guid) {
    *guid = {};
    return E_FAIL;
  };
  std::set<std::uint64_t> ids;
  for (int i = 0; i < 100; ++i) ids.insert(NewPersistentId() >> 16);
  EXPECT_EQ(ids.size(), 100U);
}

}  // namespace
}  // namespace quaylink
