#include <zemtra/qos.hpp>

#include <dds/memory.hpp>
#include <requestreply/entity_params.hpp>
#include <requestreply/entity_untyped_impl.hpp>
#include <requestreply/exception.hpp>

namespace zemtra {

namespace {

/// An entity that is asked for its QoS and never initialized.
class QosSource : public details::EntityUntypedImpl {
 public:
  explicit QosSource(DDSDomainParticipant* its_participant) : EntityUntypedImpl(false) {
    participant = its_participant;
  }
};

void require(const DDSDomainParticipant* participant, const char* method_name) {
  if (participant != nullptr) { return; }
  check_retcode(DDS_RETCODE_BAD_PARAMETER, method_name, DDS_LOG_BAD_PARAMETER_s, "participant", false);
}

/// The role is that of the entity which the QoS will be for.
void clear_role(DDS_EntityNameQosPolicy& name) {
  DDS_String_free(name.role_name);
  name.role_name = nullptr;
}

}  // namespace

DDS_DataWriterQos request_reply_datawriter_qos(DDSDomainParticipant* participant, const std::string& topic_name) {
  require(participant, "request_reply_datawriter_qos");
  DDS_DataWriterQos qos;
  QosSource(participant).get_datawriter_qos(qos, RequesterParams(participant), topic_name.c_str(), "");
  clear_role(qos.publication_name);
  return qos;
}

DDS_DataReaderQos request_reply_datareader_qos(DDSDomainParticipant* participant, const std::string& topic_name) {
  require(participant, "request_reply_datareader_qos");
  DDS_DataReaderQos qos;
  QosSource(participant).get_datareader_qos(qos, RequesterParams(participant), topic_name.c_str(), "");
  clear_role(qos.subscription_name);
  return qos;
}

}  // namespace zemtra
