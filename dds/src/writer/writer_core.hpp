#pragma once

#include <atomic>
#include <dds/data_writer.hpp>
#include <dds/listener.hpp>
#include <vector>

#include "cache/message.hpp"
#include "condition/match_conditions.hpp"
#include "condition/status_dispatch.hpp"
#include "transport/endpoint_data.hpp"
#include "transport/transport.hpp"
#include "util/handles.hpp"
#include "util/mutex.hpp"

namespace dds {

/// A data writer without its API: makes messages of the application's data and hands them to the transport; also where
/// the transport tells of matches.
class DDS_EXPORT WriterCore final : public DDS_DataWriter, public StatusDispatch {
 public:
  /// `api` is the object that the application sees. Throws `std::bad_alloc`.
  WriterCore(DDSDataWriter& api, const DDS_TypePlugin& type, DDS_InstanceHandle_t participant, DDS_DataWriterQos qos);
  ~WriterCore() override;

  const DDS_DataWriterQos& qos() const { return qos_; }
  const DDS_TypePlugin& type() const { return type_; }
  DDS_InstanceHandle_t handle() const { return handle_; }
  const PublicationData& data() const { return data_; }
  /// Stamps the writer's samples.
  const DDS_GUID_t& guid() const { return data_->key; }
  bool reliable() const { return qos_.reliability.kind == DDS_RELIABLE_RELIABILITY_QOS; }

  // For transports.

  /// Throws `std::bad_alloc`.
  void add_reader(DDS_InstanceHandle_t handle, SubscriptionData data, Notifications& notifications)
      DDS_EXCLUDES(mutex_);
  /// Does nothing for a reader that could not be added.
  void remove_reader(DDS_InstanceHandle_t handle, Notifications& notifications) DDS_EXCLUDES(mutex_);
  void count_incompatible(DDS_QosPolicyId_t policy, Notifications& notifications) DDS_EXCLUDES(mutex_);
  /// Copies what is written into a message without identity. The return code that `write` is to give otherwise, null
  /// message included.
  DDS_ReturnCode_t make_message(const WrittenSample& sample, RefPtr<Message>& message) const;
  /// Whether the data can be written, and is of the instance that the parameters name: `make_message` without copying.
  DDS_ReturnCode_t check_sample(const WrittenSample& sample) const;

  // For the API.

  /// Begins and ends the writer's presence in the transport; it may be used as soon as matches are told. Throws
  /// `std::bad_alloc`.
  void announce(Transport& transport, const TopicKey& key);
  void withdraw() { endpoint_.reset(); }
  DDS_ReturnCode_t write(MessageKind kind, const void* data, DDS_WriteParams_t& params);
  DDS_InstanceHandle_t lookup_instance(const void* data) const;
  DDS_ReturnCode_t set_listener(DDSDataWriterListener* listener, DDS_StatusMask mask);
  DDSDataWriterListener* listener() const { return listener_.load(std::memory_order_acquire); }
  DDS_StatusMask status_changes() DDS_EXCLUDES(mutex_);
  DDS_ReturnCode_t get_status(DDS_OfferedIncompatibleQosStatus& status) DDS_EXCLUDES(mutex_);
  DDS_ReturnCode_t get_status(DDS_PublicationMatchedStatus& status) DDS_EXCLUDES(mutex_);
  DDS_ReturnCode_t get_matched_subscriptions(DDS_InstanceHandleSeq& handles) DDS_EXCLUDES(mutex_);
  DDS_ReturnCode_t get_matched_subscription_data(DDS_SubscriptionBuiltinTopicData& data, DDS_InstanceHandle_t handle)
      DDS_EXCLUDES(mutex_);
  MatchConditions& match_conditions() { return match_conditions_; }
  /// Whether the writer may be deleted: it has no match condition.
  bool is_free() DDS_EXCLUDES(mutex_);

 private:
  struct MatchedReader {
    DDS_InstanceHandle_t handle;
    SubscriptionData data;
  };

  void tell(DDS_StatusMask status) override;
  template <class Status>
  DDS_ReturnCode_t read_status(DDS_StatusMask mask, Status WriterCore::*own, Status& status) DDS_EXCLUDES(mutex_);
  DDS_ReturnCode_t fill(Message& message, const WrittenSample& sample) const;

  DDSDataWriter& api_;
  const DDS_TypePlugin type_;
  const DDS_DataWriterQos qos_;
  const DDS_InstanceHandle_t handle_;
  const PublicationData data_;
  MessagePool* const pool_;  // closed by the destructor
  std::unique_ptr<TransportWriter> endpoint_;

  Mutex& mutex_;                      // the owner lock of the base
  MatchConditions match_conditions_;  // its own guard, with the same lock
  std::vector<MatchedReader> readers_ DDS_GUARDED_BY(mutex_);
  DDS_OfferedIncompatibleQosStatus incompatible_ DDS_GUARDED_BY(mutex_);
  DDS_PublicationMatchedStatus matched_ DDS_GUARDED_BY(mutex_);
  std::atomic<DDSDataWriterListener*> listener_{nullptr};
};

}  // namespace dds
