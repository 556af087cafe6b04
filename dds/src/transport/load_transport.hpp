#pragma once

#include <dds/qos.hpp>
#include <memory>

#include "transport/transport.hpp"

namespace dds {

/// The transport that the properties of a participant ask for. Null, and a log line under `context`, when there is
/// none. Throws `std::bad_alloc`.
std::unique_ptr<Transport> make_transport(DDS_DomainId_t domain, const DDS_DomainParticipantQos& qos,
                                          const char* context);

/// What a transport in a shared object of its own offers under the name `zemtra_dds_make_transport`: as above.
using MakeTransport = Transport*(DDS_DomainId_t domain, const DDS_DomainParticipantQos& qos, const char* context);

}  // namespace dds
