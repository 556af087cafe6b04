#pragma once

#include <dds/builtin_topic_data.hpp>
#include <dds/entity.hpp>
#include <dds/status.hpp>
#include <dds/write_params.hpp>

class DDSDataWriterListener;
class DDSPublisher;
class DDSTopic;
struct DDS_DataWriter;

/// Publishes samples of one topic. All operations are thread-safe; the samples that several threads write get sequence
/// numbers in the order in which readers receive them.
class DDS_EXPORT DDSDataWriter : public DDSEntity {
 public:
  virtual DDSTopic* get_topic() = 0;
  virtual DDSPublisher* get_publisher() = 0;
  /// The QoS with which the writer was created, and its GUID in `protocol.writer_guid`.
  virtual DDS_ReturnCode_t get_qos(DDS_DataWriterQos& qos) = 0;
  /// Replaces the listener and what it is called for. Returns when no call of the former listener is running, unless
  /// called from it.
  virtual DDS_ReturnCode_t set_listener(DDSDataWriterListener* listener, DDS_StatusMask mask) = 0;
  virtual DDSDataWriterListener* get_listener() = 0;

  /// Writes one sample, of the application's representation of the type, to every matched reader whose filter admits
  /// it, or to none: `DDS_RETCODE_TIMEOUT` when a reader stayed full for `reliability.max_blocking_time`,
  /// `DDS_RETCODE_OUT_OF_RESOURCES` when memory is exhausted, `DDS_RETCODE_BAD_PARAMETER` for null data, data that the
  /// type cannot carry, or a handle that is not the data's instance. The data is copied once; it is the caller's again
  /// on return.
  virtual DDS_ReturnCode_t write_untyped(const void* data, DDS_WriteParams_t& params) = 0;
  /// Ends the instance for all readers; only the key of `data` matters. A type without key: no effect.
  virtual DDS_ReturnCode_t dispose_untyped(const void* data, DDS_WriteParams_t& params) = 0;
  /// Says that this writer no longer writes the instance; disposes it too if `writer_data_lifecycle` says so. A type
  /// without key: no effect.
  virtual DDS_ReturnCode_t unregister_untyped(const void* data, DDS_WriteParams_t& params) = 0;
  /// The handle of the data's instance at this writer; `DDS_HANDLE_NIL` for a type without key or null data.
  virtual DDS_InstanceHandle_t lookup_instance_untyped(const void* data) = 0;

  virtual DDS_ReturnCode_t get_offered_incompatible_qos_status(DDS_OfferedIncompatibleQosStatus& status) = 0;
  virtual DDS_ReturnCode_t get_publication_matched_status(DDS_PublicationMatchedStatus& status) = 0;
  virtual DDS_ReturnCode_t get_matched_subscriptions(DDS_InstanceHandleSeq& handles) = 0;
  /// Copies what the matched reader tells of itself. `DDS_RETCODE_BAD_PARAMETER`, without a log line, for a handle that
  /// is not or no longer among the matched ones; `DDS_RETCODE_OUT_OF_RESOURCES`. Then `data` is unchanged.
  virtual DDS_ReturnCode_t get_matched_subscription_data(DDS_SubscriptionBuiltinTopicData& data,
                                                         DDS_InstanceHandle_t handle) = 0;
  /// A condition on the writer's matches, false at first and owned by the writer, which cannot be deleted as long as it
  /// has one; null, and a log line, when memory is exhausted.
  virtual DDSMatchCondition* create_match_condition() = 0;
  /// Deletes a condition of this writer and detaches it from every wait set; `DDS_RETCODE_PRECONDITION_NOT_MET` for
  /// another's.
  virtual DDS_ReturnCode_t delete_match_condition(DDSMatchCondition* condition) = 0;

  /// For the untyped procedural calls.
  virtual DDS_DataWriter* procedural_handle() = 0;

 protected:
  ~DDSDataWriter() override;
};
