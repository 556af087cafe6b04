#pragma once

#include <dds/data_reader.hpp>
#include <dds/data_writer.hpp>

/// The typed operations of a writer of `T`, over the untyped ones. For what they return see there.
template <class T>
class DDSTypedDataWriter : public DDSDataWriter {
 public:
  DDS_InstanceHandle_t register_instance(const T& instance) { return lookup_instance_untyped(&instance); }
  DDS_InstanceHandle_t lookup_instance(const T& instance) { return lookup_instance_untyped(&instance); }
  DDS_ReturnCode_t write(const T& data, DDS_InstanceHandle_t handle) {
    DDS_WriteParams_t params;
    params.handle = handle;
    return write_untyped(&data, params);
  }
  DDS_ReturnCode_t write_w_params(const T& data, DDS_WriteParams_t& params) { return write_untyped(&data, params); }
  DDS_ReturnCode_t dispose(const T& instance, DDS_InstanceHandle_t handle) {
    DDS_WriteParams_t params;
    params.handle = handle;
    return dispose_untyped(&instance, params);
  }
  DDS_ReturnCode_t unregister_instance(const T& instance, DDS_InstanceHandle_t handle) {
    DDS_WriteParams_t params;
    params.handle = handle;
    return unregister_untyped(&instance, params);
  }

 protected:
  ~DDSTypedDataWriter() override = default;
};

/// The typed operations of a reader of `T`, over the untyped ones. The two sequences of a read or take go together.
/// When both are empty with maximum 0 they receive a loan, to be given back with `return_loan`. When both own room for
/// at least one sample they receive deep copies, as many as fit at the most; when memory for them runs out,
/// `DDS_RETCODE_OUT_OF_RESOURCES`, and a take has removed the samples all the same. Anything else gives
/// `DDS_RETCODE_PRECONDITION_NOT_MET`.
template <class T, class Seq>
class DDSTypedDataReader : public DDSDataReader {
 public:
  DDS_ReturnCode_t read(Seq& data, DDS_SampleInfoSeq& infos, int max_samples, DDS_SampleStateMask sample_states,
                        DDS_ViewStateMask view_states, DDS_InstanceStateMask instance_states) {
    return get(data, infos, max_samples, sample_states, view_states, instance_states, nullptr, false);
  }
  DDS_ReturnCode_t take(Seq& data, DDS_SampleInfoSeq& infos, int max_samples, DDS_SampleStateMask sample_states,
                        DDS_ViewStateMask view_states, DDS_InstanceStateMask instance_states) {
    return get(data, infos, max_samples, sample_states, view_states, instance_states, nullptr, true);
  }
  DDS_ReturnCode_t read_w_condition(Seq& data, DDS_SampleInfoSeq& infos, int max_samples, DDSReadCondition* condition) {
    return condition == nullptr ? DDS_RETCODE_BAD_PARAMETER : get(data, infos, max_samples, 0, 0, 0, condition, false);
  }
  DDS_ReturnCode_t take_w_condition(Seq& data, DDS_SampleInfoSeq& infos, int max_samples, DDSReadCondition* condition) {
    return condition == nullptr ? DDS_RETCODE_BAD_PARAMETER : get(data, infos, max_samples, 0, 0, 0, condition, true);
  }
  /// Gives a loan back and empties both sequences; a pair that is no outstanding loan of this reader is refused with
  /// `DDS_RETCODE_PRECONDITION_NOT_MET`.
  DDS_ReturnCode_t return_loan(Seq& data, DDS_SampleInfoSeq& infos) {
    const DDS_ReturnCode_t retcode =
        return_loan_untyped(reinterpret_cast<void**>(data.get_discontiguous_buffer()), infos);
    if (retcode == DDS_RETCODE_OK) { data.unloan(); }
    return retcode;
  }
  DDS_InstanceHandle_t lookup_instance(const T& key) { return lookup_instance_untyped(&key); }

 protected:
  ~DDSTypedDataReader() override = default;

 private:
  DDS_ReturnCode_t get(Seq& data, DDS_SampleInfoSeq& infos, int max_samples, DDS_SampleStateMask sample_states,
                       DDS_ViewStateMask view_states, DDS_InstanceStateMask instance_states,
                       DDSReadCondition* condition, bool take) {
    if (!data.has_ownership() || !infos.has_ownership() || data.maximum() != infos.maximum()) {
      return DDS_RETCODE_PRECONDITION_NOT_MET;
    }
    const bool copying = data.maximum() > 0;
    if (copying && (max_samples == DDS_LENGTH_UNLIMITED || max_samples > data.maximum())) {
      max_samples = data.maximum();
    }
    data.length(0);
    infos.length(0);
    void** pointers = nullptr;
    int count = 0;
    DDS_SampleInfoSeq lent;
    const DDS_ReturnCode_t retcode = read_or_take_untyped(&pointers, &count, lent, max_samples, sample_states,
                                                          view_states, instance_states, condition, take);
    if (retcode != DDS_RETCODE_OK) { return retcode; }
    Seq samples;
    samples.loan_discontiguous(reinterpret_cast<T**>(pointers), count, count);
    if (!copying) {
      data.swap(samples);
      infos.swap(lent);
      return retcode;
    }
    const bool copied = data.assign(samples) && infos.assign(lent);
    const DDS_ReturnCode_t returned = return_loan_untyped(pointers, lent);
    return copied ? returned : DDS_RETCODE_OUT_OF_RESOURCES;
  }
};
