#pragma once

#include <dds/qos.hpp>
#include <string>

#include "rtps/engine.hpp"

namespace dds::rtps {

/// What the properties of a participant ask for. False, and the reason in `error`, for a property of the transport that
/// does not exist or whose value is none. Throws `std::bad_alloc`.
bool read_properties(DDS_DomainId_t domain, const DDS_PropertyQosPolicy& properties, EngineConfig& config,
                     std::string& error);

}  // namespace dds::rtps
