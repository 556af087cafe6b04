// Stand-ins for functions of the DDS layer. A program that exports its symbols is searched first, so calls from all
// libraries arrive here; those of the request-reply library may fail by plan, all others go on to the real function.

#include <dlfcn.h>
#include <dds/domain_participant_factory.hpp>
#include <dds/memory.hpp>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "support/faulty_factory.hpp"
#include "support/seam.hpp"

namespace {

using support::Call;
using support::Seam;

/// Whether the code at `address` is the request-reply library's. The DDS layer calls some of these functions itself.
bool is_library(const void* address) {
  Dl_info info;
  return dladdr(address, &info) != 0 && std::strstr(info.dli_fname, "libzemtra.so") != nullptr;
}

/// The function that would have been called but for the stand-in.
template <class Function>
Function* next(const char* symbol) {
  void* found = dlsym(RTLD_NEXT, symbol);
  if (found == nullptr) {
    std::fprintf(stderr, "no %s behind its stand-in\n", symbol);
    std::abort();
  }
  return reinterpret_cast<Function*>(found);
}

std::optional<DDS_ReturnCode_t> enter(const void* caller, Call call, const char* who) {
  return is_library(caller) ? Seam::get().enter(call, who) : std::nullopt;
}

}  // namespace

#define CALLER __builtin_return_address(0)

DDS_ReturnCode_t DDSWaitSet::attach_condition(DDSCondition* condition) {
  if (const auto fault = enter(CALLER, Call::attach_condition, "waitset.attach_condition")) { return *fault; }
  static auto* real =
      next<DDS_ReturnCode_t(DDSWaitSet*, DDSCondition*)>("_ZN10DDSWaitSet16attach_conditionEP12DDSCondition");
  return real(this, condition);
}

DDS_ReturnCode_t DDSWaitSet::detach_condition(DDSCondition* condition) {
  if (const auto fault = enter(CALLER, Call::detach_condition, "waitset.detach_condition")) { return *fault; }
  static auto* real =
      next<DDS_ReturnCode_t(DDSWaitSet*, DDSCondition*)>("_ZN10DDSWaitSet16detach_conditionEP12DDSCondition");
  return real(this, condition);
}

DDS_ReturnCode_t DDSWaitSet::wait(DDSConditionSeq& active_conditions, const DDS_Duration_t& timeout) {
  if (is_library(CALLER)) {
    Seam::get().note(timeout);
    if (const auto fault = Seam::get().enter(Call::wait, "waitset.wait")) { return *fault; }
    if (Seam::get().on_wait) {
      if (const auto result = Seam::get().on_wait(*this)) { return *result; }
    }
  }
  static auto* real = next<DDS_ReturnCode_t(DDSWaitSet*, DDSConditionSeq&, const DDS_Duration_t&)>(
      "_ZN10DDSWaitSet4waitER11DDSSequenceIP12DDSCondition15DDSValueElementIS2_EERK14DDS_Duration_t");
  return real(this, active_conditions, timeout);
}

DDS_ReturnCode_t DDS_DataWriter_write_w_params_untyped_generalI(DDS_DataWriter* writer, int reserved, const void* data,
                                                                DDS_WriteParams_t* params) {
  if (is_library(CALLER)) { Seam::get().note(*params); }
  if (const auto fault = enter(CALLER, Call::write, "writer.write")) { return *fault; }
  static auto* real = next<DDS_ReturnCode_t(DDS_DataWriter*, int, const void*, DDS_WriteParams_t*)>(
      "_Z46DDS_DataWriter_write_w_params_untyped_generalIP14DDS_DataWriteriPKvP17DDS_WriteParams_t");
  return real(writer, reserved, data, params);
}

DDS_ReturnCode_t DDS_DataReader_read_or_take_w_condition_untypedI(
    DDS_DataReader* reader, DDS_Boolean* is_loan, void*** received_data, int* data_count, DDS_SampleInfoSeq* info_seq,
    int data_seq_len, int data_seq_max_len, unsigned char data_seq_has_ownership, void* copy_buffer, int sample_size,
    int max_samples, DDS_ReadCondition* condition, DDS_Boolean take) {
  if (is_library(CALLER)) {
    Seam::get().note(
        {data_seq_len, data_seq_max_len, data_seq_has_ownership, copy_buffer, sample_size, max_samples, take});
  }
  if (const auto fault = enter(CALLER, Call::read_or_take, take ? "reader.take" : "reader.read")) { return *fault; }
  static auto* real = next<DDS_ReturnCode_t(DDS_DataReader*, DDS_Boolean*, void***, int*, DDS_SampleInfoSeq*, int, int,
                                            unsigned char, void*, int, int, DDS_ReadCondition*, DDS_Boolean)>(
      "_Z48DDS_DataReader_read_or_take_w_condition_untypedIP14DDS_DataReaderPbPPPvPiP11DDSSequenceI14DDS_"
      "SampleInfo15DDSValueElementIS7_EEiihS2_iiP17DDS_ReadConditionb");
  return real(reader, is_loan, received_data, data_count, info_seq, data_seq_len, data_seq_max_len,
              data_seq_has_ownership, copy_buffer, sample_size, max_samples, condition, take);
}

