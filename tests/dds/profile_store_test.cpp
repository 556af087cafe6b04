#include "qos/profile_store.hpp"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "allocations.hpp"
#include "recorded_log.hpp"

namespace {

DDS_DataWriterQos writer_of_depth(int depth) {
  DDS_DataWriterQos qos;
  qos.history.depth = depth;
  return qos;
}

class Profiles : public testing::Test {
 protected:
  /// The depth in the writer QoS of a profile; minus the return code when there is none.
  int writer_depth(const char* library, const char* profile, const char* topic) {
    DDS_DataWriterQos qos = writer_of_depth(1000);
    const DDS_ReturnCode_t retcode = store_.get_datawriter_qos_from_profile(qos, library, profile, topic);
    EXPECT_TRUE(retcode == DDS_RETCODE_OK || qos.history.depth == 1000) << "a failed get changes nothing";
    return retcode == DDS_RETCODE_OK ? qos.history.depth : -static_cast<int>(retcode);
  }
  DDS_ReturnCode_t set_writer_depth(const char* library, const char* profile, const char* pattern, int depth) {
    return store_.set_profile_datawriter_qos(library, profile, pattern, writer_of_depth(depth));
  }

  dds::ProfileStore store_;
  RecordedLog log_;
};

TEST_F(Profiles, GiveTheFirstMatchingPatternThenTheGeneralSettingThenTheDefaultUntilTheyAreCleared) {
  EXPECT_EQ(set_writer_depth("Library", "Profile", "Calc*", 2), DDS_RETCODE_OK);
  EXPECT_EQ(writer_depth("Library", "Profile", "Other"), DDS_DATAWRITER_QOS_DEFAULT.history.depth);
  EXPECT_EQ(set_writer_depth("Library", "Profile", "*Reply", 3), DDS_RETCODE_OK);
  EXPECT_EQ(set_writer_depth("Library", "Profile", nullptr, 4), DDS_RETCODE_OK);
  EXPECT_EQ(writer_depth("Library", "Profile", "CalcReply"), 2);
  EXPECT_EQ(writer_depth("Library", "Profile", "SortReply"), 3);
  EXPECT_EQ(writer_depth("Library", "Profile", "Other"), 4);
  EXPECT_EQ(writer_depth("Library", "Profile", nullptr), 4);
  EXPECT_EQ(set_writer_depth("Library", "Profile", "*Reply", 5), DDS_RETCODE_OK);
  EXPECT_EQ(set_writer_depth("Library", "Profile", "Calc*", 6), DDS_RETCODE_OK);
  EXPECT_EQ(writer_depth("Library", "Profile", "CalcReply"), 6) << "a pattern that is set again keeps its place";
  EXPECT_EQ(writer_depth("Library", "Profile", "SortReply"), 5);
  EXPECT_TRUE(log_.take_lines().empty());
  store_.clear_profiles();
  EXPECT_EQ(writer_depth("Library", "Profile", "T"), -DDS_RETCODE_BAD_PARAMETER);
}

TEST_F(Profiles, KeepReadersAndWritersAndEqualNamesOfOtherLibrariesApart) {
  DDS_DataReaderQos reader;
  reader.history.depth = 5;
  EXPECT_EQ(store_.set_profile_datareader_qos("A", "P", nullptr, reader), DDS_RETCODE_OK);
  EXPECT_EQ(set_writer_depth("B", "P", nullptr, 6), DDS_RETCODE_OK);
  DDS_DataReaderQos found;
  EXPECT_EQ(store_.get_datareader_qos_from_profile(found, "A", "P", "T"), DDS_RETCODE_OK);
  EXPECT_EQ(found.history.depth, 5);
  EXPECT_EQ(store_.get_datareader_qos_from_profile(found, "B", "P", "T"), DDS_RETCODE_OK);
  EXPECT_EQ(found.history.depth, DDS_DATAREADER_QOS_DEFAULT.history.depth);
  EXPECT_EQ(writer_depth("A", "P", "T"), DDS_DATAWRITER_QOS_DEFAULT.history.depth);
  EXPECT_EQ(writer_depth("B", "P", "T"), 6);
}

TEST_F(Profiles, ThatAreUnknownOrHaveNoLibraryOrNameAreRefusedWithALineThatSaysSo) {
  EXPECT_EQ(set_writer_depth("Library", "Profile", nullptr, 2), DDS_RETCODE_OK);
  EXPECT_EQ(set_writer_depth("Other", "", nullptr, 2), DDS_RETCODE_OK);
  EXPECT_EQ(writer_depth("Other", "", "T"), 2);
  struct Case {
    const char *library, *profile, *fault;
    bool sets = false;
  };
  for (const Case& c :
       {Case{"Lib", "Profile", "unknown QoS library \"Lib\""},
        Case{"Library", "", "unknown QoS profile \"\" in library \"Library\""},
        Case{"Library", "Profiles", "unknown QoS profile \"Profiles\" in library \"Library\""},
        Case{"", "Profile", "empty QoS library name", true}, Case{nullptr, "Profile", "null QoS library name", true},
        Case{"Library", nullptr, "null QoS profile name", true}, Case{nullptr, "Profile", "null QoS library name"},
        Case{"Library", nullptr, "null QoS profile name"}}) {
    EXPECT_EQ(c.sets ? -set_writer_depth(c.library, c.profile, nullptr, 2) : writer_depth(c.library, c.profile, "T"),
              -DDS_RETCODE_BAD_PARAMETER);
    EXPECT_EQ(log_.take_text(), std::string("bad parameter: ") + c.fault);
  }
}

TEST_F(Profiles, ExhaustedMemoryLeavesNoHalfMadeProfile) {
  const std::string library(100, 'L');
  DDS_DataWriterQos qos;
  qos.publication_name.name = DDS_String_dup("name");
  const auto set = [&](const char* pattern) {
    return store_.set_profile_datawriter_qos(library.c_str(), "P", pattern, qos) == DDS_RETCODE_OK;
  };
  DDS_DataWriterQos found;
  const auto get = [&](const char* topic) {
    return store_.get_datawriter_qos_from_profile(found, library.c_str(), "P", topic) == DDS_RETCODE_OK;
  };
  fail_each_allocation([&] { return set("T*"); },
                       [&] { EXPECT_EQ(writer_depth(library.c_str(), "P", "T"), -DDS_RETCODE_BAD_PARAMETER); });
  fail_each_allocation([&] { return get("T"); }, [&] { EXPECT_EQ(found.publication_name.name, nullptr); });
  EXPECT_STREQ(found.publication_name.name, "name");

  // Settings of a profile that is there.
  qos.publication_name.role_name = DDS_String_dup("role");
  const char long_pattern[] = "Another topic, with a long name";
  for (const char* pattern : {"T*", long_pattern, static_cast<const char*>(nullptr)}) {
    const char* topic = pattern == nullptr ? "Else" : pattern;
    fail_each_allocation([&] { return set(pattern); },
                         [&] {
                           ASSERT_TRUE(get(topic));
                           EXPECT_EQ(found.publication_name.role_name, nullptr);
                         });
    ASSERT_TRUE(get(topic));
    EXPECT_STREQ(found.publication_name.role_name, "role");
  }
}

TEST_F(Profiles, MaySetAndGetOnSeveralThreads) {
  ASSERT_EQ(set_writer_depth("Library", "Profile", nullptr, 1), DDS_RETCODE_OK);
  std::vector<std::thread> threads;
  for (int t = 1; t <= 2; ++t) {
    threads.emplace_back([this, t] {
      for (int i = 0; i < 500; ++i) {
        EXPECT_EQ(set_writer_depth("Library", "Profile", nullptr, t), DDS_RETCODE_OK);
        const int depth = writer_depth("Library", "Profile", "T");
        EXPECT_TRUE(depth == 1 || depth == 2);
      }
    });
  }
  for (std::thread& thread : threads) { thread.join(); }
}

}  // namespace
