#pragma once

#include <dds/data_reader.hpp>
#include <memory>
#include <vector>

#include "support/seam.hpp"
#include "support/wrapping.hpp"

namespace support {

/// A read condition that leads to the wrapping reader.
class FaultyReadCondition final : public DDSReadCondition {
 public:
  FaultyReadCondition(DDSReadCondition& real, DDSDataReader& reader) : real_(real), reader_(reader) {}

  DDSReadCondition* real() { return &real_; }

  PASS_ON_0(DDS_Boolean, get_trigger_value);
  dds::ConditionCore& core() override { return real_.core(); }
  PASS_ON_0(DDS_SampleStateMask, get_sample_state_mask);
  PASS_ON_0(DDS_ViewStateMask, get_view_state_mask);
  PASS_ON_0(DDS_InstanceStateMask, get_instance_state_mask);
  DDSDataReader* get_datareader() override;
  PASS_ON_0(DDS_ReadCondition*, procedural_handle);

 private:
  DDSReadCondition& real_;
  DDSDataReader& reader_;
};

/// Passes everything on to a real reader; what the request-reply library calls may fail by plan. Conditions are wrapped
/// as well.
class FaultyReader : public Wrapping<DDSDataReader> {
 public:
  using Wrapping::Wrapping;

  DDSTopicDescription* get_topicdescription() override;
  DDSReadCondition* create_readcondition(DDS_SampleStateMask sample_states, DDS_ViewStateMask view_states,
                                         DDS_InstanceStateMask instance_states) override;
  DDS_ReturnCode_t create_index(const char* index_name) override;
  DDSReadCondition* create_index_condition(DDS_SampleStateMask sample_states, DDS_ViewStateMask view_states,
                                           DDS_InstanceStateMask instance_states, const char* index_name,
                                           const DDS_SampleInfo& key) override;
  DDS_ReturnCode_t delete_readcondition(DDSReadCondition* condition) override;

  PASS_ON_0(DDSSubscriber*, get_subscriber);
  PASS_ON_1(get_qos, DDS_DataReaderQos&);
  PASS_ON_2(set_listener, DDSDataReaderListener*, DDS_StatusMask);
  PASS_ON_0(DDSDataReaderListener*, get_listener);
  DDS_ReturnCode_t read_or_take_untyped(void*** data, int* count, DDS_SampleInfoSeq& infos, int max_samples,
                                        DDS_SampleStateMask sample_states, DDS_ViewStateMask view_states,
                                        DDS_InstanceStateMask instance_states, DDSReadCondition* condition,
                                        DDS_Boolean take) override {
    return real_.read_or_take_untyped(data, count, infos, max_samples, sample_states, view_states, instance_states,
                                      condition, take);
  }
  PASS_ON_2(return_loan_untyped, void**, DDS_SampleInfoSeq&);
  DDS_InstanceHandle_t lookup_instance_untyped(const void* data) override {
    return real_.lookup_instance_untyped(data);
  }
  PASS_ON_1(get_requested_incompatible_qos_status, DDS_RequestedIncompatibleQosStatus&);
  PASS_ON_1(get_sample_lost_status, DDS_SampleLostStatus&);
  PASS_ON_1(get_sample_rejected_status, DDS_SampleRejectedStatus&);
  PASS_ON_1(get_subscription_matched_status, DDS_SubscriptionMatchedStatus&);
  PASS_ON_1(get_matched_publications, DDS_InstanceHandleSeq&);
  PASS_ON_2(get_matched_publication_data, DDS_PublicationBuiltinTopicData&, DDS_InstanceHandle_t);
  PASS_ON_0(DDSMatchCondition*, create_match_condition);
  PASS_ON_1(delete_match_condition, DDSMatchCondition*);
  PASS_ON_2(discard_index_key, const char*, const DDS_SampleInfo&);
  PASS_ON_1(get_discarded_sample_count, DDS_LongLong&);
  PASS_ON_0(DDS_DataReader*, procedural_handle);

 private:
  DDSReadCondition* wrap(DDSReadCondition* condition);

  std::mutex mutex_;  // guards conditions_
  std::vector<std::unique_ptr<FaultyReadCondition>> conditions_;
};

}  // namespace support
