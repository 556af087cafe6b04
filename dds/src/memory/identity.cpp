#include <dds/identity.hpp>

#include <cstring>

// constexpr, so that they hold their values before any constructor of the application runs.
constexpr DDS_GUID_t DDS_GUID_AUTO{
    {0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff}};
constexpr DDS_GUID_t DDS_GUID_UNKNOWN{};
constexpr DDS_SampleIdentity_t DDS_AUTO_SAMPLE_IDENTITY{DDS_GUID_AUTO, DDS_AUTO_SEQUENCE_NUMBER};
constexpr DDS_SampleIdentity_t DDS_UNKNOWN_SAMPLE_IDENTITY{DDS_GUID_UNKNOWN, DDS::SEQUENCE_NUMBER_UNKNOWN};

bool DDS_GUID_equals(const DDS_GUID_t* a, const DDS_GUID_t* b) {
  return std::memcmp(a->value, b->value, sizeof a->value) == 0;
}

void DDS_GUID_copy(DDS_GUID_t* destination, const DDS_GUID_t* source) { *destination = *source; }

void DDS_SampleIdentity_t_initialize(DDS_SampleIdentity_t* identity) { *identity = DDS_UNKNOWN_SAMPLE_IDENTITY; }

void DDS_SampleIdentity_t_copy(DDS_SampleIdentity_t* destination, const DDS_SampleIdentity_t* source) {
  *destination = *source;
}

void DDS_SampleIdentity_t_finalize(DDS_SampleIdentity_t* /*identity*/) {}
