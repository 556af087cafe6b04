#include <dds/procedural.hpp>
#include <requestreply/entity_untyped_impl.hpp>

#include "internal/check.hpp"

namespace zemtra {
namespace details {

void EntityUntypedImpl::send_sample(const void* data, DDS_WriteParams_t& params) {
  constexpr const char* method_name = "EntityUntypedImpl::send_sample";
  // Correlation rests on it that every sample has an identity of its own, so the caller cannot choose one.
  DDS_SampleIdentity_t_copy(&params.identity, &DDS_AUTO_SAMPLE_IDENTITY);
  const DDS_ReturnCode_t retcode =
      DDS_DataWriter_write_w_params_untyped_generalI(writer->procedural_handle(), 0, data, &params);
  if (retcode == DDS_RETCODE_TIMEOUT) { fail(retcode, method_name, QVX_LOG_ANY_FAILURE_s, "DataWriter write timeout"); }
  check(retcode, method_name, QVX_LOG_ANY_FAILURE_s, "DataWriter write failure");
}

}  // namespace details
}  // namespace zemtra
