#include <requestreply/entity_params.hpp>

#include <dds/domain_participant.hpp>

#include "internal/check.hpp"

namespace zemtra {
namespace details {

namespace {

void require(bool condition, const char* msg) {
  if (!condition) { fail(DDS_RETCODE_BAD_PARAMETER, "EntityParams::validate", DDS_LOG_BAD_PARAMETER_s, msg); }
}

}  // namespace

EntityParams::EntityParams(DDSDomainParticipant* participant) : participant_(participant) {}

EntityParams::~EntityParams() = default;

void EntityParams::validate() const {
  require(participant_ != nullptr, "NULL participant");
  if (!service_name_.empty()) {
    require(request_topic_name_.empty() && reply_topic_name_.empty(),
            "service name and topic names cannot be set at the same time");
  } else {
    require(!request_topic_name_.empty() && !reply_topic_name_.empty(),
            "either service name or topic names are required");
  }
  require(publisher_ == nullptr || publisher_->get_participant() == participant_,
          "publisher belongs to different participant");
  require(subscriber_ == nullptr || subscriber_->get_participant() == participant_,
          "subscriber belongs to different participant");
}

DDSDomainParticipant* EntityParams::participant() const { return participant_; }
const std::string& EntityParams::service_name() const { return service_name_; }
const std::string& EntityParams::request_topic_name() const { return request_topic_name_; }
const std::string& EntityParams::reply_topic_name() const { return reply_topic_name_; }
const std::string& EntityParams::qos_library_name() const { return qos_library_name_; }
const std::string& EntityParams::qos_profile_name() const { return qos_profile_name_; }
const DDS_DataWriterQos* EntityParams::datawriter_qos() const { return datawriter_qos_; }
const DDS_DataReaderQos* EntityParams::datareader_qos() const { return datareader_qos_; }
DDSPublisher* EntityParams::publisher() const { return publisher_; }
DDSSubscriber* EntityParams::subscriber() const { return subscriber_; }
DDSTypeSupport* EntityParams::datawriter_type_support() const { return datawriter_type_support_; }
DDSTypeSupport* EntityParams::datareader_type_support() const { return datareader_type_support_; }

}  // namespace details

RequesterParams::RequesterParams(DDSDomainParticipant* participant) : EntityParams(participant) {}

RequesterParams::~RequesterParams() = default;

RequesterParams& RequesterParams::participant(DDSDomainParticipant* participant) {
  participant_ = participant;
  return *this;
}

RequesterParams& RequesterParams::service_name(const std::string& service_name) {
  service_name_ = service_name;
  return *this;
}

RequesterParams& RequesterParams::request_topic_name(const std::string& request_topic_name) {
  request_topic_name_ = request_topic_name;
  return *this;
}

RequesterParams& RequesterParams::reply_topic_name(const std::string& reply_topic_name) {
  reply_topic_name_ = reply_topic_name;
  return *this;
}

RequesterParams& RequesterParams::datawriter_qos(const DDS_DataWriterQos& qos) {
  datawriter_qos_ = &qos;
  return *this;
}

RequesterParams& RequesterParams::datareader_qos(const DDS_DataReaderQos& qos) {
  datareader_qos_ = &qos;
  return *this;
}

RequesterParams& RequesterParams::qos_profile(const std::string& library, const std::string& profile) {
  qos_library_name_ = library;
  qos_profile_name_ = profile;
  return *this;
}

RequesterParams& RequesterParams::publisher(DDSPublisher* publisher) {
  publisher_ = publisher;
  return *this;
}

RequesterParams& RequesterParams::subscriber(DDSSubscriber* subscriber) {
  subscriber_ = subscriber;
  return *this;
}

RequesterParams& RequesterParams::request_type_support(DDSTypeSupport* type_support) {
  datawriter_type_support_ = type_support;
  return *this;
}

RequesterParams& RequesterParams::reply_type_support(DDSTypeSupport* type_support) {
  datareader_type_support_ = type_support;
  return *this;
}

}  // namespace zemtra
