#include <dds/time.hpp>

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <ostream>

void PrintTo(const DDS_Duration_t& duration, std::ostream* out) {
  *out << duration.sec << " s " << duration.nanosec << " ns";
}

namespace {

constexpr std::int32_t min_sec = std::numeric_limits<std::int32_t>::min();
constexpr DDS_Duration_t largest{0x7ffffffe, 999999999};
constexpr DDS_Duration_t smallest{-0x7fffffff, 0};

TEST(Time, ADifferenceBorrowsASecondAndIsHeldAtTheFiniteLimitsUnlessItIsOfAnInfiniteTime) {
  EXPECT_EQ((DDS_Time_t{10, 100} - DDS_Time_t{8, 200}), (DDS_Duration_t{1, 999999900}));
  EXPECT_EQ((DDS_Time_t{10, 200} - DDS_Time_t{8, 200}), (DDS_Duration_t{2, 0}));
  EXPECT_EQ((DDS_Time_t{8, 200} - DDS_Time_t{10, 100}), (DDS_Duration_t{-2, 100}));
  EXPECT_EQ((DDS_Time_t{0x7fffffff, 0} - DDS_Time_t{min_sec, 0}), largest);
  EXPECT_EQ((DDS_Time_t{min_sec, 0} - DDS_Time_t{0x7fffffff, 0xffffffff}), smallest);
  struct Case {
    DDS_Duration_t a, b, difference;
  };
  for (const Case& c :
       {Case{{3, 0}, {1, 1}, {1, 999999999}}, Case{{0, 0}, {0, 1}, {-1, 999999999}},
        Case{{-1, 999999999}, {0, 999999999}, {-1, 0}}, Case{DDS_DURATION_INFINITE, {5, 6}, DDS_DURATION_INFINITE},
        Case{DDS_DURATION_INFINITE, DDS_DURATION_INFINITE, DDS_DURATION_INFINITE},
        Case{DDS_DURATION_INFINITE, {-5, 6}, DDS_DURATION_INFINITE}, Case{{0x7ffffffe, 0}, {-5, 0}, largest},
        Case{{min_sec, 0}, {5, 0}, smallest}, Case{{1, 0}, DDS_DURATION_INFINITE, smallest}}) {
    EXPECT_EQ(c.a - c.b, c.difference);
  }
}

TEST(Time, NanosecondsAndDurationsAreEachOthersInverse) {
  for (const DDS_Duration_t& duration : {DDS_DURATION_ZERO, largest, smallest, DDS_Duration_t{-1, 1},
                                         DDS_Duration_t{0, 999999999}, DDS_Duration_t{1, 500000000}}) {
    EXPECT_EQ(dds::to_duration(dds::to_nanoseconds(duration.sec, duration.nanosec)), duration);
  }
  EXPECT_EQ(dds::to_duration(std::numeric_limits<std::int64_t>::max()), largest);
  EXPECT_EQ(dds::to_duration(std::numeric_limits<std::int64_t>::min()), smallest);
}

}  // namespace
