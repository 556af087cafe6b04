#pragma once

#include <dds/subscriber.hpp>
#include <memory>

#include "reader/reader_core.hpp"
#include "transport/transport.hpp"

namespace dds {

class ContentFilteredTopicImpl;
class TopicImpl;

/// What a reader is created on.
struct ReaderTopic {
  TopicImpl* topic = nullptr;
  ContentFilteredTopicImpl* filtered = nullptr;  // null for a plain topic
};

/// A data reader as its subscriber owns it, whatever its type.
class ReaderEntity {
 public:
  virtual ~ReaderEntity() = default;
  virtual ReaderCore& core() = 0;
  virtual DDSDataReader& api() = 0;
  virtual const ReaderTopic& topic() = 0;

  std::unique_ptr<TransportReader> endpoint;  // the reader's presence in the transport
  bool being_deleted = false;                 // under the subscriber's lock
};

/// The API of a data reader; `Api` is the typed class that the application may narrow to, or `DDSDataReader`.
template <class Api>
class DataReaderImpl final : public Api, public ReaderEntity {
 public:
  DataReaderImpl(DDSSubscriber& subscriber, const ReaderTopic& topic, const DDS_DataReaderQos& qos);

  ReaderCore& core() override { return core_; }
  DDSDataReader& api() override { return *this; }
  const ReaderTopic& topic() override { return topic_; }

  DDSStatusCondition* get_statuscondition() override { return &core_.condition(); }
  DDS_StatusMask get_status_changes() override { return core_.status_changes(); }
  DDS_InstanceHandle_t get_instance_handle() override { return core_.handle(); }
  DDSTopicDescription* get_topicdescription() override;
  DDSSubscriber* get_subscriber() override { return &subscriber_; }
  DDS_ReturnCode_t get_qos(DDS_DataReaderQos& qos) override { return DDS_DataReaderQos_copy(&qos, &core_.qos()); }
  DDS_ReturnCode_t set_listener(DDSDataReaderListener* listener, DDS_StatusMask mask) override {
    return core_.set_listener(listener, mask);
  }
  DDSDataReaderListener* get_listener() override { return core_.listener(); }

  DDSReadCondition* create_readcondition(DDS_SampleStateMask sample_states, DDS_ViewStateMask view_states,
                                         DDS_InstanceStateMask instance_states) override {
    return core_.create_readcondition(sample_states, view_states, instance_states);
  }
  DDS_ReturnCode_t create_index(const char* index_name) override { return core_.create_index(index_name); }
  DDSReadCondition* create_index_condition(DDS_SampleStateMask sample_states, DDS_ViewStateMask view_states,
                                           DDS_InstanceStateMask instance_states, const char* index_name,
                                           const DDS_SampleInfo& key) override {
    return core_.create_index_condition(sample_states, view_states, instance_states, index_name, key);
  }
  DDS_ReturnCode_t delete_readcondition(DDSReadCondition* condition) override {
    return core_.delete_readcondition(condition);
  }
  DDS_ReturnCode_t discard_index_key(const char* index_name, const DDS_SampleInfo& key) override {
    return core_.discard_index_key(index_name, key);
  }
  DDS_ReturnCode_t get_discarded_sample_count(DDS_LongLong& count) override {
    count = core_.discarded_sample_count();
    return DDS_RETCODE_OK;
  }

  DDS_ReturnCode_t read_or_take_untyped(void*** data, int* count, DDS_SampleInfoSeq& infos, int max_samples,
                                        DDS_SampleStateMask sample_states, DDS_ViewStateMask view_states,
                                        DDS_InstanceStateMask instance_states, DDSReadCondition* condition,
                                        DDS_Boolean take) override {
    const bool conditional = condition != nullptr;
    return core_.read_or_take(data, count, infos, max_samples,
                              conditional ? kAnyState : state_mask(sample_states, view_states, instance_states),
                              conditional ? condition->procedural_handle() : nullptr, take);
  }
  DDS_ReturnCode_t return_loan_untyped(void** data, DDS_SampleInfoSeq& infos) override {
    return core_.return_loan(data, infos);
  }
  DDS_InstanceHandle_t lookup_instance_untyped(const void* data) override { return core_.lookup_instance(data); }

  DDS_ReturnCode_t get_requested_incompatible_qos_status(DDS_RequestedIncompatibleQosStatus& status) override {
    return core_.get_status(status);
  }
  DDS_ReturnCode_t get_sample_lost_status(DDS_SampleLostStatus& status) override { return core_.get_status(status); }
  DDS_ReturnCode_t get_sample_rejected_status(DDS_SampleRejectedStatus& status) override {
    return core_.get_status(status);
  }
  DDS_ReturnCode_t get_subscription_matched_status(DDS_SubscriptionMatchedStatus& status) override {
    return core_.get_status(status);
  }
  DDS_ReturnCode_t get_matched_publications(DDS_InstanceHandleSeq& handles) override {
    return core_.get_matched_publications(handles);
  }
  DDS_ReturnCode_t get_matched_publication_data(DDS_PublicationBuiltinTopicData& data,
                                                DDS_InstanceHandle_t handle) override {
    return core_.get_matched_publication_data(data, handle);
  }
  DDSMatchCondition* create_match_condition() override { return core_.match_conditions().create(); }
  DDS_ReturnCode_t delete_match_condition(DDSMatchCondition* condition) override {
    return core_.match_conditions().remove(condition);
  }
  DDS_DataReader* procedural_handle() override { return &core_; }

 private:
  DDSSubscriber& subscriber_;
  const ReaderTopic topic_;
  ReaderCore core_;
};

/// A reader of the class that the topic's type calls for. Throws `std::bad_alloc`.
std::unique_ptr<ReaderEntity> make_reader(DDSSubscriber& subscriber, const ReaderTopic& topic,
                                          const DDS_DataReaderQos& qos);

}  // namespace dds
