#include <dds/write_params.hpp>

DDS_WriteParams_t::~DDS_WriteParams_t() { DDS_WriteParams_t_finalize(this); }

void DDS_Cookie_t_initialize(DDS_Cookie_t* cookie) { DDS_Cookie_t_finalize(cookie); }

void DDS_Cookie_t_finalize(DDS_Cookie_t* cookie) {
  DDS_OctetSeq empty;
  cookie->value.swap(empty);
}

void DDS_WriteParams_t_initialize(DDS_WriteParams_t* params) {
  const DDS_WriteParams_t initial;
  DDS_WriteParams_t_copy(params, &initial);
}

DDS_ReturnCode_t DDS_WriteParams_t_copy(DDS_WriteParams_t* destination, const DDS_WriteParams_t* source) {
  DDS_OctetSeq cookie;
  if (!cookie.assign(source->cookie.value)) { return DDS_RETCODE_OUT_OF_RESOURCES; }
  destination->cookie.value.swap(cookie);
  destination->identity = source->identity;
  destination->related_sample_identity = source->related_sample_identity;
  destination->source_timestamp = source->source_timestamp;
  destination->handle = source->handle;
  return DDS_RETCODE_OK;
}

void DDS_WriteParams_t_finalize(DDS_WriteParams_t* params) { DDS_Cookie_t_finalize(&params->cookie); }
