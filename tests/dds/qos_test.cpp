#include <dds/qos.hpp>

#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "allocations.hpp"
#include "qos/topic_qos_map.hpp"

namespace {

using Helper = DDSPropertyQosPolicyHelper;

DDS_DataWriterQos named_writer_qos(const char* role_name, const char* property_value) {
  DDS_DataWriterQos qos;
  qos.publication_name.name = DDS_String_dup("name");
  qos.publication_name.role_name = DDS_String_dup(role_name);
  EXPECT_EQ(Helper::add_property(qos.property, "property", property_value, true), DDS_RETCODE_OK);
  return qos;
}

TEST(Qos, CopiesAreDeepAndOverwriteWhatWasThereUnlessThereIsNoMemory) {
  DDS_DataWriterQos source = named_writer_qos("role", "value");
  source.history.depth = 7;
  DDS_DataWriterQos copy = named_writer_qos("former role", "former value");
  fail_each_allocation([&] { return DDS_DataWriterQos_copy(&copy, &source) == DDS_RETCODE_OK; },
                       [&] {
                         EXPECT_STREQ(copy.publication_name.role_name, "former role");
                         EXPECT_STREQ(Helper::lookup_property(copy.property, "property")->value, "former value");
                       });
  source.publication_name.role_name[0] = 'X';
  EXPECT_STREQ(copy.publication_name.role_name, "role");
  EXPECT_STREQ(copy.publication_name.name, "name");
  EXPECT_STREQ(Helper::lookup_property(copy.property, "property")->value, "value");
  EXPECT_TRUE(Helper::lookup_property(copy.property, "property")->propagate);
  EXPECT_EQ(copy.history.depth, 7);
  EXPECT_EQ(DDS_DataWriterQos_copy(&copy, &copy), DDS_RETCODE_OK);
  EXPECT_STREQ(copy.publication_name.role_name, "role");

  DDS_DataReaderQos reader, reader_copy;
  reader.subscription_name.role_name = DDS_String_dup("reader");
  reader.reader_resource_limits.max_samples_per_read = 3;
  ASSERT_EQ(DDS_DataReaderQos_copy(&reader_copy, &reader), DDS_RETCODE_OK);
  reader.subscription_name.role_name[0] = 'X';
  EXPECT_STREQ(reader_copy.subscription_name.role_name, "reader");
  EXPECT_EQ(reader_copy.reader_resource_limits.max_samples_per_read, 3);
  EXPECT_EQ(DDS_DataReaderQos_copy(&reader_copy, nullptr), DDS_RETCODE_BAD_PARAMETER);
}

TEST(Properties, AreAddedOnceOrNotAtAllAndFoundByName) {
  DDS_PropertyQosPolicy policy;
  EXPECT_EQ(Helper::lookup_property(policy, "a"), nullptr);
  EXPECT_EQ(Helper::add_property(policy, "a", "1", false), DDS_RETCODE_OK);
  EXPECT_EQ(Helper::add_property(policy, "ab", "2", true), DDS_RETCODE_OK);
  EXPECT_EQ(Helper::add_property(policy, "a", "3", false), DDS_RETCODE_PRECONDITION_NOT_MET);
  EXPECT_EQ(Helper::add_property(policy, nullptr, "3", false), DDS_RETCODE_BAD_PARAMETER);
  EXPECT_EQ(Helper::add_property(policy, "c", nullptr, false), DDS_RETCODE_BAD_PARAMETER);
  EXPECT_EQ(policy.value.length(), 2);
  EXPECT_STREQ(Helper::lookup_property(policy, "a")->value, "1");
  EXPECT_FALSE(Helper::lookup_property(policy, "a")->propagate);
  EXPECT_TRUE(Helper::lookup_property(std::as_const(policy), "ab")->propagate);
  EXPECT_EQ(Helper::lookup_property(policy, nullptr), nullptr);
  fail_each_allocation([&] { return Helper::add_property(policy, "b", "2", false) == DDS_RETCODE_OK; },
                       [&] { EXPECT_EQ(policy.value.length(), 2); });
  EXPECT_STREQ(Helper::lookup_property(policy, "a")->value, "1");
  EXPECT_STREQ(Helper::lookup_property(policy, "b")->value, "2");
  ASSERT_TRUE(policy.value.ensure_length(4, 4));  // one without name
  EXPECT_EQ(Helper::lookup_property(policy, ""), nullptr);
}

TEST(TopicPatterns, MatchWholeNames) {
  struct Case {
    const char* pattern;
    const char* name;
    bool matches;
  };
  for (const Case& c :
       {Case{"", "", true},        {"", "a", false},         {"*", "", true},        {"*", "anything", true},
        {"?", "", false},          {"?", "a", true},         {"?", "ab", false},     {"abc", "abc", true},
        {"abc", "abcd", false},    {"abcd", "abc", false},   {"a*c", "abbbc", true}, {"a*c", "abbbcd", false},
        {"*ab", "aab", true},      {"*ab*", "xxabxx", true}, {"a?c*", "abc", true},  {"*a*b*c*", "1a2b3c", true},
        {"*a*b*c*", "cba", false}, {"**?**", "x", true},     {"**?**", "", false},   {"Calc*Reply", "CalcReply", true},
        {"calc*", "Calc", false}}) {
    EXPECT_EQ(dds::matches_pattern(c.pattern, c.name), c.matches) << c.pattern << " on " << c.name;
  }
  std::string stars;  // which must not explode on a long name
  for (int i = 0; i < 200; ++i) { stars += "*a"; }
  EXPECT_FALSE(dds::matches_pattern((stars + "b").c_str(), std::string(5000, 'a').c_str()));
}

}  // namespace
