#pragma once

#include <dds/condition.hpp>
#include <dds/data_reader.hpp>
#include <dds/data_writer.hpp>

// The untyped calls, on handles that `procedural_handle()` gives. They do what the untyped operations of writers and
// readers do.

/// Writes one sample; `reserved` must be 0. See `DDSDataWriter::write_untyped`.
DDS_EXPORT DDS_ReturnCode_t DDS_DataWriter_write_w_params_untyped_generalI(DDS_DataWriter* writer, int reserved,
                                                                           const void* data, DDS_WriteParams_t* params);

/// Reads or takes, as a loan, through a condition of the same reader. Only loans are supported: `data_seq_len` and
/// `data_seq_max_len` must be 0, `data_seq_has_ownership` true and `copy_buffer` null, otherwise
/// `DDS_RETCODE_UNSUPPORTED`. `*is_loan` becomes true when samples were lent. `sample_size` plays no part in a loan.
/// `max_samples` is a positive count, `DDS_LENGTH_UNLIMITED`, or 0, which finds nothing. See
/// `DDSDataReader::read_or_take_untyped`.
DDS_EXPORT DDS_ReturnCode_t DDS_DataReader_read_or_take_w_condition_untypedI(
    DDS_DataReader* reader, DDS_Boolean* is_loan, void*** received_data, int* data_count, DDS_SampleInfoSeq* info_seq,
    int data_seq_len, int data_seq_max_len, unsigned char data_seq_has_ownership, void* copy_buffer, int sample_size,
    int max_samples, DDS_ReadCondition* condition, DDS_Boolean take);

/// Gives a loan back. See `DDSDataReader::return_loan_untyped`.
DDS_EXPORT DDS_ReturnCode_t DDS_DataReader_return_loan_untypedI(DDS_DataReader* reader, void** received_data,
                                                                DDS_SampleInfoSeq* info_seq);
