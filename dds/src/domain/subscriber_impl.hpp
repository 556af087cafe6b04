#pragma once

#include <memory>
#include <unordered_map>

#include "domain/quiet_entity.hpp"
#include "reader/data_reader_impl.hpp"

namespace dds {

class ParticipantImpl;

class SubscriberImpl final : public QuietEntity<DDSSubscriber> {
 public:
  explicit SubscriberImpl(ParticipantImpl& participant) : participant_(participant) {}

  DDSDomainParticipant* get_participant() override;
  DDSDataReader* create_datareader(DDSTopicDescription* topic, const DDS_DataReaderQos& qos,
                                   DDSDataReaderListener* listener, DDS_StatusMask mask) override DDS_EXCLUDES(mutex_);
  DDS_ReturnCode_t delete_datareader(DDSDataReader* reader) override DDS_EXCLUDES(mutex_);

  bool empty() DDS_EXCLUDES(mutex_);
  /// Deletes all readers, with their conditions, as far as no loan is outstanding.
  DDS_ReturnCode_t delete_all() DDS_EXCLUDES(mutex_);

 private:
  DDSDataReader* create(const ReaderTopic& topic, const DDS_DataReaderQos& qos, DDSDataReaderListener* listener,
                        DDS_StatusMask mask) DDS_EXCLUDES(mutex_);
  /// The reader, which then is the caller's to delete; null when it cannot be.
  DDS_ReturnCode_t try_delete(DDSDataReader* reader) DDS_EXCLUDES(mutex_);
  ReaderEntity* claim(DDSDataReader* reader) DDS_EXCLUDES(mutex_);

  ParticipantImpl& participant_;
  Mutex mutex_;
  std::unordered_map<DDSDataReader*, std::unique_ptr<ReaderEntity>> readers_ DDS_GUARDED_BY(mutex_);
};

}  // namespace dds
