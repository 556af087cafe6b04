// Stand-ins for functions of the DDS layer. A program that exports its symbols is searched first, so calls from all
// libraries arrive here; those of the request-reply library may fail by plan, all others go on to the real function.

#include <dlfcn.h>
#include <dds/domain_participant_factory.hpp>
#include <dds/memory.hpp>

#include <cstring>

#include "support/faulty_factory.hpp"
#include "support/next.hpp"
#include "support/seam.hpp"

namespace {

using support::Call;
using support::next;
using support::Seam;

/// Whether the code at `address` is the request-reply library's. The DDS layer calls some of these functions itself.
bool is_library(const void* address) {
  Dl_info info;
  return dladdr(address, &info) != 0 && std::strstr(info.dli_fname, "libzemtra.so") != nullptr;
}

std::optional<DDS_ReturnCode_t> enter(const void* caller, Call call, const char* who) {
  return is_library(caller) ? Seam::get().enter(call, who) : std::nullopt;
}

}  // namespace

#define CALLER __builtin_return_address(0)

DDS_ReturnCode_t DDSWaitSet::attach_condition(DDSCondition* condition) {
  if (const auto fault = enter(CALLER, Call::attach_condition, "waitset.attach_condition")) { return *fault; }
  return (this->*next<&DDSWaitSet::attach_condition>())(condition);
}

DDS_ReturnCode_t DDSWaitSet::detach_condition(DDSCondition* condition) {
  if (const auto fault = enter(CALLER, Call::detach_condition, "waitset.detach_condition")) { return *fault; }
  return (this->*next<&DDSWaitSet::detach_condition>())(condition);
}

DDS_ReturnCode_t DDSWaitSet::wait(DDSConditionSeq& active_conditions, const DDS_Duration_t& timeout) {
  if (is_library(CALLER)) {
    Seam::get().note(&Seam::wait_timeouts, timeout);
    if (const auto fault = Seam::get().enter(Call::wait, "waitset.wait")) { return *fault; }
    if (Seam::get().on_wait) {
      if (const auto result = Seam::get().on_wait(*this)) { return *result; }
    }
  }
  return (this->*next<&DDSWaitSet::wait>())(active_conditions, timeout);
}

DDS_ReturnCode_t DDS_DataWriter_write_w_params_untyped_generalI(DDS_DataWriter* writer, int reserved, const void* data,
                                                                DDS_WriteParams_t* params) {
  if (is_library(CALLER)) { Seam::get().note(&Seam::writes, *params); }
  if (const auto fault = enter(CALLER, Call::write, "writer.write")) { return *fault; }
  return next<&DDS_DataWriter_write_w_params_untyped_generalI>()(writer, reserved, data, params);
}

DDS_ReturnCode_t DDS_DataReader_read_or_take_w_condition_untypedI(
    DDS_DataReader* reader, DDS_Boolean* is_loan, void*** received_data, int* data_count, DDS_SampleInfoSeq* info_seq,
    int data_seq_len, int data_seq_max_len, unsigned char data_seq_has_ownership, void* copy_buffer, int sample_size,
    int max_samples, DDS_ReadCondition* condition, DDS_Boolean take) {
  if (is_library(CALLER)) {
    Seam::get().note(&Seam::reads, {data_seq_len, data_seq_max_len, data_seq_has_ownership, copy_buffer, sample_size,
                                    max_samples, take});
  }
  if (const auto fault = enter(CALLER, Call::read_or_take, take ? "reader.take" : "reader.read")) { return *fault; }
  return next<&DDS_DataReader_read_or_take_w_condition_untypedI>()(
      reader, is_loan, received_data, data_count, info_seq, data_seq_len, data_seq_max_len, data_seq_has_ownership,
      copy_buffer, sample_size, max_samples, condition, take);
}

DDS_ReturnCode_t DDS_DataReader_return_loan_untypedI(DDS_DataReader* reader, void** received_data,
                                                     DDS_SampleInfoSeq* info_seq) {
  const auto fault = enter(CALLER, Call::return_loan, "reader.return_loan");
  // Carried out in any case: with a loan that is lost nobody could delete the reader.
  const DDS_ReturnCode_t retcode = next<&DDS_DataReader_return_loan_untypedI>()(reader, received_data, info_seq);
  return fault ? *fault : retcode;
}

char* DDS_String_dup(const char* source) {
  if (enter(CALLER, Call::duplicate_string, "duplicate_string")) { return nullptr; }
  return next<&DDS_String_dup>()(source);
}

DDS_ReturnCode_t DDS_DataWriterQos_copy(DDS_DataWriterQos* destination, const DDS_DataWriterQos* source) {
  if (const auto fault = enter(CALLER, Call::copy_datawriter_qos, "copy_datawriter_qos")) { return *fault; }
  return next<&DDS_DataWriterQos_copy>()(destination, source);
}

DDS_ReturnCode_t DDS_DataReaderQos_copy(DDS_DataReaderQos* destination, const DDS_DataReaderQos* source) {
  if (const auto fault = enter(CALLER, Call::copy_datareader_qos, "copy_datareader_qos")) { return *fault; }
  return next<&DDS_DataReaderQos_copy>()(destination, source);
}

DDS_ReturnCode_t DDSPropertyQosPolicyHelper::add_property(DDS_PropertyQosPolicy& policy, const char* name,
                                                          const char* value, DDS_Boolean propagate) {
  if (const auto fault = enter(CALLER, Call::add_property, "add_property")) { return *fault; }
  return next<&DDSPropertyQosPolicyHelper::add_property>()(policy, name, value, propagate);
}

DDSDomainParticipantFactory* DDSDomainParticipantFactory::get_instance() {
  if (!is_library(CALLER)) { return next<&DDSDomainParticipantFactory::get_instance>()(); }
  static support::FaultyFactory factory(*next<&DDSDomainParticipantFactory::get_instance>()());
  return &factory;
}

MORAFastBufferPool* MORAFastBufferPool_newWithParams(std::size_t buffer_size, std::size_t alignment,
                                                     MORAFastBufferPoolInitialize initialize, void* initialize_param,
                                                     MORAFastBufferPoolFinalize finalize, void* finalize_param,
                                                     const MORAFastBufferPoolProperty* property, const char* name,
                                                     int initialize_once) {
  const bool observed = is_library(CALLER);
  if (observed && Seam::get().enter(Call::create_pool, "create_pool")) { return nullptr; }
  MORAFastBufferPool* pool = next<&MORAFastBufferPool_newWithParams>()(
      buffer_size, alignment, initialize, initialize_param, finalize, finalize_param, property, name, initialize_once);
  if (observed) { Seam::get().pools.push_back(pool); }
  return pool;
}

void* MORAFastBufferPool_getBufferWithSize(MORAFastBufferPool* pool, int size) {
  if (enter(CALLER, Call::get_pool_buffer, "get_pool_buffer")) { return nullptr; }
  return next<&MORAFastBufferPool_getBufferWithSize>()(pool, size);
}

void MORAFastBufferPool_returnBuffer(MORAFastBufferPool* pool, void* buffer) {
  if (is_library(CALLER)) { Seam::get().enter(Call::return_pool_buffer, "return_pool_buffer"); }
  next<&MORAFastBufferPool_returnBuffer>()(pool, buffer);
}

void MORAFastBufferPool_delete(MORAFastBufferPool* pool) {
  if (is_library(CALLER)) { Seam::get().enter(Call::delete_pool, "delete_pool"); }
  next<&MORAFastBufferPool_delete>()(pool);
}
