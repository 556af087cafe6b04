#pragma once

#include <dds/publisher.hpp>
#include <memory>

#include "writer/writer_core.hpp"

namespace dds {

class TopicImpl;

/// A data writer as its publisher owns it, whatever its type.
class WriterEntity {
 public:
  virtual ~WriterEntity() = default;
  virtual WriterCore& core() = 0;
  virtual DDSDataWriter& api() = 0;
  virtual TopicImpl& topic() = 0;

  bool being_deleted = false;  // under the publisher's lock
};

/// The API of a data writer; `Api` is the typed class that the application may narrow to, or `DDSDataWriter`.
template <class Api>
class DataWriterImpl final : public Api, public WriterEntity {
 public:
  DataWriterImpl(DDSPublisher& publisher, TopicImpl& topic, const DDS_DataWriterQos& qos);

  WriterCore& core() override { return core_; }
  DDSDataWriter& api() override { return *this; }
  TopicImpl& topic() override { return topic_; }

  DDSStatusCondition* get_statuscondition() override { return &core_.condition(); }
  DDS_StatusMask get_status_changes() override { return core_.status_changes(); }
  DDS_InstanceHandle_t get_instance_handle() override { return core_.handle(); }
  DDSTopic* get_topic() override;
  DDSPublisher* get_publisher() override { return &publisher_; }
  DDS_ReturnCode_t get_qos(DDS_DataWriterQos& qos) override {
    const DDS_ReturnCode_t retcode = DDS_DataWriterQos_copy(&qos, &core_.qos());
    if (retcode == DDS_RETCODE_OK) { qos.protocol.writer_guid = core_.guid(); }
    return retcode;
  }
  DDS_ReturnCode_t set_listener(DDSDataWriterListener* listener, DDS_StatusMask mask) override {
    return core_.set_listener(listener, mask);
  }
  DDSDataWriterListener* get_listener() override { return core_.listener(); }
  DDS_ReturnCode_t write_untyped(const void* data, DDS_WriteParams_t& params) override {
    return core_.write(MessageKind::data, data, params);
  }
  DDS_ReturnCode_t dispose_untyped(const void* data, DDS_WriteParams_t& params) override {
    return core_.write(MessageKind::dispose, data, params);
  }
  DDS_ReturnCode_t unregister_untyped(const void* data, DDS_WriteParams_t& params) override {
    const bool dispose = core_.qos().writer_data_lifecycle.autodispose_unregistered_instances;
    return core_.write(dispose ? MessageKind::dispose_and_unregister : MessageKind::unregister, data, params);
  }
  DDS_InstanceHandle_t lookup_instance_untyped(const void* data) override { return core_.lookup_instance(data); }
  DDS_ReturnCode_t get_offered_incompatible_qos_status(DDS_OfferedIncompatibleQosStatus& status) override {
    return core_.get_status(status);
  }
  DDS_ReturnCode_t get_publication_matched_status(DDS_PublicationMatchedStatus& status) override {
    return core_.get_status(status);
  }
  DDS_ReturnCode_t get_matched_subscriptions(DDS_InstanceHandleSeq& handles) override {
    return core_.get_matched_subscriptions(handles);
  }
  DDS_ReturnCode_t get_matched_subscription_data(DDS_SubscriptionBuiltinTopicData& data,
                                                 DDS_InstanceHandle_t handle) override {
    return core_.get_matched_subscription_data(data, handle);
  }
  DDSMatchCondition* create_match_condition() override { return core_.match_conditions().create(); }
  DDS_ReturnCode_t delete_match_condition(DDSMatchCondition* condition) override {
    return core_.match_conditions().remove(condition);
  }
  DDS_DataWriter* procedural_handle() override { return &core_; }

 private:
  DDSPublisher& publisher_;
  TopicImpl& topic_;
  WriterCore core_;
};

/// A writer of the class that the topic's type calls for. Throws `std::bad_alloc`.
std::unique_ptr<WriterEntity> make_writer(DDSPublisher& publisher, TopicImpl& topic, const DDS_DataWriterQos& qos);

}  // namespace dds
