#include <utility>

#include <requestreply/exception.hpp>
#include <zemtra/participant.hpp>

#include "log.hpp"

namespace zemtra {

namespace {

void destroy(DDSDomainParticipant* participant) {
  if (participant == nullptr) { return; }
  if (participant->delete_contained_entities() == DDS_RETCODE_OK &&
      DDSDomainParticipantFactory::get_instance()->delete_participant(participant) == DDS_RETCODE_OK) {
    return;
  }
  details::log_failure("Participant::~Participant", QVX_LOG_DESTRUCTION_FAILURE_s, "participant");
}

}  // namespace

Participant::Participant(DDS_DomainId_t domain_id, const DDS_DomainParticipantQos& qos)
    : participant_(DDSDomainParticipantFactory::get_instance()->create_participant(domain_id, qos, nullptr, 0)) {
  if (participant_ == nullptr) {
    check_retcode(DDS_RETCODE_ERROR, "Participant::Participant", QVX_LOG_CREATION_FAILURE_s, "participant", false);
  }
}

Participant::~Participant() { destroy(participant_); }

Participant::Participant(Participant&& other) noexcept : participant_(std::exchange(other.participant_, nullptr)) {}

Participant& Participant::operator=(Participant&& other) noexcept {
  if (this != &other) {
    destroy(participant_);
    participant_ = std::exchange(other.participant_, nullptr);
  }
  return *this;
}

}  // namespace zemtra
