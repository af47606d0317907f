// Waiting for a phone to be announced. Time is the machine's: no test waits for two seconds.
#include <gmock/gmock.h>
#include <sys/mman.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <thread>

#include "mobile/device_notification.h"
#include "platform/portable/machine.h"
#include "support/attached_phone.h"

namespace quaylink::test {
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
  EXPECT_EQ(CountCancellations(), 1u);
  attached_.bridge->Disconnect();
}

TEST_F(Waiting, EndsAfterTwentyTestsAndALaterPhoneIsKnownToTheNextAttempt) {
  AnnounceAtWait(20);
  EXPECT_EQ(attached_.bridge->Connect(true), 0);
  EXPECT_THAT(waits_, Each(100));
  EXPECT_EQ(CountCancellations(), 1u);
  EXPECT_EQ(attached_.bridge->Connect(true), 1);
  EXPECT_THAT(waits_, SizeIs(20));
  EXPECT_EQ(CountCancellations(), 2u);
  attached_.bridge->Disconnect();
}

TEST_F(Waiting, LooksAtAnotherWordWithTheLibrariesOfTheWorkFolder) {
  for (const bool fromWorkFolder : {false, true}) {
    for (const bool rightWord : {false, true}) {
      SCOPED_TRACE(testing::Message() << fromWorkFolder << rightWord);
      waits_.clear();
      AnnounceAtWait(1);
      attached_.bridge->libraries.loadedFromWorkFolder = fromWorkFolder;
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

// A device record whose bytes cannot be read until something was tried in the middle of its
// copying.
std::atomic<bool> copyingBegins = false;
std::atomic<bool> wordWasRead = false;
bool wordWasReadInBetween = false;
void* unreadablePage = nullptr;
const std::size_t kPageSize = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));

void OnUnreadable(int) {
  copyingBegins = true;
  for (int i = 0; i < 50 && !wordWasRead; ++i) ::usleep(1000);
  wordWasReadInBetween = wordWasRead;
  ::mprotect(unreadablePage, kPageSize, PROT_READ);
}

TEST_F(Waiting, NoWordIsReadWhileTheRecordIsCopied) {
  unreadablePage = ::mmap(nullptr, kPageSize, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  ASSERT_NE(unreadablePage, MAP_FAILED);
  struct sigaction action = {};
  struct sigaction earlier = {};
  action.sa_handler = OnUnreadable;
  ASSERT_EQ(::sigaction(SIGSEGV, &action, &earlier), 0);
  std::thread reader([] {
    while (!copyingBegins) std::this_thread::yield();
    static_cast<void>(DeviceRecordWord(0));
    wordWasRead = true;
  });
  const NotificationRecord record{unreadablePage};
  OnDeviceNotification(&record);
  reader.join();
  ::sigaction(SIGSEGV, &earlier, nullptr);
  ::munmap(unreadablePage, kPageSize);
  EXPECT_FALSE(wordWasReadInBetween);
}

}  // namespace
}  // namespace quaylink::test
