#include "messaging.hpp"

#include <stdexcept>

namespace {

DDS_DomainParticipantQos qos_with(const char* transport) {
  DDS_DomainParticipantQos qos = DDS_PARTICIPANT_QOS_DEFAULT;
  zemtra::check_retcode(
      DDSPropertyQosPolicyHelper::add_property(qos.property, "dds.transport", transport, /*propagate=*/false),
      "qos_with", QVX_LOG_ANY_FAILURE_s, "add property", true);
  return qos;
}

}  // namespace

Participant::Participant(const char* transport)
    : participant_(DDSDomainParticipantFactory::get_instance()->create_participant(
          /*domain_id=*/0, qos_with(transport), nullptr, DDS_STATUS_MASK_NONE)) {
  if (participant_ == nullptr) { throw std::runtime_error("cannot join the domain"); }
}

Participant::~Participant() {
  participant_->delete_contained_entities();  // the topics
  DDSDomainParticipantFactory::get_instance()->delete_participant(participant_);
}

const char* register_string(DDSTypeSupport* /*type_support*/, DDSDomainParticipant* participant) {
  const char* const type_name = DDSStringTypeSupport::get_type_name();
  zemtra::check_retcode(DDSStringTypeSupport::register_type(participant, type_name), "register_string",
                        QVX_LOG_ANY_FAILURE_s, "register type", true);
  return type_name;
}
