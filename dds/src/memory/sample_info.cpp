#include <dds/sample_info.hpp>

void DDS_SampleInfo_initialize(DDS_SampleInfo* info) { *info = DDS_SampleInfo(); }

void DDS_SampleInfo_copy(DDS_SampleInfo* destination, const DDS_SampleInfo* source) { *destination = *source; }

void DDS_SampleInfo_finalize(DDS_SampleInfo* /*info*/) {}
