#pragma once

#include <gtest/gtest.h>

#include <string>

#include <dds/dds.hpp>
#include <requestreply/requestreply.hpp>

namespace end_to_end {

template <class TypeSupport>
const char* register_type(DDSTypeSupport* /*type_support*/, DDSDomainParticipant* participant) {
  EXPECT_EQ(TypeSupport::register_type(participant, nullptr), DDS_RETCODE_OK);
  return TypeSupport::get_type_name();
}

/// The string and the octets type under one roof: how a text becomes a sample and a sample a text.
struct StringType {
  using TypeSupport = DDSStringTypeSupport;
  static constexpr int sample_size = sizeof(char*);
  template <class Send>
  static void with_sample(const std::string& text, Send send) {
    const char* sample = text.c_str();
    send(&sample);
  }
  static std::string text(const void* sample) { return *static_cast<char* const*>(sample); }
};
struct OctetsType {
  using TypeSupport = DDSOctetsTypeSupport;
  static constexpr int sample_size = sizeof(DDS_Octets);
  template <class Send>
  static void with_sample(std::string text, Send send) {
    const DDS_Octets sample{static_cast<DDS_Long>(text.size()), reinterpret_cast<DDS_Octet*>(text.data())};
    send(&sample);
  }
  static std::string text(const void* sample) {
    const auto& octets = *static_cast<const DDS_Octets*>(sample);
    return std::string(octets.value, octets.value + octets.length);
  }
};

/// Waits until a writer has met exactly `count` readers or a reader `count` writers.
template <class Entity, class Status>
void await_matches(Entity* entity, DDS_ReturnCode_t (Entity::*get_status)(Status&), DDS_StatusMask mask, int count) {
  DDSWaitSet waitset;
  ASSERT_EQ(entity->get_statuscondition()->set_enabled_statuses(mask), DDS_RETCODE_OK);
  ASSERT_EQ(waitset.attach_condition(entity->get_statuscondition()), DDS_RETCODE_OK);
  for (;;) {
    Status status;
    ASSERT_EQ((entity->*get_status)(status), DDS_RETCODE_OK);
    if (status.current_count == count) { return; }
    DDSConditionSeq active;
    ASSERT_EQ(waitset.wait(active, DDS_DURATION_INFINITE), DDS_RETCODE_OK);
  }
}
/// Waits until an entity's writer and reader have met `count` of the other side.
inline void await_others(const zemtra::details::EntityUntypedImpl& entity, int count) {
  await_matches(entity.get_datawriter(), &DDSDataWriter::get_publication_matched_status, DDS_PUBLICATION_MATCHED_STATUS,
                count);
  await_matches(entity.get_datareader(), &DDSDataReader::get_subscription_matched_status,
                DDS_SUBSCRIPTION_MATCHED_STATUS, count);
}

}  // namespace end_to_end
