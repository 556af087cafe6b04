#include <dds/builtin_types.hpp>

#include <gtest/gtest.h>

#include "recorded_log.hpp"

namespace {

/// The least that a content-filtered topic is.
class FilteredTopic : public DDSContentFilteredTopic {
 public:
  const char* get_name() override { return "filtered"; }
  const char* get_type_name() override { return "type"; }
  DDSDomainParticipant* get_participant() override { return nullptr; }
  DDSTopic* get_related_topic() override { return nullptr; }
  const char* get_filter_expression() override { return ""; }
  DDS_ReturnCode_t get_expression_parameters(DDS_StringSeq& /*parameters*/) override { return DDS_RETCODE_OK; }
};

/// The least that a topic is.
class Topic : public DDSTopic {
 public:
  const char* get_name() override { return "topic"; }
  const char* get_type_name() override { return "type"; }
  DDSDomainParticipant* get_participant() override { return nullptr; }
  DDS_ReturnCode_t get_qos(DDS_TopicQos& /*qos*/) override { return DDS_RETCODE_OK; }
  DDSStatusCondition* get_statuscondition() override { return nullptr; }
  DDS_StatusMask get_status_changes() override { return DDS_STATUS_MASK_NONE; }
  DDS_InstanceHandle_t get_instance_handle() override { return DDS_HANDLE_NIL; }
};

TEST(Narrowing, TellsTheKindsOfTopicDescriptionsApart) {
  FilteredTopic filtered;
  Topic topic;
  EXPECT_EQ(DDSContentFilteredTopic::narrow(&filtered), &filtered);
  EXPECT_EQ(DDSTopic::narrow(&filtered), nullptr);
  EXPECT_EQ(DDSTopic::narrow(&topic), &topic);
  EXPECT_EQ(DDSContentFilteredTopic::narrow(&topic), nullptr);
}

TEST(Narrowing, OfNullIsNull) {
  EXPECT_EQ(DDSTopic::narrow(nullptr), nullptr);
  EXPECT_EQ(DDSContentFilteredTopic::narrow(nullptr), nullptr);
  EXPECT_EQ(DDSStringDataWriter::narrow(nullptr), nullptr);
  EXPECT_EQ(DDSKeyedOctetsDataReader::narrow(nullptr), nullptr);
}

TEST(TypeSupport, NamesItsTypeAndNeedsAParticipant) {
  RecordedLog log;
  EXPECT_STREQ(DDSStringTypeSupport::get_type_name(), "DDS::String");
  EXPECT_STREQ(DDSKeyedStringTypeSupport::get_type_name(), "DDS::KeyedString");
  EXPECT_STREQ(DDSOctetsTypeSupport::get_type_name(), "DDS::Octets");
  EXPECT_STREQ(DDSKeyedOctetsTypeSupport::get_type_name(), "DDS::KeyedOctets");
  EXPECT_EQ(DDSStringTypeSupport::register_type(nullptr, nullptr), DDS_RETCODE_BAD_PARAMETER);
  EXPECT_EQ(log.take_text(), "bad parameter: null participant for type DDS::String");
  EXPECT_EQ(DDSKeyedOctetsTypeSupport::register_type(nullptr, "name"), DDS_RETCODE_BAD_PARAMETER);
}

TEST(TypeSupport, OfATypeDescribedAtRunTimeIsToldApart) {
  DDSDynamicDataTypeSupport dynamic;
  DDSStringTypeSupport string;
  const DDSTypeSupport* supports[] = {&dynamic, &string};
  EXPECT_NE(dynamic_cast<const DDSDynamicDataTypeSupport*>(supports[0]), nullptr);
  EXPECT_EQ(dynamic_cast<const DDSDynamicDataTypeSupport*>(supports[1]), nullptr);
}

TEST(Listeners, DoNothingByDefault) {
  DDSDataReaderListener reader;
  DDSDataWriterListener writer;
  RecordedLog log;
  reader.on_requested_incompatible_qos(nullptr, {});
  reader.on_sample_rejected(nullptr, {});
  reader.on_data_available(nullptr);
  reader.on_subscription_matched(nullptr, {});
  reader.on_sample_lost(nullptr, {});
  writer.on_offered_incompatible_qos(nullptr, {});
  writer.on_publication_matched(nullptr, {});
  EXPECT_TRUE(log.take_lines().empty());
}

}  // namespace
