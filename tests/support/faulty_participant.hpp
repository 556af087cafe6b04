#pragma once

#include <dds/domain_participant.hpp>
#include <memory>
#include <string>
#include <vector>

#include "support/faulty_reader.hpp"
#include "support/faulty_writer.hpp"

namespace support {

/// The wrapping entities of one kind.
template <class Wrapper, class Entity>
class Wrappers {
 public:
  template <class... Arguments>
  Entity* wrap(Entity* real, Arguments&... arguments) {
    if (real == nullptr) { return nullptr; }
    return wrappers_.emplace_back(std::make_unique<Wrapper>(*real, arguments...)).get();
  }
  /// Deletes the real entity behind a wrapping one by its real owner's operation.
  template <class Owner>
  DDS_ReturnCode_t remove(Entity* entity, Owner& owner, DDS_ReturnCode_t (Owner::*operation)(Entity*)) {
    for (auto wrapper = wrappers_.begin(); wrapper != wrappers_.end(); ++wrapper) {
      if (wrapper->get() != entity) { continue; }
      const DDS_ReturnCode_t retcode = (owner.*operation)((*wrapper)->real());
      if (retcode == DDS_RETCODE_OK) { wrappers_.erase(wrapper); }
      return retcode;
    }
    return (owner.*operation)(entity);
  }

 private:
  std::vector<std::unique_ptr<Wrapper>> wrappers_;
};

/// The wrapping writers and readers of a participant, and how they are made and deleted by it, its publishers and
/// subscribers.
struct FaultyEntities {
  template <class Owner>
  DDSDataWriter* create_datawriter(const char* who, Owner& owner, DDSTopic* topic, const DDS_DataWriterQos& qos,
                                   DDSDataWriterListener* listener, DDS_StatusMask mask) {
    if (Seam::get().enter(Call::create_datawriter, std::string(who) + ".create_datawriter")) { return nullptr; }
    return writers.wrap(owner.create_datawriter(topic, qos, listener, mask));
  }
  template <class Owner>
  DDS_ReturnCode_t delete_datawriter(const char* who, Owner& owner, DDSDataWriter* writer) {
    const auto fault = Seam::get().enter(Call::delete_datawriter, std::string(who) + ".delete_datawriter");
    return fault ? *fault : writers.remove(writer, owner, &Owner::delete_datawriter);
  }
  template <class Owner>
  DDSDataReader* create_datareader(const char* who, Owner& owner, DDSTopicDescription* topic,
                                   const DDS_DataReaderQos& qos, DDSDataReaderListener* listener, DDS_StatusMask mask) {
    if (Seam::get().enter(Call::create_datareader, std::string(who) + ".create_datareader")) { return nullptr; }
    return readers.wrap(owner.create_datareader(topic, qos, listener, mask));
  }
  template <class Owner>
  DDS_ReturnCode_t delete_datareader(const char* who, Owner& owner, DDSDataReader* reader) {
    const auto fault = Seam::get().enter(Call::delete_datareader, std::string(who) + ".delete_datareader");
    return fault ? *fault : readers.remove(reader, owner, &Owner::delete_datareader);
  }

  Wrappers<FaultyWriter, DDSDataWriter> writers;
  Wrappers<FaultyReader, DDSDataReader> readers;
};

class FaultyPublisher final : public DDSPublisher {
 public:
  FaultyPublisher(DDSPublisher& real, DDSDomainParticipant& participant, FaultyEntities& entities)
      : real_(real), participant_(participant), entities_(entities) {}

  DDSPublisher* real() { return &real_; }

  DDSDomainParticipant* get_participant() override { return &participant_; }
  DDSDataWriter* create_datawriter(DDSTopic* topic, const DDS_DataWriterQos& qos, DDSDataWriterListener* listener,
                                   DDS_StatusMask mask) override {
    return entities_.create_datawriter("publisher", real_, topic, qos, listener, mask);
  }
  DDS_ReturnCode_t delete_datawriter(DDSDataWriter* writer) override {
    return entities_.delete_datawriter("publisher", real_, writer);
  }
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
                                   DDSDataReaderListener* listener, DDS_StatusMask mask) override {
    return entities_.create_datareader("subscriber", real_, topic, qos, listener, mask);
  }
  DDS_ReturnCode_t delete_datareader(DDSDataReader* reader) override {
    return entities_.delete_datareader("subscriber", real_, reader);
  }
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
                                   DDS_StatusMask mask) override {
    return entities_.create_datawriter("participant", real_, topic, qos, listener, mask);
  }
  DDS_ReturnCode_t delete_datawriter(DDSDataWriter* writer) override {
    return entities_.delete_datawriter("participant", real_, writer);
  }
  DDSDataReader* create_datareader(DDSTopicDescription* topic, const DDS_DataReaderQos& qos,
                                   DDSDataReaderListener* listener, DDS_StatusMask mask) override {
    reader_listeners.emplace_back(listener, mask);
    return entities_.create_datareader("participant", real_, topic, qos, listener, mask);
  }
  DDS_ReturnCode_t delete_datareader(DDSDataReader* reader) override {
    return entities_.delete_datareader("participant", real_, reader);
  }
  DDSPublisher* create_publisher(const DDS_PublisherQos& qos, void* listener, DDS_StatusMask mask) override {
    return publishers_.wrap(real_.create_publisher(qos, listener, mask), *this, entities_);
  }
  DDS_ReturnCode_t delete_publisher(DDSPublisher* publisher) override {
    return publishers_.remove(publisher, real_, &DDSDomainParticipant::delete_publisher);
  }
  DDSSubscriber* create_subscriber(const DDS_SubscriberQos& qos, void* listener, DDS_StatusMask mask) override {
    return subscribers_.wrap(real_.create_subscriber(qos, listener, mask), *this, entities_);
  }
  DDS_ReturnCode_t delete_subscriber(DDSSubscriber* subscriber) override {
    return subscribers_.remove(subscriber, real_, &DDSDomainParticipant::delete_subscriber);
  }
  DDS_ReturnCode_t get_default_datawriter_qos(DDS_DataWriterQos& qos, const char* topic_name) override;
  DDS_ReturnCode_t get_default_datareader_qos(DDS_DataReaderQos& qos, const char* topic_name) override;
  DDS_ReturnCode_t get_current_time(DDS_Time_t& time) override;

  DDS_DomainId_t get_domain_id() override { return real_.get_domain_id(); }
  DDS_ReturnCode_t get_transport_statistics(DDS_TransportStatistics& statistics) override {
    return real_.get_transport_statistics(statistics);
  }
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
  Wrappers<FaultyPublisher, DDSPublisher> publishers_;
  Wrappers<FaultySubscriber, DDSSubscriber> subscribers_;
};

}  // namespace support
