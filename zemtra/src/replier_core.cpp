#include <zemtra/details/replier_core.hpp>

#include <dds/data_writer.hpp>
#include <requestreply/entity_params.hpp>
#include <requestreply/exception.hpp>

#include "replier_property.hpp"

namespace zemtra {
namespace details {

ReplierCore::ReplierCore(const EntityParams& params, RegisterTypeFunction register_request_type,
                         RegisterTypeFunction register_reply_type, int samples_size) {
  initialize(params, register_request_type, register_reply_type, samples_size, nullptr, false);
}

void ReplierCore::get_datareader_qos(DDS_DataReaderQos& qos, const EntityParams& params, const char* topic_name,
                                     const char* role) {
  constexpr const char* method_name = "ReplierCore::get_datareader_qos";
  ReplierUntypedImpl::get_datareader_qos(qos, params, topic_name, role);
  DDS_DataWriterQos writer_qos;
  check_retcode(writer->get_qos(writer_qos), method_name, QVX_LOG_GET_FAILURE_s, "DataWriter qos", false);
  const std::string name = property_value(writer_qos.protocol.writer_guid);
  DDS_Property_t* given = DDSPropertyQosPolicyHelper::lookup_property(qos.property, kReplyWriterProperty);
  // The caller's QoS may be a copy of another replier's.
  const bool set = given == nullptr ? DDSPropertyQosPolicyHelper::add_property(qos.property, kReplyWriterProperty,
                                                                               name.c_str(), true) == DDS_RETCODE_OK
                                    : DDS_String_replace(&given->value, name.c_str()) != nullptr;
  if (!set) {
    check_retcode(DDS_RETCODE_OUT_OF_RESOURCES, method_name, QVX_LOG_ANY_FAILURE_s, "set DataReader qos property",
                  false);
  }
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
