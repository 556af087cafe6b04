#pragma once

#include <dds/identity.hpp>
#include <dds/type_plugin.hpp>
#include <string>

namespace dds {

/// A handle that no other entity of the process has.
DDS_InstanceHandle_t next_entity_handle();

/// A GUID for the endpoint with that handle: unique among all processes, since its first half is drawn at random once a
/// process.
DDS_GUID_t make_guid(DDS_InstanceHandle_t handle);

/// The key of a sample of a keyed type, as octets. Throws `std::bad_alloc`.
void read_key(const DDS_TypePlugin& type, const void* sample, std::string& key);

/// A handle for a key, the same for equal keys; never `DDS_HANDLE_NIL`.
DDS_InstanceHandle_t hash_key(const std::string& key);

}  // namespace dds
