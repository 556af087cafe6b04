#include "domain/participant_impl.hpp"

#include "log/log.hpp"
#include "qos/qos_check.hpp"
#include "util/deadline.hpp"

namespace dds {

ParticipantImpl::ParticipantImpl(DDS_DomainId_t domain, std::unique_ptr<Transport> transport)
    : domain_(domain), transport_(std::move(transport)) {}

template <class Impl, class Map, class Qos>
Impl* ParticipantImpl::create_group(Map ParticipantImpl::*groups, const Qos& qos, const void* listener,
                                    const char* context) {
  if (listener != nullptr) {
    DDS_LOG_FAILURE(context, DDS_LOG_UNSUPPORTED_s, "a listener of a publisher or subscriber");
    return nullptr;
  }
  if (check(qos, context) != DDS_RETCODE_OK) { return nullptr; }
  try {
    auto made = std::make_unique<Impl>(*this);
    Impl* added = made.get();
    const MutexLock lock(mutex_);
    (this->*groups).emplace(added, std::move(made));
    return added;
  } catch (const std::bad_alloc&) {
    DDS_LOG_FAILURE(context, QVX_LOG_CREATION_FAILURE_s, "out of memory");
    return nullptr;
  }
}

template <class Map, class Api>
DDS_ReturnCode_t ParticipantImpl::delete_group(Map ParticipantImpl::*groups, Api* group) {
  if (group == nullptr) { return DDS_RETCODE_BAD_PARAMETER; }
  typename Map::mapped_type deleted;
  const MutexLock lock(mutex_);
  const auto found = (this->*groups).find(group);
  if (found == (this->*groups).end() || !found->second->empty()) { return DDS_RETCODE_PRECONDITION_NOT_MET; }
  deleted = std::move(found->second);
  (this->*groups).erase(found);
  return DDS_RETCODE_OK;
}

DDSPublisher* ParticipantImpl::create_publisher(const DDS_PublisherQos& qos, void* listener, DDS_StatusMask /*mask*/) {
  return create_group<PublisherImpl>(&ParticipantImpl::publishers_, qos, listener, "create_publisher");
}

DDSSubscriber* ParticipantImpl::create_subscriber(const DDS_SubscriberQos& qos, void* listener,
                                                  DDS_StatusMask /*mask*/) {
  return create_group<SubscriberImpl>(&ParticipantImpl::subscribers_, qos, listener, "create_subscriber");
}

DDS_ReturnCode_t ParticipantImpl::delete_publisher(DDSPublisher* publisher) {
  return DDS_LOG_REFUSAL("delete_publisher", delete_group(&ParticipantImpl::publishers_, publisher),
                         "not a publisher of this participant, or not empty");
}

DDS_ReturnCode_t ParticipantImpl::delete_subscriber(DDSSubscriber* subscriber) {
  return DDS_LOG_REFUSAL("delete_subscriber", delete_group(&ParticipantImpl::subscribers_, subscriber),
                         "not a subscriber of this participant, or not empty");
}

bool ParticipantImpl::empty() {
  if (!implicit_publisher_.empty() || !implicit_subscriber_.empty()) { return false; }
  const MutexLock lock(mutex_);
  return topics_.empty() && filtered_topics_.empty() && publishers_.empty() && subscribers_.empty();
}

DDS_ReturnCode_t ParticipantImpl::delete_contained_entities() {
  std::vector<PublisherImpl*> publishers;
  std::vector<SubscriberImpl*> subscribers;
  try {
    publishers.push_back(&implicit_publisher_);
    subscribers.push_back(&implicit_subscriber_);
    const MutexLock lock(mutex_);
    for (const auto& known : publishers_) { publishers.push_back(known.second.get()); }
    for (const auto& known : subscribers_) { subscribers.push_back(known.second.get()); }
  } catch (const std::bad_alloc&) { return DDS_RETCODE_OUT_OF_RESOURCES; }
  DDS_ReturnCode_t outcome = DDS_RETCODE_OK;
  const auto note = [&](DDS_ReturnCode_t retcode) {
    if (retcode != DDS_RETCODE_OK) { outcome = retcode; }
  };
  for (SubscriberImpl* subscriber : subscribers) { note(subscriber->delete_all()); }
  for (PublisherImpl* publisher : publishers) { note(publisher->delete_all()); }
  if (outcome != DDS_RETCODE_OK) { return outcome; }
  const MutexLock lock(mutex_);
  publishers_.clear();
  subscribers_.clear();
  filtered_topics_.clear();
  topics_.clear();
  return DDS_RETCODE_OK;
}

DDS_ReturnCode_t ParticipantImpl::get_default_topic_qos(DDS_TopicQos& qos) {
  const MutexLock lock(mutex_);
  qos = topic_default_;
  return DDS_RETCODE_OK;
}

DDS_ReturnCode_t ParticipantImpl::set_default_topic_qos(const DDS_TopicQos& qos) {
  const DDS_ReturnCode_t refused = check(qos, "set_default_topic_qos");
  if (refused != DDS_RETCODE_OK) { return refused; }
  const MutexLock lock(mutex_);
  topic_default_ = qos;
  return DDS_RETCODE_OK;
}

void ParticipantImpl::copy_default(DDS_DataWriterQos& qos, const char* topic_name) {
  const MutexLock lock(mutex_);
  qos = writer_defaults_.find(topic_name);
}

void ParticipantImpl::copy_default(DDS_DataReaderQos& qos, const char* topic_name) {
  const MutexLock lock(mutex_);
  qos = reader_defaults_.find(topic_name);
}

DDS_ReturnCode_t ParticipantImpl::get_default_datawriter_qos(DDS_DataWriterQos& qos, const char* topic_name) {
  const MutexLock lock(mutex_);
  return DDS_DataWriterQos_copy(&qos, &writer_defaults_.find(topic_name));
}

DDS_ReturnCode_t ParticipantImpl::get_default_datareader_qos(DDS_DataReaderQos& qos, const char* topic_name) {
  const MutexLock lock(mutex_);
  return DDS_DataReaderQos_copy(&qos, &reader_defaults_.find(topic_name));
}

template <class Qos>
DDS_ReturnCode_t ParticipantImpl::set_default(TopicQosMap<Qos> ParticipantImpl::*defaults, const Qos& qos,
                                              const char* pattern, const char* context) {
  const DDS_ReturnCode_t refused = check(qos, context);
  if (refused != DDS_RETCODE_OK) { return refused; }
  try {
    const MutexLock lock(mutex_);
    pattern == nullptr ? (this->*defaults).set_general(qos) : (this->*defaults).set(pattern, qos);
  } catch (const std::bad_alloc&) { return DDS_RETCODE_OUT_OF_RESOURCES; }
  return DDS_RETCODE_OK;
}

DDS_ReturnCode_t ParticipantImpl::set_default_datawriter_qos(const DDS_DataWriterQos& qos, const char* topic_pattern) {
  return set_default(&ParticipantImpl::writer_defaults_, qos, topic_pattern, "set_default_datawriter_qos");
}

DDS_ReturnCode_t ParticipantImpl::set_default_datareader_qos(const DDS_DataReaderQos& qos, const char* topic_pattern) {
  return set_default(&ParticipantImpl::reader_defaults_, qos, topic_pattern, "set_default_datareader_qos");
}

DDS_ReturnCode_t ParticipantImpl::get_current_time(DDS_Time_t& time) {
  time = current_time();
  return DDS_RETCODE_OK;
}

DDS_ReturnCode_t ParticipantImpl::get_transport_statistics(DDS_TransportStatistics& statistics) {
  statistics = transport_->statistics();
  return DDS_RETCODE_OK;
}

}  // namespace dds
