#include "domain/publisher_impl.hpp"

#include "domain/participant_impl.hpp"
#include "log/log.hpp"
#include "qos/qos_check.hpp"

namespace dds {

namespace {
constexpr char kCreate[] = "create_datawriter";
}

DDSDomainParticipant* PublisherImpl::get_participant() { return &participant_; }

DDSDataWriter* PublisherImpl::create_datawriter(DDSTopic* topic, const DDS_DataWriterQos& qos,
                                                DDSDataWriterListener* listener, DDS_StatusMask mask) {
  TopicImpl* own = participant_.hold(topic);
  if (own == nullptr) {
    DDS_LOG_FAILURE(kCreate, DDS_LOG_BAD_PARAMETER_s, "the topic is not one of this participant");
    return nullptr;
  }
  DDSDataWriter* writer = nullptr;
  try {
    DDS_DataWriterQos defaults;
    const bool by_default = &qos == &DDS_DATAWRITER_QOS_DEFAULT;
    if (by_default) { participant_.copy_default(defaults, own->get_name()); }
    const DDS_DataWriterQos& chosen = by_default ? defaults : qos;
    if (check(chosen, kCreate) == DDS_RETCODE_OK) { writer = create(*own, chosen, listener, mask); }
  } catch (const std::bad_alloc&) {
    DDS_LOG_FAILURE(kCreate, QVX_LOG_CREATION_FAILURE_s, "data writer: out of memory");
  }
  if (writer == nullptr) { participant_.release(*own); }
  return writer;
}

// The writer is in the list before it is announced, because listeners may use it from then on.
DDSDataWriter* PublisherImpl::create(TopicImpl& topic, const DDS_DataWriterQos& qos, DDSDataWriterListener* listener,
                                     DDS_StatusMask mask) {
  std::unique_ptr<WriterEntity> made = make_writer(*this, topic, qos);
  WriterCore& core = made->core();
  DDSDataWriter* writer = &made->api();
  core.set_listener(listener, mask);
  {
    const MutexLock lock(mutex_);
    writers_.emplace(writer, std::move(made));
  }
  try {
    core.announce(participant_.transport(), {participant_.get_domain_id(), topic.name(), topic.type_name()});
  } catch (const std::bad_alloc&) {
    core.silence();
    core.withdraw();
    const MutexLock lock(mutex_);
    writers_.erase(writer);
    throw;
  }
  return writer;
}

DDS_ReturnCode_t PublisherImpl::delete_datawriter(DDSDataWriter* writer) {
  return DDS_LOG_REFUSAL("delete_datawriter", try_delete(writer),
                         "not a writer of this publisher, with match conditions, or in its listener");
}

WriterEntity* PublisherImpl::claim(DDSDataWriter* writer) {
  const MutexLock lock(mutex_);
  const auto found = writers_.find(writer);
  if (found == writers_.end()) { return nullptr; }
  WriterEntity& entity = *found->second;
  if (entity.being_deleted || entity.core().in_listener()) { return nullptr; }
  entity.being_deleted = true;
  return &entity;
}

// A listener that is running may make a condition or delete one. So it comes to rest before they are looked at.
DDS_ReturnCode_t PublisherImpl::try_delete(DDSDataWriter* writer) {
  if (writer == nullptr) { return DDS_RETCODE_BAD_PARAMETER; }
  WriterEntity* const entity = claim(writer);
  if (entity == nullptr) { return DDS_RETCODE_PRECONDITION_NOT_MET; }
  const DDS_StatusMask told = entity->core().silence();
  if (!entity->core().is_free()) {
    entity->core().resume(told);
    const MutexLock lock(mutex_);
    entity->being_deleted = false;
    return DDS_RETCODE_PRECONDITION_NOT_MET;
  }
  entity->core().withdraw();
  participant_.release(entity->topic());
  std::unique_ptr<WriterEntity> deleted;
  const MutexLock lock(mutex_);
  const auto found = writers_.find(writer);
  deleted = std::move(found->second);
  writers_.erase(found);
  return DDS_RETCODE_OK;
}

bool PublisherImpl::empty() {
  const MutexLock lock(mutex_);
  return writers_.empty();
}

DDS_ReturnCode_t PublisherImpl::delete_all() {
  for (;;) {
    DDSDataWriter* writer = nullptr;
    {
      const MutexLock lock(mutex_);
      if (writers_.empty()) { return DDS_RETCODE_OK; }
      writer = writers_.begin()->first;
      writers_.begin()->second->core().match_conditions().remove_all();
    }
    const DDS_ReturnCode_t retcode = delete_datawriter(writer);
    if (retcode != DDS_RETCODE_OK) { return retcode; }
  }
}

}  // namespace dds