DDS_ReturnCode_t DDS_DataReader_return_loan_untypedI(DDS_DataReader* reader, void** received_data,
                                                     DDS_SampleInfoSeq* info_seq) {
  const auto fault = enter(CALLER, Call::return_loan, "reader.return_loan");
  static auto* real = next<DDS_ReturnCode_t(DDS_DataReader*, void**, DDS_SampleInfoSeq*)>(
      "_Z35DDS_DataReader_return_loan_untypedIP14DDS_DataReaderPPvP11DDSSequenceI14DDS_SampleInfo15DDSValueElementIS4_"
      "EE");
  // Carried out in any case: with a loan that is lost nobody could delete the reader.
  const DDS_ReturnCode_t retcode = real(reader, received_data, info_seq);
  return fault ? *fault : retcode;
}

char* DDS_String_dup(const char* source) {
  if (enter(CALLER, Call::duplicate_string, "duplicate_string")) { return nullptr; }
  static auto* real = next<char*(const char*)>("_Z14DDS_String_dupPKc");
  return real(source);
}

DDS_ReturnCode_t DDS_DataWriterQos_copy(DDS_DataWriterQos* destination, const DDS_DataWriterQos* source) {
  if (const auto fault = enter(CALLER, Call::copy_datawriter_qos, "copy_datawriter_qos")) { return *fault; }
  static auto* real = next<DDS_ReturnCode_t(DDS_DataWriterQos*, const DDS_DataWriterQos*)>(
      "_Z22DDS_DataWriterQos_copyP17DDS_DataWriterQosPKS_");
  return real(destination, source);
}

DDS_ReturnCode_t DDS_DataReaderQos_copy(DDS_DataReaderQos* destination, const DDS_DataReaderQos* source) {
  if (const auto fault = enter(CALLER, Call::copy_datareader_qos, "copy_datareader_qos")) { return *fault; }
  static auto* real = next<DDS_ReturnCode_t(DDS_DataReaderQos*, const DDS_DataReaderQos*)>(
      "_Z22DDS_DataReaderQos_copyP17DDS_DataReaderQosPKS_");
  return real(destination, source);
}

DDS_ReturnCode_t DDSPropertyQosPolicyHelper::add_property(DDS_PropertyQosPolicy& policy, const char* name,
                                                          const char* value, DDS_Boolean propagate) {
  if (const auto fault = enter(CALLER, Call::add_property, "add_property")) { return *fault; }
  static auto* real = next<DDS_ReturnCode_t(DDS_PropertyQosPolicy&, const char*, const char*, DDS_Boolean)>(
      "_ZN26DDSPropertyQosPolicyHelper12add_propertyER21DDS_PropertyQosPolicyPKcS3_b");
  return real(policy, name, value, propagate);
}

DDSDomainParticipantFactory* DDSDomainParticipantFactory::get_instance() {
  static auto* real = next<DDSDomainParticipantFactory*()>("_ZN27DDSDomainParticipantFactory12get_instanceEv");
  if (!is_library(CALLER)) { return real(); }
  static support::FaultyFactory factory(*real());
  return &factory;
}

MORAFastBufferPool* MORAFastBufferPool_newWithParams(std::size_t buffer_size, std::size_t alignment,
                                                     MORAFastBufferPoolInitialize initialize, void* initialize_param,
                                                     MORAFastBufferPoolFinalize finalize, void* finalize_param,
                                                     const MORAFastBufferPoolProperty* property, const char* name,
                                                     int initialize_once) {
  const bool observed = is_library(CALLER);
  if (observed && Seam::get().enter(Call::create_pool, "create_pool")) { return nullptr; }
  static auto* real =
      next<MORAFastBufferPool*(std::size_t, std::size_t, MORAFastBufferPoolInitialize, void*,
                               MORAFastBufferPoolFinalize, void*, const MORAFastBufferPoolProperty*, const char*, int)>(
          "_Z32MORAFastBufferPool_newWithParamsmmPFiPvS_ES_PFvS_S_ES_PK26MORAFastBufferPoolPropertyPKci");
  MORAFastBufferPool* pool = real(buffer_size, alignment, initialize, initialize_param, finalize, finalize_param,
                                  property, name, initialize_once);
  if (observed) {
    Seam::get().pools.push_back({pool, buffer_size, alignment, initialize, finalize, initialize_param, finalize_param,
                                 *property, name, initialize_once});
  }
  return pool;
}

void* MORAFastBufferPool_getBufferWithSize(MORAFastBufferPool* pool, int size) {
  if (enter(CALLER, Call::get_pool_buffer, "get_pool_buffer")) { return nullptr; }
  static auto* real =
      next<void*(MORAFastBufferPool*, int)>("_Z36MORAFastBufferPool_getBufferWithSizeP18MORAFastBufferPooli");
  return real(pool, size);
}

void MORAFastBufferPool_returnBuffer(MORAFastBufferPool* pool, void* buffer) {
  if (is_library(CALLER)) { Seam::get().enter(Call::return_pool_buffer, "return_pool_buffer"); }
  static auto* real =
      next<void(MORAFastBufferPool*, void*)>("_Z31MORAFastBufferPool_returnBufferP18MORAFastBufferPoolPv");
  real(pool, buffer);
}

void MORAFastBufferPool_delete(MORAFastBufferPool* pool) {
  if (is_library(CALLER)) { Seam::get().enter(Call::delete_pool, "delete_pool"); }
  static auto* real = next<void(MORAFastBufferPool*)>("_Z25MORAFastBufferPool_deleteP18MORAFastBufferPool");
  real(pool);
}
