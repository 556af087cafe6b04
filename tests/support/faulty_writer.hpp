#pragma once

#include <dds/data_writer.hpp>

#include "support/seam.hpp"

namespace support {

/// Passes everything on to a real writer; what the request-reply library calls may fail by plan.
class FaultyWriter : public DDSDataWriter {
 public:
  explicit FaultyWriter(DDSDataWriter& real) : real_(real) {}
  ~FaultyWriter() override = default;

  DDSDataWriter* real() { return &real_; }

  DDSTopic* get_topic() override {
    return Seam::get().enter(Call::get_writer_topic, "writer.get_topic") ? nullptr : real_.get_topic();
  }
  DDS_ReturnCode_t get_qos(DDS_DataWriterQos& qos) override {
    if (const auto fault = Seam::get().enter(Call::get_writer_qos, "writer.get_qos")) { return *fault; }
    return real_.get_qos(qos);
  }

  DDSPublisher* get_publisher() override { return real_.get_publisher(); }
  DDS_ReturnCode_t set_listener(DDSDataWriterListener* listener, DDS_StatusMask mask) override {
    return real_.set_listener(listener, mask);
  }
  DDSDataWriterListener* get_listener() override { return real_.get_listener(); }
  DDS_ReturnCode_t write_untyped(const void* data, DDS_WriteParams_t& params) override {
    return real_.write_untyped(data, params);
  }
  DDS_ReturnCode_t dispose_untyped(const void* data, DDS_WriteParams_t& params) override {
    return real_.dispose_untyped(data, params);
  }
  DDS_ReturnCode_t unregister_untyped(const void* data, DDS_WriteParams_t& params) override {
    return real_.unregister_untyped(data, params);
  }
  DDS_InstanceHandle_t lookup_instance_untyped(const void* data) override {
    return real_.lookup_instance_untyped(data);
  }
  DDS_ReturnCode_t get_offered_incompatible_qos_status(DDS_OfferedIncompatibleQosStatus& status) override {
    return real_.get_offered_incompatible_qos_status(status);
  }
  DDS_ReturnCode_t get_publication_matched_status(DDS_PublicationMatchedStatus& status) override {
    return real_.get_publication_matched_status(status);
  }
  DDS_ReturnCode_t get_matched_subscriptions(DDS_InstanceHandleSeq& handles) override {
    return real_.get_matched_subscriptions(handles);
  }
  DDS_ReturnCode_t get_matched_subscription_data(DDS_SubscriptionBuiltinTopicData& data,
                                                 DDS_InstanceHandle_t handle) override {
    return real_.get_matched_subscription_data(data, handle);
  }
  DDSMatchCondition* create_match_condition() override { return real_.create_match_condition(); }
  DDS_ReturnCode_t delete_match_condition(DDSMatchCondition* condition) override {
    return real_.delete_match_condition(condition);
  }
  DDS_DataWriter* procedural_handle() override { return real_.procedural_handle(); }
  DDSStatusCondition* get_statuscondition() override { return real_.get_statuscondition(); }
  DDS_StatusMask get_status_changes() override { return real_.get_status_changes(); }
  DDS_InstanceHandle_t get_instance_handle() override { return real_.get_instance_handle(); }

 private:
  DDSDataWriter& real_;
};

}  // namespace support
