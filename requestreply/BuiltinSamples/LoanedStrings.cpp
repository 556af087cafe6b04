#include <requestreply/loaned_samples.hpp>

#include "internal/log.hpp"

namespace zemtra {
namespace details {

void log_refused_loan() noexcept {
  log(DDS_LOG_LEVEL_FAILURE, "LoanedSamples::return_loan", QVX_LOG_ANY_FAILURE_s, "return DataReader loan");
}

template ZEMTRA_EXPORT dds_type_traits<std::string>::LoanedSamplesType create_loaned_samples<std::string>(
    void** data_ptrs, int count, DDS_SampleInfoSeq& info_seq, dds_type_traits<std::string>::DataReader* reader);

}  // namespace details
}  // namespace zemtra
