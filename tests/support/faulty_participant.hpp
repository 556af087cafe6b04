#pragma once

#include <dds/domain_participant.hpp>
#include <memory>
#include <string>
#include <vector>

#include "support/faulty_reader.hpp"
#include "support/faulty_writer.hpp"

namespace support {

/// Creates and deletes wrapped writers and readers, for the wrapping participant and its publishers and subscribers.
class FaultyEntities {
 public:
  DDSDataWriter* wrap(DDSDataWriter* real);
  DDSDataReader* wrap(DDSDataReader* real);
  /// The real entity behind a wrapping one, otherwise the argument itself.
  DDSDataWriter* unwrap(DDSDataWriter* writer) const;
  DDSDataReader* unwrap(DDSDataReader* reader) const;
  void forget(DDSDataWriter* writer);
  void forget(DDSDataReader* reader);

 private:
  std::vector<std::unique_ptr<FaultyWriter>> writers_;
  std::vector<std::unique_ptr<FaultyReader>> readers_;
};

class FaultyPublisher final : public DDSPublisher {
 public:
  FaultyPublisher(DDSPublisher& real, DDSDomainParticipant& participant, FaultyEntities& entities)
      : real_(real), participant_(participant), entities_(entities) {}

  DDSPublisher* real() { return &real_; }

  DDSDomainParticipant* get_participant() override { return &participant_; }
  DDSDataWriter* create_datawriter(DDSTopic* topic, const DDS_DataWriterQos& qos, DDSDataWriterListener* listener,
                                   DDS_StatusMask mask) override;
  DDS_ReturnCode_t delete_datawriter(DDSDataWriter* writer) override;
  DDSStatusCondition* get_statuscondition() override { return real_.get_statuscondition(); }
  DDS_StatusMask get_status_changes() override { return real_.get_status_changes(); }
  DDS_InstanceHandle_t get_instance_handle() override { return real_.get_instance_handle(); }

 private:
  DDSPublisher& real_;
  DDSDomainParticipant& participant_;
  FaultyEntities& entities_;
};

class FaultySubscriber final : public DDSSubscriber {
 public:
  FaultySubscriber(DDSSubscriber& real, DDSDomainParticipant& participant, FaultyEntities& entities)
      : real_(real), participant_(participant), entities_(entities) {}

  DDSSubscriber* real() { return &real_; }

  DDSDomainParticipant* get_participant() override { return &participant_; }
  DDSDataReader* create_datareader(DDSTopicDescription* topic, const DDS_DataReaderQos& qos,
                                   DDSDataReaderListener* listener, DDS_StatusMask mask) override;
  DDS_ReturnCode_t delete_datareader(DDSDataReader* reader) override;
  DDSStatusCondition* get_statuscondition() override { return real_.get_statuscondition(); }
  DDS_StatusMask get_status_changes() override { return real_.get_status_changes(); }
  DDS_InstanceHandle_t get_instance_handle() override { return real_.get_instance_handle(); }

 private:
  DDSSubscriber& real_;
  DDSDomainParticipant& participant_;
  FaultyEntities& entities_;
};

/// Passes everything on to a real participant; what the request-reply library calls may fail by plan. Writers, readers,
/// publishers and subscribers that it creates are wrapped as well; topics are not.
class FaultyParticipant final : public DDSDomainParticipant {
 public:
  explicit FaultyParticipant(DDSDomainParticipant& real) : real_(real) {}

  /// The names of the topics and of the content-filtered topics that were created.
  std::vector<std::string> created_topics;
  std::vector<std::string> created_filtered_topics;
  /// The status masks and listeners with which readers were created.
  std::vector<std::pair<DDSDataReaderListener*, DDS_StatusMask>> reader_listeners;

