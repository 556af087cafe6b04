#pragma once

#include <dds/domain_participant.hpp>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

#include "domain/publisher_impl.hpp"
#include "domain/subscriber_impl.hpp"
#include "domain/topic_impl.hpp"
#include "qos/topic_qos_map.hpp"
#include "transport/transport.hpp"

namespace dds {

class ParticipantImpl final : public QuietEntity<DDSDomainParticipant> {
 public:
  /// Throws `std::bad_alloc`.
  ParticipantImpl(DDS_DomainId_t domain, std::unique_ptr<Transport> transport);

  DDS_DomainId_t get_domain_id() override { return domain_; }
  DDS_ReturnCode_t register_type(const char* type_name, const DDS_TypePlugin& plugin) override DDS_EXCLUDES(mutex_);

  DDSTopic* create_topic(const char* topic_name, const char* type_name, const DDS_TopicQos& qos, void* listener,
                         DDS_StatusMask mask) override DDS_EXCLUDES(mutex_);
  DDS_ReturnCode_t delete_topic(DDSTopic* topic) override DDS_EXCLUDES(mutex_);
  DDSContentFilteredTopic* create_contentfilteredtopic(const char* name, DDSTopic* related_topic,
                                                       const char* filter_expression,
                                                       const DDS_StringSeq& expression_parameters) override
      DDS_EXCLUDES(mutex_);
  DDS_ReturnCode_t delete_contentfilteredtopic(DDSContentFilteredTopic* topic) override DDS_EXCLUDES(mutex_);
  DDSTopicDescription* lookup_topicdescription(const char* name) override DDS_EXCLUDES(mutex_);

  DDSPublisher* create_publisher(const DDS_PublisherQos& qos, void* listener, DDS_StatusMask mask) override
      DDS_EXCLUDES(mutex_);
  DDS_ReturnCode_t delete_publisher(DDSPublisher* publisher) override DDS_EXCLUDES(mutex_);
  DDSSubscriber* create_subscriber(const DDS_SubscriberQos& qos, void* listener, DDS_StatusMask mask) override
      DDS_EXCLUDES(mutex_);
  DDS_ReturnCode_t delete_subscriber(DDSSubscriber* subscriber) override DDS_EXCLUDES(mutex_);
  DDSPublisher* get_implicit_publisher() override { return &implicit_publisher_; }
  DDSSubscriber* get_implicit_subscriber() override { return &implicit_subscriber_; }

  DDSDataWriter* create_datawriter(DDSTopic* topic, const DDS_DataWriterQos& qos, DDSDataWriterListener* listener,
                                   DDS_StatusMask mask) override {
    return implicit_publisher_.create_datawriter(topic, qos, listener, mask);
  }
  DDS_ReturnCode_t delete_datawriter(DDSDataWriter* writer) override {
    return implicit_publisher_.delete_datawriter(writer);
  }
  DDSDataReader* create_datareader(DDSTopicDescription* topic, const DDS_DataReaderQos& qos,
                                   DDSDataReaderListener* listener, DDS_StatusMask mask) override {
    return implicit_subscriber_.create_datareader(topic, qos, listener, mask);
  }
  DDS_ReturnCode_t delete_datareader(DDSDataReader* reader) override {
    return implicit_subscriber_.delete_datareader(reader);
  }
  DDS_ReturnCode_t delete_contained_entities() override DDS_EXCLUDES(mutex_);

  DDS_ReturnCode_t get_default_topic_qos(DDS_TopicQos& qos) override DDS_EXCLUDES(mutex_);
  DDS_ReturnCode_t set_default_topic_qos(const DDS_TopicQos& qos) override DDS_EXCLUDES(mutex_);
  DDS_ReturnCode_t get_default_datawriter_qos(DDS_DataWriterQos& qos) override {
    return get_default_datawriter_qos(qos, nullptr);
  }
  DDS_ReturnCode_t set_default_datawriter_qos(const DDS_DataWriterQos& qos) override {
    return set_default_datawriter_qos(qos, nullptr);
  }
  DDS_ReturnCode_t get_default_datareader_qos(DDS_DataReaderQos& qos) override {
    return get_default_datareader_qos(qos, nullptr);
  }
  DDS_ReturnCode_t set_default_datareader_qos(const DDS_DataReaderQos& qos) override {
    return set_default_datareader_qos(qos, nullptr);
  }
  DDS_ReturnCode_t get_default_datawriter_qos(DDS_DataWriterQos& qos, const char* topic_name) override
      DDS_EXCLUDES(mutex_);
  DDS_ReturnCode_t get_default_datareader_qos(DDS_DataReaderQos& qos, const char* topic_name) override
      DDS_EXCLUDES(mutex_);
  DDS_ReturnCode_t set_default_datawriter_qos(const DDS_DataWriterQos& qos, const char* topic_pattern) override
      DDS_EXCLUDES(mutex_);
  DDS_ReturnCode_t set_default_datareader_qos(const DDS_DataReaderQos& qos, const char* topic_pattern) override
      DDS_EXCLUDES(mutex_);
  DDS_ReturnCode_t get_current_time(DDS_Time_t& time) override;
  DDS_ReturnCode_t get_transport_statistics(DDS_TransportStatistics& statistics) override;

