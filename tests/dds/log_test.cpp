#include "log/log.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "recorded_log.hpp"

namespace {

/// Gives the masks back as they were.
class Log : public testing::Test {
 protected:
  ~Log() override {
    DDSLog_g_instrumentationMask = instrumentation_mask_;
    DDSLog_g_submoduleMask = submodule_mask_;
  }

  void print(const QVXLogMessage& log_template, const char* argument) {
    QVXLogMessage_printWithParams(-1, DDS_LOG_LEVEL_INFORMATION, 0xF0000, "a/file.cpp", 12, "Context", &log_template,
                                  argument);
  }

  RecordedLog log_;

 private:
  const unsigned int instrumentation_mask_ = DDSLog_g_instrumentationMask;
  const unsigned int submodule_mask_ = DDSLog_g_submoduleMask;
};

TEST_F(Log, OnlyTheFirstPlaceholderIsFilledAndTheArgumentIsTakenAsItIs) {
  const QVXLogMessage twice{"<%s> %s %d"};
  print(twice, "100% of %s");
  EXPECT_EQ(log_.take_text(), "<100% of %s> %s %d");
  const QVXLogMessage none{"nothing to fill"};
  print(none, "argument");
  EXPECT_EQ(log_.take_text(), "nothing to fill");
  print(QVX_LOG_ANY_s, nullptr);
  EXPECT_EQ(log_.take_text(), "(null)");
}

TEST_F(Log, LongTextsAreCutAndNothingIsAllocated) {
  const std::string argument(5000, 'x');
  const int before = allocation_count();
  print(DDS_LOG_UNSUPPORTED_s, argument.c_str());
  DDS_LOG_FAILURE("Context", QVX_LOG_ANY_s, "%s", argument.c_str());
  EXPECT_EQ(allocation_count(), before);
  const std::vector<RecordedLog::Line> lines = log_.take_lines();
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0].text, "unsupported: " + std::string(1023 - 13, 'x'));
  EXPECT_EQ(lines[1].text, std::string(1023, 'x'));
}

TEST_F(Log, FailuresOfThisLayerObeyBothMasksOfWhichInformationAloneIsOffByDefault) {
  EXPECT_FALSE(DDSLog_g_instrumentationMask & DDS_LOG_LEVEL_INFORMATION);
  EXPECT_TRUE(DDSLog_g_submoduleMask & DDS_LOG_SUBMODULE_REQUEST_REPLY);
  DDS_LOG_FAILURE("Context", QVX_LOG_ANY_FAILURE_s, "%d of %s", 3, "four");
  const int line = __LINE__ - 1;
  const std::vector<RecordedLog::Line> lines = log_.take_lines();
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_EQ(lines[0].text, "failure: 3 of four");
  EXPECT_EQ(lines[0].level, static_cast<int>(DDS_LOG_LEVEL_FAILURE));
  EXPECT_EQ(lines[0].line, line);
  EXPECT_EQ(lines[0].context, "Context");
  EXPECT_EQ(lines[0].log_template, &QVX_LOG_ANY_FAILURE_s);
  EXPECT_NE(lines[0].file.find("log_test.cpp"), std::string::npos);

  DDSLog_g_instrumentationMask &= ~DDS_LOG_LEVEL_FAILURE;
  DDS_LOG_FAILURE("Context", QVX_LOG_ANY_FAILURE_s, "not shown");
  DDSLog_g_instrumentationMask = DDS_LOG_LEVEL_FAILURE;
  DDSLog_g_submoduleMask &= ~DDS_LOG_SUBMODULE_DDS;
  DDS_LOG_FAILURE("Context", QVX_LOG_ANY_FAILURE_s, "not shown");
  print(QVX_LOG_ANY_s, "the print itself asks no mask");
  EXPECT_EQ(log_.take_text(), "the print itself asks no mask");
}

TEST_F(Log, TheDefaultSinkWritesOneLineToStderrWhateverTheTextHolds) {
  DDSLog_set_sink(nullptr, nullptr);
  testing::internal::CaptureStderr();
  print(QVX_LOG_REMOVE_FAILURE_s, "a topic\nforged: line\t");
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "a/file.cpp:12: Context: failed to remove: a topic forged: line \n");
  EXPECT_TRUE(log_.take_lines().empty());
}

std::atomic<int> own_calls[2];
std::atomic<int> foreign_calls{0};

template <int index>
void count_call(void* param, int, const char*, int, const char*, const QVXLogMessage*, const char*) {
  ++(param == &own_calls[index] ? own_calls[index] : foreign_calls);
}

TEST_F(Log, ASinkIsAlwaysCalledWithItsOwnParameterWhileSinksAreReplaced) {
  DDSLog_set_sink(&count_call<0>, &own_calls[0]);
  std::thread writer([this] {
    for (int i = 0; i < 5000; ++i) { print(QVX_LOG_ANY_s, "text"); }
  });
  for (int i = 0; i < 5000; ++i) {
    DDSLog_set_sink(&count_call<1>, &own_calls[1]);
    DDSLog_set_sink(&count_call<0>, &own_calls[0]);
  }
  writer.join();
  EXPECT_EQ(own_calls[0] + own_calls[1], 5000);
  EXPECT_EQ(foreign_calls, 0);
}

}  // namespace
