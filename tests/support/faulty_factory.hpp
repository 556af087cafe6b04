#pragma once

#include <dds/domain_participant_factory.hpp>

#include "support/seam.hpp"

namespace support {

/// Passes everything on to the real factory; the QoS of profiles may fail by plan.
class FaultyFactory final : public DDSDomainParticipantFactory {
 public:
  explicit FaultyFactory(DDSDomainParticipantFactory& real) : real_(real) {}

  DDSDomainParticipant* create_participant(DDS_DomainId_t domain_id, const DDS_DomainParticipantQos& qos,
                                           void* listener, DDS_StatusMask mask) override {
    return real_.create_participant(domain_id, qos, listener, mask);
  }
  DDS_ReturnCode_t delete_participant(DDSDomainParticipant* participant) override {
    return real_.delete_participant(participant);
  }
  DDS_ReturnCode_t set_profile_datawriter_qos(const char* library, const char* profile, const char* topic_pattern,
                                              const DDS_DataWriterQos& qos) override {
    return real_.set_profile_datawriter_qos(library, profile, topic_pattern, qos);
  }
  DDS_ReturnCode_t set_profile_datareader_qos(const char* library, const char* profile, const char* topic_pattern,
                                              const DDS_DataReaderQos& qos) override {
    return real_.set_profile_datareader_qos(library, profile, topic_pattern, qos);
  }
  void clear_profiles() override { real_.clear_profiles(); }
  DDS_ReturnCode_t get_datawriter_qos_from_profile(DDS_DataWriterQos& qos, const char* library, const char* profile,
                                                   const char* topic_name) override {
    const auto who = describe("factory.get_datawriter_qos_from_profile", library, profile, topic_name);
    if (const auto fault = Seam::get().enter(Call::get_profile_datawriter_qos, who)) { return *fault; }
    return real_.get_datawriter_qos_from_profile(qos, library, profile, topic_name);
  }
  DDS_ReturnCode_t get_datareader_qos_from_profile(DDS_DataReaderQos& qos, const char* library, const char* profile,
                                                   const char* topic_name) override {
    const auto who = describe("factory.get_datareader_qos_from_profile", library, profile, topic_name);
    if (const auto fault = Seam::get().enter(Call::get_profile_datareader_qos, who)) { return *fault; }
    return real_.get_datareader_qos_from_profile(qos, library, profile, topic_name);
  }

 private:
  static std::string describe(const std::string& operation, const char* library, const char* profile,
                              const char* topic_name) {
    return operation + "(" + library + ", " + profile + ", " + topic_name + ")";
  }

  DDSDomainParticipantFactory& real_;
};

}  // namespace support
