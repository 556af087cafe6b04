#pragma once

#include <cstring>

#include <dds/basic_types.hpp>
#include <dds/export.hpp>

/// Names a writer for all participants; index 0 is sent and rendered first.
struct DDS_GUID_t {
  DDS_Octet value[16] = {};
};

/// A 64-bit number in two halves. Writers count their samples from {0, 1}.
struct DDS_SequenceNumber_t {
  std::int32_t high = 0;
  std::uint32_t low = 0;
};

constexpr bool operator==(const DDS_SequenceNumber_t& a, const DDS_SequenceNumber_t& b) {
  return a.high == b.high && a.low == b.low;
}
constexpr bool operator!=(const DDS_SequenceNumber_t& a, const DDS_SequenceNumber_t& b) { return !(a == b); }

/// Asks the writer for its own GUID.
DDS_EXPORT extern const DDS_GUID_t DDS_GUID_AUTO;
/// No writer at all.
DDS_EXPORT extern const DDS_GUID_t DDS_GUID_UNKNOWN;

/// Asks the writer for its next sequence number.
constexpr DDS_SequenceNumber_t DDS_AUTO_SEQUENCE_NUMBER{-1, 0};

namespace DDS {
constexpr DDS_SequenceNumber_t SEQUENCE_NUMBER_ZERO{0, 0};
constexpr DDS_SequenceNumber_t SEQUENCE_NUMBER_UNKNOWN{-1, 0xffffffffu};
constexpr DDS_SequenceNumber_t SEQUENCE_NUMBER_MAX{0x7fffffff, 0xffffffffu};
}  // namespace DDS

/// Names one sample of one writer.
struct DDS_SampleIdentity_t {
  DDS_GUID_t writer_guid;
  DDS_SequenceNumber_t sequence_number = DDS::SEQUENCE_NUMBER_UNKNOWN;
};

constexpr bool operator<(const DDS_SequenceNumber_t& a, const DDS_SequenceNumber_t& b) {
  return a.high != b.high ? a.high < b.high : a.low < b.low;
}
inline bool operator==(const DDS_GUID_t& a, const DDS_GUID_t& b) { return std::memcmp(a.value, b.value, 16) == 0; }
inline bool operator!=(const DDS_GUID_t& a, const DDS_GUID_t& b) { return !(a == b); }
inline bool operator<(const DDS_GUID_t& a, const DDS_GUID_t& b) { return std::memcmp(a.value, b.value, 16) < 0; }
inline bool operator==(const DDS_SampleIdentity_t& a, const DDS_SampleIdentity_t& b) {
  return a.sequence_number == b.sequence_number && a.writer_guid == b.writer_guid;
}
inline bool operator!=(const DDS_SampleIdentity_t& a, const DDS_SampleIdentity_t& b) { return !(a == b); }
/// By writer, then by number: an order for containers.
inline bool operator<(const DDS_SampleIdentity_t& a, const DDS_SampleIdentity_t& b) {
  return a.writer_guid != b.writer_guid ? a.writer_guid < b.writer_guid : a.sequence_number < b.sequence_number;
}

/// Asks the writer for its GUID and its next sequence number.
DDS_EXPORT extern const DDS_SampleIdentity_t DDS_AUTO_SAMPLE_IDENTITY;
/// No sample at all: unknown in both halves.
DDS_EXPORT extern const DDS_SampleIdentity_t DDS_UNKNOWN_SAMPLE_IDENTITY;

// The functions below never fail; null arguments are not allowed.

DDS_EXPORT bool DDS_GUID_equals(const DDS_GUID_t* a, const DDS_GUID_t* b);
DDS_EXPORT void DDS_GUID_copy(DDS_GUID_t* destination, const DDS_GUID_t* source);
/// Sets an identity to `DDS_UNKNOWN_SAMPLE_IDENTITY`.
DDS_EXPORT void DDS_SampleIdentity_t_initialize(DDS_SampleIdentity_t* identity);
DDS_EXPORT void DDS_SampleIdentity_t_copy(DDS_SampleIdentity_t* destination, const DDS_SampleIdentity_t* source);
/// An identity owns nothing; there for symmetry with the types that do.
DDS_EXPORT void DDS_SampleIdentity_t_finalize(DDS_SampleIdentity_t* identity);
