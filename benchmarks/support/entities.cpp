#include "support/entities.hpp"

#include <stdexcept>
#include <zemtra/details/service_match.hpp>

#include "support/tag.hpp"

namespace bench {

namespace {

void add_property(DDS_DomainParticipantQos& qos, const char* name, const char* value) {
  zemtra::check_retcode(DDSPropertyQosPolicyHelper::add_property(qos.property, name, value, false), "add_property",
                        QVX_LOG_ANY_FAILURE_s, "add property", true);
}

DDS_DomainParticipantQos qos_of(Transport transport) {
  DDS_DomainParticipantQos qos = DDS_PARTICIPANT_QOS_DEFAULT;
  if (transport == Transport::rtps) {
    add_property(qos, "dds.transport", "rtps");
    // Dozens of processes on few processors are to be slow rather than lose each other.
    add_property(qos, "dds.transport.rtps.lease_milliseconds", "20000");
  }
  return qos;
}

}  // namespace

Participant::Participant(DDS_DomainId_t domain, Transport transport)
    : participant_(DDSDomainParticipantFactory::get_instance()->create_participant(domain, qos_of(transport), nullptr,
                                                                                   DDS_STATUS_MASK_NONE)) {
  if (participant_ == nullptr) { throw std::runtime_error("no participant"); }
}

Participant::~Participant() {
  participant_->delete_contained_entities();
  DDSDomainParticipantFactory::get_instance()->delete_participant(participant_);
}

void wait_for_replier(zemtra::details::RequesterUntypedImpl& requester) {
  using zemtra::details::ServiceMatch;
  const ServiceMatch match(ServiceMatch::Role::requester, *requester.get_datawriter(), *requester.get_datareader());
  if (!match.wait(std::chrono::seconds(20))) { fail(match.explain().c_str()); }
}

const char* register_octets(DDSTypeSupport* /*type_support*/, DDSDomainParticipant* participant) {
  zemtra::check_retcode(DDSOctetsTypeSupport::register_type(participant, nullptr), "register_octets",
                        QVX_LOG_ANY_FAILURE_s, "register type", true);
  return DDSOctetsTypeSupport::get_type_name();
}

}  // namespace bench
