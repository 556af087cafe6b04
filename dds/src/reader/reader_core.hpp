#pragma once

#include <atomic>
#include <dds/data_reader.hpp>
#include <dds/listener.hpp>
#include <string>
#include <vector>

#include "cache/reader_cache.hpp"
#include "condition/match_conditions.hpp"
#include "condition/status_dispatch.hpp"
#include "reader/read_condition.hpp"
#include "util/futex.hpp"
#include "util/handles.hpp"
#include "util/mutex.hpp"

namespace dds {

/// Learns that a reader that was full may have room. Called under the reader's lock: it must not call back.
class SpaceListener {
 public:
  virtual void on_space() noexcept = 0;

 protected:
  ~SpaceListener() = default;
};

/// A data reader without its API: the cache under the reader's lock, conditions, statuses and loans. It is also the
/// sink into which a transport delivers.
class DDS_EXPORT ReaderCore final : public DDS_DataReader, public StatusDispatch {
 public:
  /// `api` is the object that the application sees; `related_writer` is the one whose answers are all that the reader
  /// wants, or null. Throws `std::bad_alloc`.
  ReaderCore(DDSDataReader& api, const DDS_TypePlugin& type, DDS_InstanceHandle_t participant,
             const DDS_GUID_t* related_writer, const DDS_DataReaderQos& qos);
  ~ReaderCore() override;

  DDSDataReader& api() const { return api_; }
  const DDS_TypePlugin& type() const { return type_; }
  const DDS_DataReaderQos& qos() const { return qos_; }
  DDS_InstanceHandle_t handle() const { return handle_; }
  const SubscriptionData& data() const { return data_; }

  // For transports. A writer that is matched is added first and removed last; it delivers one sample after the other.

  enum class Admission { accepted, dropped, full, no_memory };
  struct Reservation {
    Entry* entry = nullptr;  // null when the sample is dropped
    ReaderCache::Refusal why = ReaderCache::Refusal::none;
    DDS_InstanceHandle_t instance = DDS_HANDLE_NIL;  // of a sample that is dropped, if the reader knows it
  };
  /// Throws `std::bad_alloc`.
  RemoteWriter* add_writer(DDS_InstanceHandle_t handle, PublicationData data, bool reliable,
                           Notifications& notifications) DDS_EXCLUDES(mutex_);
  void remove_writer(RemoteWriter* writer, Notifications& notifications) DDS_EXCLUDES(mutex_);
  void count_incompatible(DDS_QosPolicyId_t policy, Notifications& notifications) DDS_EXCLUDES(mutex_);
  /// Takes a sample in, and with it the caller's reference. A reliable sample that finds the reader full is not counted
  /// as dropped: `full`, and the caller must follow with `wait_for_space`.
  Admission deliver(RefPtr<Message>& message, RemoteWriter& writer, Notifications& notifications) DDS_EXCLUDES(mutex_);
  /// The same in two steps: a place for the sample, which is then either committed or cancelled. A sample that is
  /// `dropped`, for want of room or because the reader does not want it, is committed too, and counted then.
  Admission reserve(RefPtr<Message>& message, RemoteWriter& writer, Reservation& reservation) DDS_EXCLUDES(mutex_);
  void commit(const Reservation& reservation, Notifications& notifications) DDS_EXCLUDES(mutex_);
  void cancel(const Reservation& reservation) DDS_EXCLUDES(mutex_);
  /// Whether the reader knows the instance of a message.
  bool knows(const Message& message) DDS_EXCLUDES(mutex_);
  /// After `full`, with the ticket left in the writer: blocks until the reader may have room, or the deadline. Call it
  /// without any lock; the reader stays alive meanwhile.
  void wait_for_space(std::uint32_t ticket, Deadline& deadline);
  /// For a transport whose writers wait elsewhere: is told whenever a full reader may have room again, under the
  /// reader's lock and on any thread. It must outlive its being set; null ends it. After `full`, `wait_for_space` is
  /// then called with no time to wait.
  void set_space_listener(SpaceListener* listener) { space_listener_.store(listener, std::memory_order_release); }
  /// No sample comes any more: lets blocked writers go and waits until they are gone.
  void release_blocked_writers();

  // For the API.

  DDSReadCondition* create_readcondition(DDS_SampleStateMask sample_states, DDS_ViewStateMask view_states,
                                         DDS_InstanceStateMask instance_states) DDS_EXCLUDES(mutex_);
  DDS_ReturnCode_t create_index(const char* name) DDS_EXCLUDES(mutex_);
  DDSReadCondition* create_index_condition(DDS_SampleStateMask sample_states, DDS_ViewStateMask view_states,
                                           DDS_InstanceStateMask instance_states, const char* index_name,
                                           const DDS_SampleInfo& key) DDS_EXCLUDES(mutex_);
  DDS_ReturnCode_t delete_readcondition(DDSReadCondition* condition) DDS_EXCLUDES(mutex_);
  /// The match conditions as well.
  void delete_all_conditions() DDS_EXCLUDES(mutex_);
  MatchConditions& match_conditions() { return match_conditions_; }
  DDS_ReturnCode_t discard_index_key(const char* index_name, const DDS_SampleInfo& key) DDS_EXCLUDES(mutex_);
  DDS_LongLong discarded_sample_count() DDS_EXCLUDES(mutex_);