  DDSTopic* create_topic(const char* topic_name, const char* type_name, const DDS_TopicQos& qos, void* listener,
                         DDS_StatusMask mask) override;
  DDSContentFilteredTopic* create_contentfilteredtopic(const char* name, DDSTopic* related_topic,
                                                       const char* filter_expression,
                                                       const DDS_StringSeq& expression_parameters) override;
  DDS_ReturnCode_t delete_contentfilteredtopic(DDSContentFilteredTopic* topic) override;
  DDSDataWriter* create_datawriter(DDSTopic* topic, const DDS_DataWriterQos& qos, DDSDataWriterListener* listener,
                                   DDS_StatusMask mask) override;
  DDS_ReturnCode_t delete_datawriter(DDSDataWriter* writer) override;
  DDSDataReader* create_datareader(DDSTopicDescription* topic, const DDS_DataReaderQos& qos,
                                   DDSDataReaderListener* listener, DDS_StatusMask mask) override;
  DDS_ReturnCode_t delete_datareader(DDSDataReader* reader) override;
  DDSPublisher* create_publisher(const DDS_PublisherQos& qos, void* listener, DDS_StatusMask mask) override;
  DDS_ReturnCode_t delete_publisher(DDSPublisher* publisher) override;
  DDSSubscriber* create_subscriber(const DDS_SubscriberQos& qos, void* listener, DDS_StatusMask mask) override;
  DDS_ReturnCode_t delete_subscriber(DDSSubscriber* subscriber) override;
  DDS_ReturnCode_t get_default_datawriter_qos(DDS_DataWriterQos& qos, const char* topic_name) override;
  DDS_ReturnCode_t get_default_datareader_qos(DDS_DataReaderQos& qos, const char* topic_name) override;
  DDS_ReturnCode_t get_current_time(DDS_Time_t& time) override;

  DDS_DomainId_t get_domain_id() override { return real_.get_domain_id(); }
  DDS_ReturnCode_t register_type(const char* type_name, const DDS_TypePlugin& plugin) override {
    return real_.register_type(type_name, plugin);
  }
  DDS_ReturnCode_t delete_topic(DDSTopic* topic) override { return real_.delete_topic(topic); }
  DDSTopicDescription* lookup_topicdescription(const char* name) override {
    return real_.lookup_topicdescription(name);
  }
  DDSPublisher* get_implicit_publisher() override { return real_.get_implicit_publisher(); }
  DDSSubscriber* get_implicit_subscriber() override { return real_.get_implicit_subscriber(); }
  DDS_ReturnCode_t delete_contained_entities() override { return real_.delete_contained_entities(); }
  DDS_ReturnCode_t get_default_topic_qos(DDS_TopicQos& qos) override { return real_.get_default_topic_qos(qos); }
  DDS_ReturnCode_t set_default_topic_qos(const DDS_TopicQos& qos) override { return real_.set_default_topic_qos(qos); }
  DDS_ReturnCode_t get_default_datawriter_qos(DDS_DataWriterQos& qos) override {
    return real_.get_default_datawriter_qos(qos);
  }
  DDS_ReturnCode_t set_default_datawriter_qos(const DDS_DataWriterQos& qos) override {
    return real_.set_default_datawriter_qos(qos);
  }
  DDS_ReturnCode_t get_default_datareader_qos(DDS_DataReaderQos& qos) override {
    return real_.get_default_datareader_qos(qos);
  }
  DDS_ReturnCode_t set_default_datareader_qos(const DDS_DataReaderQos& qos) override {
    return real_.set_default_datareader_qos(qos);
  }
  DDS_ReturnCode_t set_default_datawriter_qos(const DDS_DataWriterQos& qos, const char* topic_pattern) override {
    return real_.set_default_datawriter_qos(qos, topic_pattern);
  }
  DDS_ReturnCode_t set_default_datareader_qos(const DDS_DataReaderQos& qos, const char* topic_pattern) override {
    return real_.set_default_datareader_qos(qos, topic_pattern);
  }
  DDSStatusCondition* get_statuscondition() override { return real_.get_statuscondition(); }
  DDS_StatusMask get_status_changes() override { return real_.get_status_changes(); }
  DDS_InstanceHandle_t get_instance_handle() override { return real_.get_instance_handle(); }

 private:
  DDSDomainParticipant& real_;
  FaultyEntities entities_;
  std::vector<std::unique_ptr<FaultyPublisher>> publishers_;
  std::vector<std::unique_ptr<FaultySubscriber>> subscribers_;
};

}  // namespace support
