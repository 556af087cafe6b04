#include <zemtra/details/replier_core.hpp>

#include <dds/data_reader.hpp>
#include <dds/data_writer.hpp>
#include <requestreply/entity_params.hpp>
#include <requestreply/exception.hpp>

#include "replier_property.hpp"
#include "topic_type.hpp"

namespace zemtra {
namespace details {

namespace {

/// Sets a property that the other ends see, whatever it was: the caller's QoS may be a copy of another replier's.
void set_property(DDS_PropertyQosPolicy& policy, const char* name, const char* value, const char* method_name) {
  DDS_Property_t* given = DDSPropertyQosPolicyHelper::lookup_property(policy, name);
  DDS_ReturnCode_t retcode = DDS_RETCODE_OUT_OF_RESOURCES;
  if (given == nullptr) {
    retcode = DDSPropertyQosPolicyHelper::add_property(policy, name, value, true);
  } else if (DDS_String_replace(&given->value, value) != nullptr) {
    given->propagate = true;
    return;
  }
  check_retcode(retcode, method_name, QVX_LOG_ANY_FAILURE_s, "set qos property", false);
}

}  // namespace

ReplierCore::ReplierCore(const EntityParams& params, RegisterTypeFunction register_request_type,
                         RegisterTypeFunction register_reply_type, int samples_size) {
  constexpr const char* method_name = "Replier::Replier";
  initialize(params, register_request_type, register_reply_type, samples_size, nullptr, false);
  require_type(*reader_topic, register_request_type(params.datareader_type_support(), participant), method_name);
  require_type(*writer_topic, register_reply_type(params.datawriter_type_support(), participant), method_name);
}

void ReplierCore::get_datawriter_qos(DDS_DataWriterQos& qos, const EntityParams& params, const char* topic_name,
                                     const char* role) {
  ReplierUntypedImpl::get_datawriter_qos(qos, params, topic_name, role);
  set_property(qos.property, kNamedWriterProperty, "1", "ReplierCore::get_datawriter_qos");
}

void ReplierCore::get_datareader_qos(DDS_DataReaderQos& qos, const EntityParams& params, const char* topic_name,
                                     const char* role) {
  constexpr const char* method_name = "ReplierCore::get_datareader_qos";
  ReplierUntypedImpl::get_datareader_qos(qos, params, topic_name, role);
  DDS_DataWriterQos writer_qos;
  check_retcode(writer->get_qos(writer_qos), method_name, QVX_LOG_GET_FAILURE_s, "DataWriter qos", false);
  set_property(qos.property, kReplyWriterProperty, property_value(writer_qos.protocol.writer_guid).c_str(),
               method_name);
}

UntypedLoan ReplierCore::receive(const Duration& max_wait, int min_count, int max_count) {
  UntypedLoan loan;
  receive_sample_loaned(&loan.data, &loan.count, loan.infos, max_count, max_wait, min_count);
  return loan;
}

UntypedLoan ReplierCore::lend(int max_count, bool take) {
  UntypedLoan loan;
  get_sample_loaned(&loan.data, &loan.count, loan.infos, max_count, take, nullptr);
  return loan;
}

}  // namespace details
}  // namespace zemtra
