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

class FaultyPublisher final : public Wrapping<DDSPublisher> {
 public:
  FaultyPublisher(DDSPublisher& real, DDSDomainParticipant& participant, FaultyEntities& entities)
      : Wrapping(real), participant_(participant), entities_(entities) {}

  DDSDomainParticipant* get_participant() override { return &participant_; }
  DDSDataWriter* create_datawriter(DDSTopic* topic, const DDS_DataWriterQos& qos, DDSDataWriterListener* listener,
                                   DDS_StatusMask mask) override {
    return entities_.create_datawriter("publisher", real_, topic, qos, listener, mask);
  }
  DDS_ReturnCode_t delete_datawriter(DDSDataWriter* writer) override {
    return entities_.delete_datawriter("publisher", real_, writer);
  }

 private:
  DDSDomainParticipant& participant_;
  FaultyEntities& entities_;
};

class FaultySubscriber final : public Wrapping<DDSSubscriber> {
 public:
  FaultySubscriber(DDSSubscriber& real, DDSDomainParticipant& participant, FaultyEntities& entities)
      : Wrapping(real), participant_(participant), entities_(entities) {}

  DDSDomainParticipant* get_participant() override { return &participant_; }
  DDSDataReader* create_datareader(DDSTopicDescription* topic, const DDS_DataReaderQos& qos,
                                   DDSDataReaderListener* listener, DDS_StatusMask mask) override {
    return entities_.create_datareader("subscriber", real_, topic, qos, listener, mask);
  }
  DDS_ReturnCode_t delete_datareader(DDSDataReader* reader) override {
    return entities_.delete_datareader("subscriber", real_, reader);
  }

 private:
  DDSDomainParticipant& participant_;
  FaultyEntities& entities_;
};

/// Passes everything on to a real participant; what the request-reply library calls may fail by plan. Writers, readers,
/// publishers and subscribers that it creates are wrapped as well; topics are not.
class FaultyParticipant final : public Wrapping<DDSDomainParticipant> {
 public:
  using Wrapping::Wrapping;

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

  PASS_ON_0(DDS_DomainId_t, get_domain_id);
  PASS_ON_1(get_transport_statistics, DDS_TransportStatistics&);
  PASS_ON_2(register_type, const char*, const DDS_TypePlugin&);
  PASS_ON_1(delete_topic, DDSTopic*);
  DDSTopicDescription* lookup_topicdescription(const char* name) override {
    return real_.lookup_topicdescription(name);
  }
  PASS_ON_0(DDSPublisher*, get_implicit_publisher);
  PASS_ON_0(DDSSubscriber*, get_implicit_subscriber);
  PASS_ON_0(DDS_ReturnCode_t, delete_contained_entities);
  PASS_ON_1(get_default_topic_qos, DDS_TopicQos&);
  PASS_ON_1(set_default_topic_qos, const DDS_TopicQos&);
  PASS_ON_1(get_default_datawriter_qos, DDS_DataWriterQos&);
  PASS_ON_1(set_default_datawriter_qos, const DDS_DataWriterQos&);
  PASS_ON_1(get_default_datareader_qos, DDS_DataReaderQos&);
  PASS_ON_1(set_default_datareader_qos, const DDS_DataReaderQos&);
  PASS_ON_2(set_default_datawriter_qos, const DDS_DataWriterQos&, const char*);
  PASS_ON_2(set_default_datareader_qos, const DDS_DataReaderQos&, const char*);

 private:
  FaultyEntities entities_;
  Wrappers<FaultyPublisher, DDSPublisher> publishers_;
  Wrappers<FaultySubscriber, DDSSubscriber> subscribers_;
};

}  // namespace support
