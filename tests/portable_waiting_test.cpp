// Waiting for a phone to be announced. Time is the machine's: no test waits for two seconds.
#include <gmock/gmock.h>

#include <thread>

#include "mobile/device_notification.h"
#include "platform/portable/machine.h"
#include "support/attached_phone.h"

namespace quaylink {
namespace {

using stand_in::Announcement;
using testing::Each;
using testing::SizeIs;

class Waiting : public testing::Test {
 protected:
  // The attached phone is announced at the n-th wait of the bridge.
  void AnnounceAtWait(std::size_t n) {
    portable::CurrentMachine().sleep = [this, n](DWORD milliseconds) {
      waits_.push_back(milliseconds);
      if (waits_.size() == n) attached_.phone.Announce();
    };
  }
  std::size_t CountCancellations() const {
    return attached_.phone.Log("AMDeviceNotificationUnsubscribe").size();
  }

  AttachedPhone attached_{{.announcement = Announcement::kNever}};
  std::vector<DWORD> waits_;
};

TEST_F(Waiting, GoesOnAtTheNextTestOnceThePhoneIsAnnounced) {
  AnnounceAtWait(19);
  EXPECT_EQ(attached_.bridge->Connect(true), 1);
  EXPECT_THAT(waits_, SizeIs(19));
  EXPECT_EQ(CountCancellations(), 1U);
  attached_.bridge->Disconnect();
}

TEST_F(Waiting, EndsAfterTwentyTestsAndALaterPhoneIsKnownToTheNextAttempt) {
  AnnounceAtWait(20);
  EXPECT_EQ(attached_.bridge->Connect(true), 0);
  EXPECT_THAT(waits_, Each(100));
  EXPECT_EQ(CountCancellations(), 1U);
  EXPECT_EQ(attached_.bridge->Connect(true), 1);
  EXPECT_THAT(waits_, SizeIs(20));
  EXPECT_EQ(CountCancellations(), 2U);
  attached_.bridge->Disconnect();
}

TEST_F(Waiting, LooksAtAnotherWordWithTheLibrariesOfTheWorkFolder) {
  for (const bool fromWorkFolder : {false, true}) {
    for (const bool rightWord : {false, true}) {
      SCOPED_TRACE(testing::Message() << fromWorkFolder << rightWord);
      waits_.clear();
      AnnounceAtWait(1);
      attached_.bridge->loadedFromWorkFolder = fromWorkFolder ? 1 : 0;
      attached_.phone.setUp.readyWord = fromWorkFolder == rightWord ? 0 : 0x80;
      attached_.phone.setUp.workFolderReadyWord = fromWorkFolder == rightWord ? 0x01000000 : 0;
      EXPECT_EQ(attached_.bridge->Connect(true), rightWord ? 1 : 0);
      EXPECT_THAT(waits_, SizeIs(rightWord ? 1 : 20));
      attached_.bridge->Disconnect();
    }
  }
}

// Run under the thread sanitizer, this shows that the record is published whole. The stand-in
// compares all of its bytes at every call.
TEST_F(Waiting, APhoneMayBeAnnouncedFromAnotherThread) {
  constexpr int kRepetitions = 300;
  attached_.phone.setUp.announcement = Announcement::kFromAnotherThread;
  for (int i = 0; i < kRepetitions; ++i) {
    int wait = 0;
    portable::CurrentMachine().sleep = [&wait](DWORD) {
      std::this_thread::sleep_for(std::chrono::microseconds(50) * wait * wait);
      ++wait;
    };
    attached_.phone.setUp.announcementDelay = std::chrono::microseconds(i % 4 * 40);
    ASSERT_EQ(attached_.bridge->Connect(true), 1);
    attached_.bridge->Disconnect();
  }
  EXPECT_EQ(CountCancellations(), kRepetitions);
}

}  // namespace
}  // namespace quaylink
