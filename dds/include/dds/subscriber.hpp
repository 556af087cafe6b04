#pragma once

#include <dds/data_reader.hpp>
#include <dds/listener.hpp>
#include <dds/topic.hpp>

/// Creates and owns data readers. Belongs to its participant. Thread-safe.
class DDS_EXPORT DDSSubscriber : public DDSEntity {
 public:
  virtual DDSDomainParticipant* get_participant() = 0;
  /// As `DDSDomainParticipant::create_datareader`, in this subscriber.
  virtual DDSDataReader* create_datareader(DDSTopicDescription* topic, const DDS_DataReaderQos& qos,
                                           DDSDataReaderListener* listener, DDS_StatusMask mask) = 0;
  /// As `DDSDomainParticipant::delete_datareader`, for a reader of this subscriber.
  virtual DDS_ReturnCode_t delete_datareader(DDSDataReader* reader) = 0;

 protected:
  ~DDSSubscriber() override;
};
