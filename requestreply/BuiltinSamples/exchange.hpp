#pragma once

#include <requestreply/sample.hpp>
#include <utility>

namespace zemtra {
namespace details {

inline void exchange_data(DDS_Octets& a, DDS_Octets& b) { std::swap(a, b); }
inline void exchange_data(DDS_KeyedString& a, DDS_KeyedString& b) { DDS::swap(a, b); }
inline void exchange_data(DDS_KeyedOctets& a, DDS_KeyedOctets& b) { DDS::swap(a, b); }

/// Exchanges two infos through a third one.
inline DDS_ReturnCode_t exchange_infos(DDS_SampleInfo& target, DDS_SampleInfo& temporary) {
  DDS_SampleInfo third;
  DDS_SampleInfo_initialize(&third);
  DDS_SampleInfo_copy(&third, &temporary);
  DDS_SampleInfo_copy(&temporary, &target);
  DDS_SampleInfo_copy(&target, &third);
  DDS_SampleInfo_finalize(&third);
  return DDS_RETCODE_OK;
}

/// Exchanges two infos through a third one. When there is no memory for a cookie, `target` is as before.
inline DDS_ReturnCode_t exchange_infos(DDS_WriteParams_t& target, DDS_WriteParams_t& temporary) {
  DDS_WriteParams_t third;
  DDS_WriteParams_t_initialize(&third);
  DDS_ReturnCode_t retcode = DDS_WriteParams_t_copy(&third, &temporary);
  if (retcode == DDS_RETCODE_OK) { retcode = DDS_WriteParams_t_copy(&temporary, &target); }
  if (retcode == DDS_RETCODE_OK) { retcode = DDS_WriteParams_t_copy(&target, &third); }
  return retcode;
}

/// Exchanges the data of two samples and then their infos. When it throws, `target` is as before.
template <class ExchangeData, class Info>
void exchange_samples(ExchangeData exchange_data, Info& target, Info& temporary, const char* method_name) {
  exchange_data();
  if (exchange_infos(target, temporary) == DDS_RETCODE_OK) { return; }
  exchange_data();
  report_uncopied_params(method_name);
}

}  // namespace details
}  // namespace zemtra