  /// `condition` is null when `states` is to be used.
  DDS_ReturnCode_t read_or_take(void*** data, int* count, DDS_SampleInfoSeq& infos, int max_samples, StateMask states,
                                DDS_ReadCondition* condition, bool take) DDS_EXCLUDES(mutex_);
  DDS_ReturnCode_t return_loan(void** data, DDS_SampleInfoSeq& infos) DDS_EXCLUDES(mutex_);
  DDS_InstanceHandle_t lookup_instance(const void* data) DDS_EXCLUDES(mutex_);

  DDS_ReturnCode_t set_listener(DDSDataReaderListener* listener, DDS_StatusMask mask);
  DDSDataReaderListener* listener() const { return listener_.load(std::memory_order_acquire); }
  DDS_StatusMask status_changes() DDS_EXCLUDES(mutex_);
  DDS_ReturnCode_t get_status(DDS_RequestedIncompatibleQosStatus& status) DDS_EXCLUDES(mutex_);
  DDS_ReturnCode_t get_status(DDS_SampleLostStatus& status) DDS_EXCLUDES(mutex_);
  DDS_ReturnCode_t get_status(DDS_SampleRejectedStatus& status) DDS_EXCLUDES(mutex_);
  DDS_ReturnCode_t get_status(DDS_SubscriptionMatchedStatus& status) DDS_EXCLUDES(mutex_);
  DDS_ReturnCode_t get_matched_publications(DDS_InstanceHandleSeq& handles) DDS_EXCLUDES(mutex_);
  DDS_ReturnCode_t get_matched_publication_data(DDS_PublicationBuiltinTopicData& data, DDS_InstanceHandle_t handle)
      DDS_EXCLUDES(mutex_);
  /// Whether the reader may be deleted: it has no loan outstanding and no condition.
  bool is_free() DDS_EXCLUDES(mutex_);

 private:
  static constexpr std::size_t kMostIdleConditions = 64;
  static constexpr std::size_t kFewMessages = 8;

  void tell(DDS_StatusMask status) override;
  void notify_space();
  template <class Status>
  DDS_ReturnCode_t read_status(DDS_StatusMask mask, Status ReaderCore::*own, Status& status) DDS_EXCLUDES(mutex_);
  Admission try_reserve(RefPtr<Message>& message, RemoteWriter& writer, Reservation& reservation) DDS_REQUIRES(mutex_);
  void settle(const Reservation& reservation, Notifications& notifications) DDS_REQUIRES(mutex_);
  ReadConditionImpl* make_condition(DDS_SampleStateMask sample_states, DDS_ViewStateMask view_states,
                                    DDS_InstanceStateMask instance_states, const std::uint64_t* key,
                                    Notifications& notifications) DDS_REQUIRES(mutex_);
  void drop_condition(ReadConditionImpl* condition) DDS_REQUIRES(mutex_);
  DDS_ReturnCode_t add_index(const char* name) DDS_EXCLUDES(mutex_);
  bool has_index(const char* name) const DDS_REQUIRES(mutex_);
  DDS_ReturnCode_t discard(const char* index_name, std::uint64_t key) DDS_EXCLUDES(mutex_);
  DDS_ReturnCode_t try_delete(DDSReadCondition* condition) DDS_EXCLUDES(mutex_);
  DDS_ReturnCode_t try_read_or_take(void*** data, int* count, DDS_SampleInfoSeq& infos, int max_samples,
                                    StateMask states, DDS_ReadCondition* condition, bool take) DDS_EXCLUDES(mutex_);
  DDS_ReturnCode_t lend(StateMask states, const ReadConditionImpl* condition, std::size_t most, bool take, Loan*& loan)
      DDS_EXCLUDES(mutex_);
  DDS_ReturnCode_t end_loan(void** data, DDS_SampleInfoSeq& infos) DDS_EXCLUDES(mutex_);

  DDSDataReader& api_;
  const DDS_TypePlugin type_;
  const DDS_DataReaderQos qos_;
  const DDS_InstanceHandle_t handle_;
  const SubscriptionData data_;
  const bool bounded_;  // has limits, so that writers may have to wait

  Mutex& mutex_;  // the owner lock of the base
  ReaderCache cache_ DDS_GUARDED_BY(mutex_);
  std::vector<std::string> index_names_ DDS_GUARDED_BY(mutex_);
  std::vector<RemoteWriter*> writers_ DDS_GUARDED_BY(mutex_);
  IntrusiveList<ReadConditionImpl, &ReadConditionImpl::in_reader> conditions_ DDS_GUARDED_BY(mutex_);
  MatchConditions match_conditions_;  // its own guard, with the same lock
  ReadConditionImpl* idle_conditions_ DDS_GUARDED_BY(mutex_) = nullptr;
  std::size_t idle_condition_count_ DDS_GUARDED_BY(mutex_) = 0;

  DDS_RequestedIncompatibleQosStatus incompatible_ DDS_GUARDED_BY(mutex_);
  DDS_SampleLostStatus lost_ DDS_GUARDED_BY(mutex_);
  DDS_SampleRejectedStatus rejected_ DDS_GUARDED_BY(mutex_);
  DDS_SubscriptionMatchedStatus matched_ DDS_GUARDED_BY(mutex_);
  std::atomic<DDSDataReaderListener*> listener_{nullptr};

  EventCount space_;  // advanced when samples or instances leave a bounded reader
  std::atomic<SpaceListener*> space_listener_{nullptr};
  std::atomic<std::uint32_t> blocked_{0};  // writers between `full` and the end of `wait_for_space`
};

}  // namespace dds
