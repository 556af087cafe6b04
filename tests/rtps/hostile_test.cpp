// What a participant makes of octets that no participant of ours has sent.

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "rtps/receiver.hpp"
#include "support/log_recorder.hpp"

namespace rtps_test {
namespace {

class Hostile : public ::testing::Test {
 protected:
  Hostile() { receiver.begin_session(); }

  /// The frame is dropped, counted and leaves a line, and what follows it arrives.
  void expect_dropped(const Frame& frame, const char* line) {
    const DDS_LongLong before = receiver.malformed_messages();
    receiver.receive(frame);
    EXPECT_EQ(receiver.malformed_messages(), before + 1);
    receiver.receive(string_sample(guid(1), ++number, "after"));
    EXPECT_EQ(receiver.take_strings(), std::vector<std::string>{"after"});
    while (lines_with(line) == 0) { std::this_thread::sleep_for(std::chrono::milliseconds(1)); }
    EXPECT_EQ(lines_with(line), 1);
    recorder.clear();
  }
  int lines_with(const std::string& text) const {
    int count = 0;
    for (const support::LogLine& line : recorder.other_lines()) {
      count += line.text.find(text) != std::string::npos ? 1 : 0;
    }
    return count;
  }

  support::LogRecorder recorder;
  Receiver receiver;
  std::uint32_t number = 0;
};

TEST_F(Hostile, PrefixesThatAreNone) {
  const Frame good = string_sample(guid(1), 1, "text");
  const std::pair<std::size_t, unsigned char> changes[] = {{0, 1}, {4, 2},   {5, 0},    {5, 99},
                                                           {6, 4}, {72, 99}, {75, 0xff}};
  for (const auto& [position, value] : changes) {
    Frame bad = good;
    bad[position] = value;
    expect_dropped(bad, "none of this version");
  }
  expect_dropped(Frame(good.begin(), good.begin() + 87), "none of this version");
  expect_dropped({}, "none of this version");
}

TEST_F(Hostile, SamplesThatDoNotDecode) {
  Frame unterminated = string_sample(guid(1), 1, "text");
  unterminated.back() = 'x';
  expect_dropped(unterminated, "does not decode");
  Frame long_string = string_sample(guid(1), 1, "text");
  long_string[dds::rtps::kPrefixSize + 7] = 0x7f;
  expect_dropped(long_string, "does not decode");
}

TEST_F(Hostile, SamplesOfWritersThatNobodyHasSpokenOf) {
  expect_dropped(string_sample(guid(99), 1, "text"), "nobody has spoken of");
}

TEST_F(Hostile, ReservationsThatWereNeverMade) {
  Prefix prefix;
  prefix.kind = FrameKind::commit;
  prefix.identity = {guid(1), {0, 1}};
  prefix.token = 7;
  expect_dropped(make_frame(prefix), "does not decode");
}

// A string's encoding is one of octets as well.
TEST_F(Hostile, AReaderThatMayBeFullTakesNothingUnasked) {
  for (std::uint32_t i = 1; i <= 5; ++i) { receiver.receive(string_sample(guid(3), i, "text")); }
  receiver.receive(string_sample(guid(1), 1, "text"));
  EXPECT_EQ(receiver.take_strings(), std::vector<std::string>{"text"});
  EXPECT_EQ(receiver.taken(), 1);
  EXPECT_EQ(receiver.malformed_messages(), 0);
}

TEST_F(Hostile, OneWhoSpeaksIsOneParticipant) {
  Frame payload(dds::rtps::kHelloSize, 1);
  Prefix prefix;
  prefix.identity.writer_guid = guid(50);
  expect_dropped(make_frame(prefix, payload), "a greeting");
}

TEST_F(Hostile, AnnouncementsThatAreNone) {
  Prefix prefix;
  prefix.kind = FrameKind::reader;
  prefix.identity.writer_guid = guid(60);
  expect_dropped(make_frame(prefix, {1, 0xff, 0xff, 0xff, 0xff}), "an endpoint");
  prefix.kind = FrameKind::withdrawn;
  expect_dropped(make_frame(prefix), "an endpoint");
  // A writer that is there already.
  prefix.kind = FrameKind::writer;
  prefix.identity.writer_guid = guid(1);
  expect_dropped(make_frame(prefix, {}), "an endpoint");
}

TEST_F(Hostile, WhoeverSendsMuchOfItDoesNotFillTheLog) {
  for (int i = 0; i < 1000; ++i) { receiver.receive({1, 2, 3}); }
  EXPECT_EQ(receiver.malformed_messages(), 1000);
  while (lines_with("(1000 dropped so far)") == 0) { std::this_thread::sleep_for(std::chrono::milliseconds(1)); }
  EXPECT_EQ(recorder.other_lines().size(), 28u) << "1 to 10, then tens, then hundreds";
}

}  // namespace
}  // namespace rtps_test
