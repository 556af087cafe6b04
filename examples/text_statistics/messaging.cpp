#include "messaging.hpp"

#include <stdexcept>

Participant::Participant()
    : participant_(DDSDomainParticipantFactory::get_instance()->create_participant(
          /*domain_id=*/0, DDS_PARTICIPANT_QOS_DEFAULT, nullptr, DDS_STATUS_MASK_NONE)) {
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
