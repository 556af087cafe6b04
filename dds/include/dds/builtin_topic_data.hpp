#pragma once

#include <dds/qos.hpp>

// What a matched other end tells of itself. Settled when that end was created; copying is deep and throws
// `std::bad_alloc`.

/// A writer, as the readers see it that it matches.
struct DDS_PublicationBuiltinTopicData {
  DDS_GUID_t key;  ///< the GUID that stamps the writer's samples
  DDS_GUID_t participant_key;
  DDS_PropertyQosPolicy property;  ///< those of the writer's properties that are to be propagated
  DDS_EntityNameQosPolicy publication_name;
};

/// A reader, as the writers see it that it matches.
struct DDS_SubscriptionBuiltinTopicData {
  DDS_GUID_t key;
  DDS_GUID_t participant_key;
  DDS_PropertyQosPolicy property;  ///< those of the reader's properties that are to be propagated
  DDS_EntityNameQosPolicy subscription_name;
  /// The writer the answers to whose samples are all that the reader wants, because its filter is
  /// `@related_sample_identity.writer_guid.value = &hex(...)` and nothing else; otherwise `DDS_GUID_UNKNOWN`.
  DDS_GUID_t related_writer_guid;
};
