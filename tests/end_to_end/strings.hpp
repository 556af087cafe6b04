#pragma once

#include <gtest/gtest.h>

#include <string>

#include <dds/dds.hpp>
#include <requestreply/requestreply.hpp>

#include "support/await.hpp"

namespace end_to_end {

inline const char* register_strings(DDSTypeSupport* /*type_support*/, DDSDomainParticipant* participant) {
  EXPECT_EQ(DDSStringTypeSupport::register_type(participant, nullptr), DDS_RETCODE_OK);
  return DDSStringTypeSupport::get_type_name();
}
inline std::string text_of(const void* sample) { return *static_cast<char* const*>(sample); }

template <class Entity, class Status>
int matches(Entity* entity, DDS_ReturnCode_t (Entity::*get_status)(Status&)) {
  Status status;
  EXPECT_EQ((entity->*get_status)(status), DDS_RETCODE_OK);
  return status.current_count;
}
/// Waits until an entity's writer and reader have met exactly `count` of the other side.
inline void await_others(const zemtra::details::EntityUntypedImpl& entity, int count) {
  AWAIT_EQ(matches(entity.get_datawriter(), &DDSDataWriter::get_publication_matched_status), count);
  AWAIT_EQ(matches(entity.get_datareader(), &DDSDataReader::get_subscription_matched_status), count);
}

}  // namespace end_to_end
