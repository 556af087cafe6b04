#pragma once

#include <gtest/gtest.h>

#include <dds/dds.hpp>

namespace regressions {

inline DDS_DataReaderQos reliable_reader_qos() {
  DDS_DataReaderQos qos;
  qos.reliability.kind = DDS_RELIABLE_RELIABILITY_QOS;
  qos.history.kind = DDS_KEEP_ALL_HISTORY_QOS;
  return qos;
}

/// A participant with a topic of strings and one of keyed strings, in a domain that only regression tests use.
class Participant : public ::testing::Test {
 protected:
  Participant() {
    DDSStringTypeSupport::register_type(participant, "string");
    DDSKeyedStringTypeSupport::register_type(participant, "keyed string");
    strings = participant->create_topic("strings", "string", DDS_TOPIC_QOS_DEFAULT, nullptr, DDS_STATUS_MASK_NONE);
    keyed_strings = participant->create_topic("keyed strings", "keyed string", DDS_TOPIC_QOS_DEFAULT, nullptr,
                                              DDS_STATUS_MASK_NONE);
  }
  ~Participant() override {
    EXPECT_EQ(participant->delete_contained_entities(), DDS_RETCODE_OK);
    EXPECT_EQ(DDSDomainParticipantFactory::get_instance()->delete_participant(participant), DDS_RETCODE_OK);
  }

  DDSDataWriter* create_writer(DDSTopic* topic, const DDS_DataWriterQos& qos = DDS_DATAWRITER_QOS_DEFAULT) {
    return participant->create_datawriter(topic, qos, nullptr, DDS_STATUS_MASK_NONE);
  }
  DDSDataReader* create_reader(DDSTopic* topic, const DDS_DataReaderQos& qos,
                               DDSDataReaderListener* listener = nullptr) {
    return participant->create_datareader(topic, qos, listener, DDS_DATA_AVAILABLE_STATUS);
  }

  static constexpr DDS_DomainId_t domain = 190;
  DDSDomainParticipant* participant = DDSDomainParticipantFactory::get_instance()->create_participant(
      domain, DDS_PARTICIPANT_QOS_DEFAULT, nullptr, DDS_STATUS_MASK_NONE);
  DDSTopic* strings = nullptr;
  DDSTopic* keyed_strings = nullptr;
};

}  // namespace regressions