  // For what the participant holds.

  Transport& transport() { return *transport_; }
  /// Whether it may be deleted.
  bool empty() DDS_EXCLUDES(mutex_);
  /// Keeps a topic from being deleted until `release`; null for what is no topic of this participant.
  TopicImpl* hold(DDSTopic* topic) DDS_EXCLUDES(mutex_);
  ReaderTopic hold(DDSTopicDescription* description) DDS_EXCLUDES(mutex_);
  void release(TopicImpl& topic) DDS_EXCLUDES(mutex_);
  void release(const ReaderTopic& topic) DDS_EXCLUDES(mutex_);
  /// Throws `std::bad_alloc`.
  void copy_default(DDS_DataWriterQos& qos, const char* topic_name) DDS_EXCLUDES(mutex_);
  void copy_default(DDS_DataReaderQos& qos, const char* topic_name) DDS_EXCLUDES(mutex_);

 private:
  using TopicMap = std::map<std::string, std::unique_ptr<TopicImpl>, std::less<>>;
  using FilteredMap = std::map<std::string, std::unique_ptr<ContentFilteredTopicImpl>, std::less<>>;

  /// The topic if it is one of this participant, found by its name; otherwise the end.
  TopicMap::iterator find(DDSTopicDescription* topic) DDS_REQUIRES(mutex_);
  FilteredMap::iterator find_filtered(DDSTopicDescription* topic) DDS_REQUIRES(mutex_);
  DDS_ReturnCode_t try_delete(DDSTopic* topic) DDS_EXCLUDES(mutex_);
  DDS_ReturnCode_t try_delete(DDSContentFilteredTopic* topic) DDS_EXCLUDES(mutex_);
  bool name_is_free(std::string_view name) DDS_REQUIRES(mutex_);
  /// Why a topic cannot be created; null when it was.
  const char* add_topic(const char* name, const char* type_name, const DDS_TopicQos& qos, TopicImpl*& topic)
      DDS_EXCLUDES(mutex_);
  // Groups are publishers or subscribers.
  template <class Impl, class Map, class Qos>
  Impl* create_group(Map ParticipantImpl::*groups, const Qos& qos, const void* listener, const char* context)
      DDS_EXCLUDES(mutex_);
  template <class Map, class Api>
  DDS_ReturnCode_t delete_group(Map ParticipantImpl::*groups, Api* group) DDS_EXCLUDES(mutex_);
  template <class Qos>
  DDS_ReturnCode_t set_default(TopicQosMap<Qos> ParticipantImpl::*defaults, const Qos& qos, const char* pattern,
                               const char* context) DDS_EXCLUDES(mutex_);

  const DDS_DomainId_t domain_;
  const std::unique_ptr<Transport> transport_;
  PublisherImpl implicit_publisher_{*this};
  SubscriberImpl implicit_subscriber_{*this};

  Mutex mutex_;
  std::map<std::string, DDS_TypePlugin, std::less<>> types_ DDS_GUARDED_BY(mutex_);
  TopicMap topics_ DDS_GUARDED_BY(mutex_);
  FilteredMap filtered_topics_ DDS_GUARDED_BY(mutex_);
  std::unordered_map<DDSPublisher*, std::unique_ptr<PublisherImpl>> publishers_ DDS_GUARDED_BY(mutex_);
  std::unordered_map<DDSSubscriber*, std::unique_ptr<SubscriberImpl>> subscribers_ DDS_GUARDED_BY(mutex_);
  DDS_TopicQos topic_default_ DDS_GUARDED_BY(mutex_);
  TopicQosMap<DDS_DataWriterQos> writer_defaults_ DDS_GUARDED_BY(mutex_);
  TopicQosMap<DDS_DataReaderQos> reader_defaults_ DDS_GUARDED_BY(mutex_);
};

}  // namespace dds
