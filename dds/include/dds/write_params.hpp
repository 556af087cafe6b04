#pragma once

#include <dds/identity.hpp>
#include <dds/sequence.hpp>
#include <dds/time.hpp>

/// Octets that name a write for the application. This layer carries them nowhere: a write with a cookie is refused.
struct DDS_Cookie_t {
  DDS_OctetSeq value;
};

/// Steers one write. A write that was asked for an automatic identity leaves the assigned one in `identity`.
struct DDS_EXPORT DDS_WriteParams_t {
  DDS_WriteParams_t() = default;
  DDS_WriteParams_t(const DDS_WriteParams_t&) = default;
  DDS_WriteParams_t& operator=(const DDS_WriteParams_t&) = default;
  ~DDS_WriteParams_t();

  /// The identity of the sample to write; only `DDS_AUTO_SAMPLE_IDENTITY` is supported.
  DDS_SampleIdentity_t identity = DDS_AUTO_SAMPLE_IDENTITY;
  /// The sample that this one answers.
  DDS_SampleIdentity_t related_sample_identity = DDS_UNKNOWN_SAMPLE_IDENTITY;
  DDS_Cookie_t cookie;
  /// The source time-stamp; `DDS_TIME_INVALID` stands for the time of the write. Any other with a second or more of
  /// nanoseconds is a bad parameter.
  DDS_Time_t source_timestamp = DDS_TIME_INVALID;
  /// The instance to write, or `DDS_HANDLE_NIL` to take it from the data's key.
  DDS_InstanceHandle_t handle = DDS_HANDLE_NIL;
};

// Null arguments are not allowed.

DDS_EXPORT void DDS_Cookie_t_initialize(DDS_Cookie_t* cookie);
/// Releases the octets.
DDS_EXPORT void DDS_Cookie_t_finalize(DDS_Cookie_t* cookie);
/// Gives every field its initial value; releases what the cookie holds.
DDS_EXPORT void DDS_WriteParams_t_initialize(DDS_WriteParams_t* params);
/// A deep copy; `DDS_RETCODE_OUT_OF_RESOURCES` when memory for the cookie is exhausted.
DDS_EXPORT DDS_ReturnCode_t DDS_WriteParams_t_copy(DDS_WriteParams_t* destination, const DDS_WriteParams_t* source);
/// Releases what the cookie holds.
DDS_EXPORT void DDS_WriteParams_t_finalize(DDS_WriteParams_t* params);
