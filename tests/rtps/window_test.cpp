// Who gets the room that there is on the way to a participant.

#include "rtps/window.hpp"

#include <gtest/gtest.h>

namespace dds::rtps {
namespace {

constexpr std::size_t kWhole = kMostUnacknowledged - kPacketOverhead;  // fills the window by itself

class OfAWindow : public ::testing::Test {
 protected:
  ~OfAWindow() override { window_->close(); }

  bool acquire(std::size_t octets) { return window_->acquire(octets, true); }
  void release(std::size_t octets) { window_->on_released(octets); }

  EventCount released_;
  const RefPtr<Window> window_ = RefPtr<Window>::adopt(new Window(released_));
};

// Small packets that come one after another would never leave it room, nor an idle window.
TEST_F(OfAWindow, APacketThatIsWaitedForIsNotOvertakenForEver) {
  for (const std::size_t large : {kWhole, 2 * kWhole}) {
    ASSERT_TRUE(acquire(100));
    ASSERT_TRUE(acquire(100));
    ASSERT_FALSE(acquire(large));
    EXPECT_FALSE(acquire(100));
    release(100);
    EXPECT_FALSE(acquire(100));
    release(100);
    EXPECT_FALSE(acquire(100)) << "the idle window is for the one that waits";
    EXPECT_TRUE(acquire(large));
    EXPECT_FALSE(acquire(100));
    release(large);
    EXPECT_TRUE(acquire(100));
    release(100);
    window_->give_up(100);
  }
}

TEST_F(OfAWindow, OthersGoOnWhenTheLargestWaitsNoMoreAndNotWhenASmallerOneDoes) {
  ASSERT_TRUE(acquire(100));
  ASSERT_FALSE(acquire(kWhole));
  ASSERT_FALSE(acquire(200));
  window_->give_up(200);
  EXPECT_FALSE(acquire(100));
  window_->give_up(kWhole);
  EXPECT_TRUE(acquire(100));
  release(100);
  release(100);
}

TEST_F(OfAWindow, RoomIsLeftToALargerPacketAndWhatIsBesideItIsUsed) {
  ASSERT_TRUE(acquire(kWhole / 2));
  ASSERT_FALSE(acquire(kWhole * 3 / 4));
  EXPECT_FALSE(acquire(kWhole / 4));
  release(kWhole / 2);
  EXPECT_TRUE(acquire(kWhole / 8));
  EXPECT_TRUE(acquire(kWhole * 3 / 4));
  release(kWhole / 8);
  release(kWhole * 3 / 4);
  EXPECT_TRUE(window_->is_idle());
}

}  // namespace
}  // namespace dds::rtps
