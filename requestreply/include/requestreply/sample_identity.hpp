#pragma once

#include <dds/sample_info.hpp>
#include <requestreply/export.hpp>

class DDSDynamicDataTypeSupport;
class DDSTypeSupport;

// What typed front ends of both roles need besides the entities.

namespace zemtra {
namespace details {

/// The identity under which the sample was written: of a received request, the one to reply to.
ZEMTRA_EXPORT DDS_SampleIdentity_t get_sample_identity_from_sample_info(const DDS_SampleInfo& info);

/// The identity of the sample that this one answers: of a received reply, that of its request.
ZEMTRA_EXPORT DDS_SampleIdentity_t get_related_sample_identity_from_sample_info(const DDS_SampleInfo& info);

/// The type support as that of a type described at run time; null when it is null or of another kind.
ZEMTRA_EXPORT DDSDynamicDataTypeSupport* dynamic_data_type_support_cast(DDSTypeSupport* type_support);

}  // namespace details
}  // namespace zemtra
