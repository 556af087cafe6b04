#pragma once

#include <dds/identity.hpp>

namespace zemtra {
namespace details {

/// Whether the number stands for something else than a written sample, so that it can name no request.
inline bool is_special(const DDS_SequenceNumber_t& number) {
  return number == DDS_AUTO_SEQUENCE_NUMBER || number == DDS::SEQUENCE_NUMBER_MAX ||
         number == DDS::SEQUENCE_NUMBER_ZERO || number == DDS::SEQUENCE_NUMBER_UNKNOWN;
}

}  // namespace details
}  // namespace zemtra
