#pragma once

#include <memory>
#include <unordered_map>
#include <vector>

#include "domain/quiet_entity.hpp"
#include "writer/data_writer_impl.hpp"

namespace dds {

class ParticipantImpl;

class PublisherImpl final : public QuietEntity<DDSPublisher> {
 public:
  explicit PublisherImpl(ParticipantImpl& participant) : participant_(participant) {}

  DDSDomainParticipant* get_participant() override;
  DDSDataWriter* create_datawriter(DDSTopic* topic, const DDS_DataWriterQos& qos, DDSDataWriterListener* listener,
                                   DDS_StatusMask mask) override DDS_EXCLUDES(mutex_);
  DDS_ReturnCode_t delete_datawriter(DDSDataWriter* writer) override DDS_EXCLUDES(mutex_);

  bool empty() DDS_EXCLUDES(mutex_);
  /// Deletes all writers, with their conditions.
  DDS_ReturnCode_t delete_all() DDS_EXCLUDES(mutex_);

 private:
  DDSDataWriter* create(TopicImpl& topic, const DDS_DataWriterQos& qos, DDSDataWriterListener* listener,
                        DDS_StatusMask mask) DDS_EXCLUDES(mutex_);
  DDS_ReturnCode_t try_delete(DDSDataWriter* writer) DDS_EXCLUDES(mutex_);
  /// The writer, which then is the caller's to delete; null when it cannot be.
  WriterEntity* claim(DDSDataWriter* writer) DDS_EXCLUDES(mutex_);

  ParticipantImpl& participant_;
  Mutex mutex_;
  std::unordered_map<DDSDataWriter*, std::unique_ptr<WriterEntity>> writers_ DDS_GUARDED_BY(mutex_);
};

}  // namespace dds
