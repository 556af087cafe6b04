#include <dds/procedural.hpp>

#include "log/log.hpp"
#include "reader/reader_core.hpp"
#include "writer/writer_core.hpp"

DDS_ReturnCode_t DDS_DataWriter_write_w_params_untyped_generalI(DDS_DataWriter* writer, int reserved, const void* data,
                                                                DDS_WriteParams_t* params) {
  if (writer == nullptr || reserved != 0 || params == nullptr) { return DDS_RETCODE_BAD_PARAMETER; }
  return static_cast<dds::WriterCore*>(writer)->write(dds::MessageKind::data, data, *params);
}

DDS_ReturnCode_t DDS_DataReader_read_or_take_w_condition_untypedI(
    DDS_DataReader* reader, DDS_Boolean* is_loan, void*** received_data, int* data_count, DDS_SampleInfoSeq* info_seq,
    int data_seq_len, int data_seq_max_len, unsigned char data_seq_has_ownership, void* copy_buffer,
    int /*sample_size*/, int max_samples, DDS_ReadCondition* condition, DDS_Boolean take) {
  if (reader == nullptr || is_loan == nullptr || info_seq == nullptr || condition == nullptr) {
    return DDS_RETCODE_BAD_PARAMETER;
  }
  if (data_seq_len != 0 || data_seq_max_len != 0 || data_seq_has_ownership == 0 || copy_buffer != nullptr) {
    DDS_LOG_FAILURE("DDS_DataReader_read_or_take_w_condition_untypedI", DDS_LOG_UNSUPPORTED_s, "anything but a loan");
    return DDS_RETCODE_UNSUPPORTED;
  }
  const DDS_ReturnCode_t retcode = static_cast<dds::ReaderCore*>(reader)->read_or_take(
      received_data, data_count, *info_seq, max_samples, dds::kAnyState, condition, take);
  *is_loan = retcode == DDS_RETCODE_OK;
  return retcode;
}

DDS_ReturnCode_t DDS_DataReader_return_loan_untypedI(DDS_DataReader* reader, void** received_data,
                                                     DDS_SampleInfoSeq* info_seq) {
  if (reader == nullptr || info_seq == nullptr) { return DDS_RETCODE_BAD_PARAMETER; }
  return static_cast<dds::ReaderCore*>(reader)->return_loan(received_data, *info_seq);
}
