#pragma once

#include <dds/data_writer.hpp>
#include <dds/listener.hpp>
#include <dds/topic.hpp>

/// Creates and owns data writers. Belongs to its participant. Thread-safe.
class DDS_EXPORT DDSPublisher : public DDSEntity {
 public:
  virtual DDSDomainParticipant* get_participant() = 0;
  /// As `DDSDomainParticipant::create_datawriter`, in this publisher.
  virtual DDSDataWriter* create_datawriter(DDSTopic* topic, const DDS_DataWriterQos& qos,
                                           DDSDataWriterListener* listener, DDS_StatusMask mask) = 0;
  /// As `DDSDomainParticipant::delete_datawriter`, for a writer of this publisher.
  virtual DDS_ReturnCode_t delete_datawriter(DDSDataWriter* writer) = 0;

 protected:
  ~DDSPublisher() override;
};
