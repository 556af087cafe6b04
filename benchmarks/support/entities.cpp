#include "support/entities.hpp"

#include <stdexcept>

namespace bench {

Participant::Participant(DDS_DomainId_t domain)
    : participant_(DDSDomainParticipantFactory::get_instance()->create_participant(domain, DDS_PARTICIPANT_QOS_DEFAULT,
                                                                                   nullptr, DDS_STATUS_MASK_NONE)) {
  if (participant_ == nullptr) { throw std::runtime_error("no participant"); }
}

Participant::~Participant() {
  participant_->delete_contained_entities();
  DDSDomainParticipantFactory::get_instance()->delete_participant(participant_);
}

const char* register_octets(DDSTypeSupport* /*type_support*/, DDSDomainParticipant* participant) {
  zemtra::check_retcode(DDSOctetsTypeSupport::register_type(participant, nullptr), "register_octets",
                        QVX_LOG_ANY_FAILURE_s, "register type", true);
  return DDSOctetsTypeSupport::get_type_name();
}

}  // namespace bench
