#pragma once

#include <dds/builtin_topic_data.hpp>
#include <dds/entity.hpp>
#include <dds/sample_info.hpp>
#include <dds/status.hpp>

class DDSDataReaderListener;
class DDSSubscriber;
class DDSTopicDescription;
struct DDS_DataReader;

/// Receives samples of one topic or content-filtered topic and keeps them until they are taken. All operations are
/// thread-safe.
class DDS_EXPORT DDSDataReader : public DDSEntity {
 public:
  virtual DDSTopicDescription* get_topicdescription() = 0;
  virtual DDSSubscriber* get_subscriber() = 0;
  virtual DDS_ReturnCode_t get_qos(DDS_DataReaderQos& qos) = 0;
  /// Replaces the listener and what it is called for. Returns when no call of the former listener is running, unless
  /// called from it.
  virtual DDS_ReturnCode_t set_listener(DDSDataReaderListener* listener, DDS_StatusMask mask) = 0;
  virtual DDSDataReaderListener* get_listener() = 0;

  /// A condition on the samples' states, owned by the reader; null when memory is exhausted.
  virtual DDSReadCondition* create_readcondition(DDS_SampleStateMask sample_states, DDS_ViewStateMask view_states,
                                                 DDS_InstanceStateMask instance_states) = 0;
  /// Makes a named index over the sequence number of the samples' related identity. `DDS_RETCODE_PRECONDITION_NOT_MET`
  /// for a name that exists, `DDS_RETCODE_BAD_PARAMETER` for null or empty.
  virtual DDS_ReturnCode_t create_index(const char* index_name) = 0;
  /// A read condition that selects the samples whose related identity has the sequence number of `key`, at a cost that
  /// does not depend on what else the reader holds. Null, and a log line, for an unknown index or exhausted memory.
  virtual DDSReadCondition* create_index_condition(DDS_SampleStateMask sample_states, DDS_ViewStateMask view_states,
                                                   DDS_InstanceStateMask instance_states, const char* index_name,
                                                   const DDS_SampleInfo& key) = 0;
  /// Deletes a condition of this reader and detaches it from every wait set; `DDS_RETCODE_PRECONDITION_NOT_MET` for
  /// another's.
  virtual DDS_ReturnCode_t delete_readcondition(DDSReadCondition* condition) = 0;
  /// From now on, and for ever, the reader wants no samples whose related identity has the sequence number of `key`.
  /// Those that it holds are removed; loans stay as they are. Those that arrive later are dropped before they take
  /// room, so that they keep no writer waiting, and change no status and no condition; what they tell of the end of an
  /// instance that the reader knows still takes effect. Remembering keys takes next to no memory for consecutive ones,
  /// and a bit for each of the others. `DDS_RETCODE_BAD_PARAMETER` for an unknown index,
  /// `DDS_RETCODE_OUT_OF_RESOURCES` when memory is exhausted, nothing having changed.
  virtual DDS_ReturnCode_t discard_index_key(const char* index_name, const DDS_SampleInfo& key) = 0;
  /// How many samples have been removed or dropped because of their discarded keys.
  virtual DDS_ReturnCode_t get_discarded_sample_count(DDS_LongLong& count) = 0;

  /// Reads (leaves in the reader) or takes (removes) up to `max_samples` samples of the given states, without copying:
  /// on success `*data` points to an array of
  /// `*count` sample pointers and `infos`, which must be empty, refers to their infos. Both are valid until
  /// `return_loan_untyped`, whatever happens to the writer or the samples meanwhile. `condition` null: the masks
  /// select; otherwise the condition does. `DDS_RETCODE_NO_DATA`, and count 0, when there is none.
  virtual DDS_ReturnCode_t read_or_take_untyped(void*** data, int* count, DDS_SampleInfoSeq& infos, int max_samples,
                                                DDS_SampleStateMask sample_states, DDS_ViewStateMask view_states,
                                                DDS_InstanceStateMask instance_states, DDSReadCondition* condition,
                                                DDS_Boolean take) = 0;
  /// Gives a loan of this reader back and empties `infos`. Anything else is refused with
  /// `DDS_RETCODE_PRECONDITION_NOT_MET` and harms nothing.
  virtual DDS_ReturnCode_t return_loan_untyped(void** data, DDS_SampleInfoSeq& infos) = 0;
  /// The handle of the instance with the key of `data`; `DDS_HANDLE_NIL` when the reader does not know it or the type
  /// has no key.
  virtual DDS_InstanceHandle_t lookup_instance_untyped(const void* data) = 0;

  virtual DDS_ReturnCode_t get_requested_incompatible_qos_status(DDS_RequestedIncompatibleQosStatus& status) = 0;
  virtual DDS_ReturnCode_t get_sample_lost_status(DDS_SampleLostStatus& status) = 0;
  virtual DDS_ReturnCode_t get_sample_rejected_status(DDS_SampleRejectedStatus& status) = 0;
  virtual DDS_ReturnCode_t get_subscription_matched_status(DDS_SubscriptionMatchedStatus& status) = 0;
  virtual DDS_ReturnCode_t get_matched_publications(DDS_InstanceHandleSeq& handles) = 0;
  /// Copies what the matched writer tells of itself. `DDS_RETCODE_BAD_PARAMETER`, without a log line, for a handle that
  /// is not or no longer among the matched ones; `DDS_RETCODE_OUT_OF_RESOURCES`. Then `data` is unchanged.
  virtual DDS_ReturnCode_t get_matched_publication_data(DDS_PublicationBuiltinTopicData& data,
                                                        DDS_InstanceHandle_t handle) = 0;
  /// A condition on the reader's matches, false at first and owned by the reader, which cannot be deleted as long as it
  /// has one; null, and a log line, when memory is exhausted.
  virtual DDSMatchCondition* create_match_condition() = 0;
  /// Deletes a condition of this reader and detaches it from every wait set; `DDS_RETCODE_PRECONDITION_NOT_MET` for
  /// another's.
  virtual DDS_ReturnCode_t delete_match_condition(DDSMatchCondition* condition) = 0;

  /// For the untyped procedural calls.
  virtual DDS_DataReader* procedural_handle() = 0;

 protected:
  ~DDSDataReader() override;
};
