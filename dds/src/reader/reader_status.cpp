// The statuses of a reader, for getters and for its listener.

#include "condition/status_counts.hpp"
#include "reader/reader_core.hpp"

namespace dds {

void ReaderCore::count_incompatible(DDS_QosPolicyId_t policy, Notifications& notifications) {
  const MutexLock lock(mutex_);
  count_policy(incompatible_, policy);
  match_conditions_.raise(notifications);
  raise(DDS_REQUESTED_INCOMPATIBLE_QOS_STATUS, notifications);
}

DDS_StatusMask ReaderCore::status_changes() {
  const MutexLock lock(mutex_);
  return changes();
}

template <class Status>
DDS_ReturnCode_t ReaderCore::read_status(DDS_StatusMask mask, Status ReaderCore::*own, Status& status) {
  Notifications notifications;
  const MutexLock lock(mutex_);
  if (!take_status(this->*own, status)) { return DDS_RETCODE_OUT_OF_RESOURCES; }
  read(mask, notifications);
  return DDS_RETCODE_OK;
}

DDS_ReturnCode_t ReaderCore::get_status(DDS_RequestedIncompatibleQosStatus& status) {
  return read_status(DDS_REQUESTED_INCOMPATIBLE_QOS_STATUS, &ReaderCore::incompatible_, status);
}
DDS_ReturnCode_t ReaderCore::get_status(DDS_SampleLostStatus& status) {
  return read_status(DDS_SAMPLE_LOST_STATUS, &ReaderCore::lost_, status);
}
DDS_ReturnCode_t ReaderCore::get_status(DDS_SampleRejectedStatus& status) {
  return read_status(DDS_SAMPLE_REJECTED_STATUS, &ReaderCore::rejected_, status);
}
DDS_ReturnCode_t ReaderCore::get_status(DDS_SubscriptionMatchedStatus& status) {
  return read_status(DDS_SUBSCRIPTION_MATCHED_STATUS, &ReaderCore::matched_, status);
}

DDS_ReturnCode_t ReaderCore::get_matched_publications(DDS_InstanceHandleSeq& handles) {
  const MutexLock lock(mutex_);
  const int count = static_cast<int>(writers_.size());
  if (!handles.ensure_length(count, count)) { return DDS_RETCODE_OUT_OF_RESOURCES; }
  for (int i = 0; i < count; ++i) { handles[i] = writers_[static_cast<std::size_t>(i)]->handle; }
  return DDS_RETCODE_OK;
}

DDS_ReturnCode_t ReaderCore::get_matched_publication_data(DDS_PublicationBuiltinTopicData& data,
                                                          DDS_InstanceHandle_t handle) {
  PublicationData found;
  {
    const MutexLock lock(mutex_);
    for (const RemoteWriter* writer : writers_) {
      if (writer->handle == handle) { found = writer->data; }
    }
  }
  return found == nullptr ? DDS_RETCODE_BAD_PARAMETER : copy_out(data, *found);
}

DDS_ReturnCode_t ReaderCore::set_listener(DDSDataReaderListener* listener, DDS_StatusMask mask) {
  StatusDispatch::set_listener(listener == nullptr ? 0 : mask,
                               [&] { listener_.store(listener, std::memory_order_release); });
  return DDS_RETCODE_OK;
}

void ReaderCore::tell(DDS_StatusMask status) {
  DDSDataReaderListener* told = listener();
  if (told == nullptr) { return; }
  const auto tell_with = [&](auto value, auto call) {
    if (get_status(value) == DDS_RETCODE_OK) { (told->*call)(&api_, value); }
  };
  switch (status) {
    case DDS_DATA_AVAILABLE_STATUS:
      told->on_data_available(&api_);
      break;
    case DDS_SUBSCRIPTION_MATCHED_STATUS:
      tell_with(DDS_SubscriptionMatchedStatus(), &DDSDataReaderListener::on_subscription_matched);
      break;
    case DDS_REQUESTED_INCOMPATIBLE_QOS_STATUS:
      tell_with(DDS_RequestedIncompatibleQosStatus(), &DDSDataReaderListener::on_requested_incompatible_qos);
      break;
    case DDS_SAMPLE_LOST_STATUS:
      tell_with(DDS_SampleLostStatus(), &DDSDataReaderListener::on_sample_lost);
      break;
    case DDS_SAMPLE_REJECTED_STATUS:
      tell_with(DDS_SampleRejectedStatus(), &DDSDataReaderListener::on_sample_rejected);
      break;
    default:
      break;
  }
}

}  // namespace dds
