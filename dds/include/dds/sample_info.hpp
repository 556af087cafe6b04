#pragma once

#include <dds/identity.hpp>
#include <dds/sequence.hpp>
#include <dds/time.hpp>

/// What the reader knows of a sample besides its data. The states are those of the moment of the read or take.
struct DDS_SampleInfo {
  DDS_SampleStateMask sample_state = DDS_NOT_READ_SAMPLE_STATE;
  DDS_ViewStateMask view_state = DDS_NEW_VIEW_STATE;
  DDS_InstanceStateMask instance_state = DDS_ALIVE_INSTANCE_STATE;
  DDS_Time_t source_timestamp = DDS_TIME_INVALID;
  DDS_Time_t reception_timestamp = DDS_TIME_INVALID;
  DDS_InstanceHandle_t instance_handle = DDS_HANDLE_NIL;
  DDS_InstanceHandle_t publication_handle = DDS_HANDLE_NIL;
  DDS_Long disposed_generation_count = 0;
  DDS_Long no_writers_generation_count = 0;
  DDS_Long sample_rank = 0;
  DDS_Long generation_rank = 0;
  DDS_Long absolute_generation_rank = 0;
  /// False for a sample that only tells of a change of its instance's state; its data then holds at most the key.
  DDS_Boolean valid_data = false;
  /// The sample's own writer and sequence number.
  DDS_SampleIdentity_t sample_identity;
  /// The sample that this one answers, as its writer set it; unknown otherwise.
  DDS_SampleIdentity_t related_sample_identity;
};

using DDS_SampleInfoSeq = DDSSequence<DDS_SampleInfo>;

// The functions below never fail; null arguments are not allowed.

/// Gives every field its initial value.
DDS_EXPORT void DDS_SampleInfo_initialize(DDS_SampleInfo* info);
DDS_EXPORT void DDS_SampleInfo_copy(DDS_SampleInfo* destination, const DDS_SampleInfo* source);
/// A sample info owns nothing; there for symmetry with the types that do.
DDS_EXPORT void DDS_SampleInfo_finalize(DDS_SampleInfo* info);
