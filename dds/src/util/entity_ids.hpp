#pragma once

#include <cstdint>
#include <dds/export.hpp>
#include <dds/identity.hpp>
#include <dds/type_plugin.hpp>
#include <string>

namespace dds {

/// A handle that no other entity of the process has.
DDS_EXPORT DDS_InstanceHandle_t next_entity_handle();

/// Drawn by the system; never 0.
DDS_EXPORT std::uint64_t random_number();

/// A GUID for the endpoint with that handle: unique among all processes, since its first half is drawn at random once a
/// process, also by one that has branched off another.
DDS_EXPORT DDS_GUID_t make_guid(DDS_InstanceHandle_t handle);

/// A number in the two halves of the API.
inline DDS_SequenceNumber_t to_sequence_number(std::uint64_t number) {
  return {static_cast<std::int32_t>(number >> 32), static_cast<std::uint32_t>(number)};
}

/// The key of a sample of a keyed type, as octets. Throws `std::bad_alloc`.
DDS_EXPORT void read_key(const DDS_TypePlugin& type, const void* sample, std::string& key);

/// A handle for a key, the same for equal keys; never `DDS_HANDLE_NIL`.
DDS_InstanceHandle_t hash_key(const std::string& key);

}  // namespace dds
