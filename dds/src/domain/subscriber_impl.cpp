#include "domain/subscriber_impl.hpp"

#include "domain/participant_impl.hpp"
#include "log/log.hpp"
#include "qos/qos_check.hpp"

namespace dds {

namespace {

constexpr char kCreate[] = "create_datareader";

/// Ends what a reader has to do with others; afterwards it can be destroyed.
void end(ReaderEntity& reader) {
  reader.core().silence();
  reader.endpoint.reset();
  reader.core().release_blocked_writers();
}

}  // namespace

DDSDomainParticipant* SubscriberImpl::get_participant() { return &participant_; }

DDSDataReader* SubscriberImpl::create_datareader(DDSTopicDescription* topic, const DDS_DataReaderQos& qos,
                                                 DDSDataReaderListener* listener, DDS_StatusMask mask) {
  const ReaderTopic own = participant_.hold(topic);
  if (own.topic == nullptr) {
    DDS_LOG_FAILURE(kCreate, DDS_LOG_BAD_PARAMETER_s, "the topic is not one of this participant");
    return nullptr;
  }
  DDSDataReader* reader = nullptr;
  try {
    DDS_DataReaderQos defaults;
    const bool by_default = &qos == &DDS_DATAREADER_QOS_DEFAULT;
    if (by_default) { participant_.copy_default(defaults, own.topic->get_name()); }
    const DDS_DataReaderQos& chosen = by_default ? defaults : qos;
    if (check(chosen, kCreate) == DDS_RETCODE_OK) { reader = create(own, chosen, listener, mask); }
  } catch (const std::bad_alloc&) {
    DDS_LOG_FAILURE(kCreate, QVX_LOG_CREATION_FAILURE_s, "data reader: out of memory");
  }
  if (reader == nullptr) { participant_.release(own); }
  return reader;
}

// The reader is in the list before it is announced, because listeners may use it from then on.
DDSDataReader* SubscriberImpl::create(const ReaderTopic& topic, const DDS_DataReaderQos& qos,
                                      DDSDataReaderListener* listener, DDS_StatusMask mask) {
  std::unique_ptr<ReaderEntity> made = make_reader(*this, topic, qos);
  ReaderEntity& entity = *made;
  DDSDataReader* reader = &entity.api();
  entity.core().set_listener(listener, mask);
  {
    const MutexLock lock(mutex_);
    readers_.emplace(reader, std::move(made));
  }
  try {
    const TopicKey key{participant_.get_domain_id(), topic.topic->name(), topic.topic->type_name()};
    entity.endpoint = participant_.transport().create_reader(
        key, entity.core(), topic.filtered == nullptr ? nullptr : topic.filtered->filter());
    entity.endpoint->announce();
  } catch (const std::bad_alloc&) {
    end(entity);
    const MutexLock lock(mutex_);
    readers_.erase(reader);
    throw;
  }
  return reader;
}

ReaderEntity* SubscriberImpl::claim(DDSDataReader* reader) {
  const MutexLock lock(mutex_);
  const auto found = readers_.find(reader);
  if (found == readers_.end()) { return nullptr; }
  ReaderEntity& entity = *found->second;
  if (entity.being_deleted || entity.core().in_listener()) { return nullptr; }
  entity.being_deleted = true;
  return &entity;
}

DDS_ReturnCode_t SubscriberImpl::delete_datareader(DDSDataReader* reader) {
  return DDS_LOG_REFUSAL("delete_datareader", try_delete(reader),
                         "not a reader of this subscriber, with loans or conditions, or in its listener");
}

// A listener that is running may hold a loan that it is about to return, or take one to keep. So it comes to rest
// before the loans are looked at.
DDS_ReturnCode_t SubscriberImpl::try_delete(DDSDataReader* reader) {
  if (reader == nullptr) { return DDS_RETCODE_BAD_PARAMETER; }
  ReaderEntity* const entity = claim(reader);
  if (entity == nullptr) { return DDS_RETCODE_PRECONDITION_NOT_MET; }
  const DDS_StatusMask told = entity->core().silence();
  if (!entity->core().is_free()) {
    entity->core().resume(told);
    const MutexLock lock(mutex_);
    entity->being_deleted = false;
    return DDS_RETCODE_PRECONDITION_NOT_MET;
  }
  end(*entity);
  participant_.release(entity->topic());
  std::unique_ptr<ReaderEntity> deleted;
  const MutexLock lock(mutex_);
  const auto found = readers_.find(reader);
  deleted = std::move(found->second);
  readers_.erase(found);
  return DDS_RETCODE_OK;
}

bool SubscriberImpl::empty() {
  const MutexLock lock(mutex_);
  return readers_.empty();
}

DDS_ReturnCode_t SubscriberImpl::delete_all() {
  for (;;) {
    DDSDataReader* reader = nullptr;
    {
      const MutexLock lock(mutex_);
      if (readers_.empty()) { return DDS_RETCODE_OK; }
      reader = readers_.begin()->first;
      readers_.begin()->second->core().delete_all_conditions();
    }
    const DDS_ReturnCode_t retcode = delete_datareader(reader);
    if (retcode != DDS_RETCODE_OK) { return retcode; }
  }
}

}  // namespace dds
