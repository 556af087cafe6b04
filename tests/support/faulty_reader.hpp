#pragma once

#include <dds/data_reader.hpp>
#include <memory>
#include <vector>

#include "support/seam.hpp"

namespace support {

/// A read condition that leads to the wrapping reader.
class FaultyReadCondition final : public DDSReadCondition {
 public:
  FaultyReadCondition(DDSReadCondition& real, DDSDataReader& reader) : real_(real), reader_(reader) {}

  DDSReadCondition* real() { return &real_; }

  DDS_Boolean get_trigger_value() override { return real_.get_trigger_value(); }
  dds::ConditionCore& core() override { return real_.core(); }
  DDS_SampleStateMask get_sample_state_mask() override { return real_.get_sample_state_mask(); }
  DDS_ViewStateMask get_view_state_mask() override { return real_.get_view_state_mask(); }
  DDS_InstanceStateMask get_instance_state_mask() override { return real_.get_instance_state_mask(); }
  DDSDataReader* get_datareader() override;
  DDS_ReadCondition* procedural_handle() override { return real_.procedural_handle(); }

 private:
  DDSReadCondition& real_;
  DDSDataReader& reader_;
};

/// Passes everything on to a real reader; what the request-reply library calls may fail by plan. Conditions are wrapped
/// as well.
class FaultyReader : public DDSDataReader {
 public:
  explicit FaultyReader(DDSDataReader& real) : real_(real) {}
  ~FaultyReader() override;

  DDSDataReader* real() { return &real_; }

  DDSTopicDescription* get_topicdescription() override;
  DDSReadCondition* create_readcondition(DDS_SampleStateMask sample_states, DDS_ViewStateMask view_states,
                                         DDS_InstanceStateMask instance_states) override;
  DDS_ReturnCode_t create_index(const char* index_name) override;
  DDSReadCondition* create_index_condition(DDS_SampleStateMask sample_states, DDS_ViewStateMask view_states,
                                           DDS_InstanceStateMask instance_states, const char* index_name,
                                           const DDS_SampleInfo& key) override;
  DDS_ReturnCode_t delete_readcondition(DDSReadCondition* condition) override;

  DDSSubscriber* get_subscriber() override { return real_.get_subscriber(); }
  DDS_ReturnCode_t get_qos(DDS_DataReaderQos& qos) override { return real_.get_qos(qos); }
  DDS_ReturnCode_t set_listener(DDSDataReaderListener* listener, DDS_StatusMask mask) override {
    return real_.set_listener(listener, mask);
  }
  DDSDataReaderListener* get_listener() override { return real_.get_listener(); }
  DDS_ReturnCode_t read_or_take_untyped(void*** data, int* count, DDS_SampleInfoSeq& infos, int max_samples,
                                        DDS_SampleStateMask sample_states, DDS_ViewStateMask view_states,
                                        DDS_InstanceStateMask instance_states, DDSReadCondition* condition,
                                        DDS_Boolean take) override {
    return real_.read_or_take_untyped(data, count, infos, max_samples, sample_states, view_states, instance_states,
                                      condition, take);
  }
  DDS_ReturnCode_t return_loan_untyped(void** data, DDS_SampleInfoSeq& infos) override {
    return real_.return_loan_untyped(data, infos);
  }
  DDS_InstanceHandle_t lookup_instance_untyped(const void* data) override {
    return real_.lookup_instance_untyped(data);
  }
  DDS_ReturnCode_t get_requested_incompatible_qos_status(DDS_RequestedIncompatibleQosStatus& status) override {
    return real_.get_requested_incompatible_qos_status(status);
  }
  DDS_ReturnCode_t get_sample_lost_status(DDS_SampleLostStatus& status) override {
    return real_.get_sample_lost_status(status);
  }
  DDS_ReturnCode_t get_sample_rejected_status(DDS_SampleRejectedStatus& status) override {
    return real_.get_sample_rejected_status(status);
  }
  DDS_ReturnCode_t get_subscription_matched_status(DDS_SubscriptionMatchedStatus& status) override {
    return real_.get_subscription_matched_status(status);
  }
  DDS_ReturnCode_t get_matched_publications(DDS_InstanceHandleSeq& handles) override {
    return real_.get_matched_publications(handles);
  }
  DDS_ReturnCode_t get_matched_publication_data(DDS_PublicationBuiltinTopicData& data,
                                                DDS_InstanceHandle_t handle) override {
    return real_.get_matched_publication_data(data, handle);
  }
  DDSMatchCondition* create_match_condition() override { return real_.create_match_condition(); }
  DDS_ReturnCode_t delete_match_condition(DDSMatchCondition* condition) override {
    return real_.delete_match_condition(condition);
  }
  DDS_ReturnCode_t discard_index_key(const char* index_name, const DDS_SampleInfo& key) override {
    return real_.discard_index_key(index_name, key);
  }
  DDS_ReturnCode_t get_discarded_sample_count(DDS_LongLong& count) override {
    return real_.get_discarded_sample_count(count);
  }
  DDS_DataReader* procedural_handle() override { return real_.procedural_handle(); }
  DDSStatusCondition* get_statuscondition() override { return real_.get_statuscondition(); }
  DDS_StatusMask get_status_changes() override { return real_.get_status_changes(); }
  DDS_InstanceHandle_t get_instance_handle() override { return real_.get_instance_handle(); }

 private:
  DDSReadCondition* wrap(DDSReadCondition* condition);

  DDSDataReader& real_;
  std::mutex mutex_;  // guards conditions_
  std::vector<std::unique_ptr<FaultyReadCondition>> conditions_;
};

}  // namespace support
