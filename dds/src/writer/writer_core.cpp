#include "writer/writer_core.hpp"

#include <algorithm>
#include <cstring>
#include <utility>

#include "condition/status_counts.hpp"
#include "log/log.hpp"
#include "util/entity_ids.hpp"

namespace dds {

namespace {

constexpr char kWrite[] = "DDSDataWriter::write";

bool is_automatic(const DDS_SampleIdentity_t& identity) {
  return identity.sequence_number == DDS_AUTO_SEQUENCE_NUMBER &&
         std::memcmp(&identity.writer_guid, &DDS_GUID_AUTO, sizeof(DDS_GUID_t)) == 0;
}

}  // namespace

WriterCore::WriterCore(DDSDataWriter& api, const DDS_TypePlugin& type, DDS_InstanceHandle_t participant,
                       DDS_DataWriterQos qos)
    : StatusDispatch(api),
      api_(api),
      type_(type),
      qos_(std::move(qos)),
      handle_(next_entity_handle()),
      data_(describe(handle_, participant, qos_)),
      pool_(new MessagePool(type)),
      mutex_(owner_lock().mutex),
      match_conditions_(owner_lock()) {}

WriterCore::~WriterCore() { pool_->close(); }

void WriterCore::announce(Transport& transport, const TopicKey& key) {
  endpoint_ = transport.create_writer(key, *this);
  endpoint_->announce();
}

DDS_ReturnCode_t WriterCore::write(MessageKind kind, const void* data, DDS_WriteParams_t& params) {
  if (data == nullptr) {
    DDS_LOG_FAILURE(kWrite, DDS_LOG_BAD_PARAMETER_s, "null data");
    return DDS_RETCODE_BAD_PARAMETER;
  }
  if (kind != MessageKind::data && type_.key == nullptr) { return DDS_RETCODE_OK; }
  if (!is_automatic(params.identity)) {
    DDS_LOG_FAILURE(kWrite, DDS_LOG_UNSUPPORTED_s, "a sample identity other than DDS_AUTO_SAMPLE_IDENTITY");
    return DDS_RETCODE_UNSUPPORTED;
  }
  if (params.cookie.value.length() != 0) {
    DDS_LOG_FAILURE(kWrite, DDS_LOG_UNSUPPORTED_s, "a cookie in the write parameters");
    return DDS_RETCODE_UNSUPPORTED;
  }
  if (!(params.source_timestamp == DDS_TIME_INVALID) && !is_valid(params.source_timestamp)) {
    DDS_LOG_FAILURE(kWrite, DDS_LOG_BAD_PARAMETER_s, "a source time-stamp with a second or more of nanoseconds");
    return DDS_RETCODE_BAD_PARAMETER;
  }
  Deadline deadline(qos_.reliability.max_blocking_time);
  return endpoint_->write({kind, data, params}, deadline, params.identity);
}

DDS_ReturnCode_t WriterCore::make_message(const WrittenSample& sample, RefPtr<Message>& message) const {
  message = pool_->acquire();
  if (message.get() == nullptr) { return DDS_RETCODE_OUT_OF_RESOURCES; }
  return fill(*message, sample);
}

namespace {

DDS_ReturnCode_t refuse_data() {
  DDS_LOG_FAILURE(kWrite, DDS_LOG_BAD_PARAMETER_s, "data that the type cannot carry");
  return DDS_RETCODE_BAD_PARAMETER;
}

DDS_ReturnCode_t refuse_handle() {
  DDS_LOG_FAILURE(kWrite, DDS_LOG_BAD_PARAMETER_s, "a handle that is not the data's instance");
  return DDS_RETCODE_BAD_PARAMETER;
}

}  // namespace

DDS_ReturnCode_t WriterCore::check_sample(const WrittenSample& sample) const {
  if (type_.writable != nullptr && !type_.writable(sample.data)) { return refuse_data(); }
  const DDS_InstanceHandle_t handle = sample.params.handle;
  if (handle == DDS_HANDLE_NIL || (type_.key != nullptr && handle == lookup_instance(sample.data))) {
    return DDS_RETCODE_OK;
  }
  return refuse_handle();
}

DDS_ReturnCode_t WriterCore::fill(Message& message, const WrittenSample& sample) const {
  const DDS_WriteParams_t& params = sample.params;
  const bool copied = sample.kind == MessageKind::data ? type_.copy(message.sample(), sample.data)
                                                       : type_.copy_key(message.sample(), sample.data);
  if (!copied) {
    return type_.writable == nullptr || type_.writable(sample.data) ? DDS_RETCODE_OUT_OF_RESOURCES : refuse_data();
  }
  if (type_.key != nullptr) {
    try {
      read_key(type_, message.sample(), message.key);
    } catch (const std::bad_alloc&) { return DDS_RETCODE_OUT_OF_RESOURCES; }
  }
  if (params.handle != DDS_HANDLE_NIL && (type_.key == nullptr || params.handle != hash_key(message.key))) {
    return refuse_handle();
  }
  message.kind = sample.kind;
  message.related_identity = params.related_sample_identity;
  message.arrival_time = current_time();
  message.source_time = params.source_timestamp == DDS_TIME_INVALID ? message.arrival_time : params.source_timestamp;
  message.publication_handle = handle_;
  return DDS_RETCODE_OK;
}

DDS_InstanceHandle_t WriterCore::lookup_instance(const void* data) const {
  if (data == nullptr || type_.key == nullptr) { return DDS_HANDLE_NIL; }
  try {
    std::string key;
    read_key(type_, data, key);
    return hash_key(key);
  } catch (const std::bad_alloc&) { return DDS_HANDLE_NIL; }
}

void WriterCore::add_reader(DDS_InstanceHandle_t handle, SubscriptionData data, Notifications& notifications) {
  const MutexLock lock(mutex_);
  readers_.push_back({handle, std::move(data)});
  count_match(matched_, &DDS_PublicationMatchedStatus::last_subscription_handle, handle);
  match_conditions_.raise(notifications);
  raise(DDS_PUBLICATION_MATCHED_STATUS, notifications);
}

void WriterCore::remove_reader(DDS_InstanceHandle_t handle, Notifications& notifications) {
  const MutexLock lock(mutex_);
  const auto found =
      std::find_if(readers_.begin(), readers_.end(), [=](const MatchedReader& r) { return r.handle == handle; });
  if (found == readers_.end()) { return; }  // memory was exhausted when it was to be added
  readers_.erase(found);
  count_unmatch(matched_, &DDS_PublicationMatchedStatus::last_subscription_handle, handle);
  match_conditions_.raise(notifications);
  raise(DDS_PUBLICATION_MATCHED_STATUS, notifications);
}

void WriterCore::count_incompatible(DDS_QosPolicyId_t policy, Notifications& notifications) {
  const MutexLock lock(mutex_);
  count_policy(incompatible_, policy);
  match_conditions_.raise(notifications);
  raise(DDS_OFFERED_INCOMPATIBLE_QOS_STATUS, notifications);
}

DDS_StatusMask WriterCore::status_changes() {
  const MutexLock lock(mutex_);
  return changes();
}

template <class Status>
DDS_ReturnCode_t WriterCore::read_status(DDS_StatusMask mask, Status WriterCore::*own, Status& status) {
  Notifications notifications;
  const MutexLock lock(mutex_);
  if (!take_status(this->*own, status)) { return DDS_RETCODE_OUT_OF_RESOURCES; }
  read(mask, notifications);
  return DDS_RETCODE_OK;
}

DDS_ReturnCode_t WriterCore::get_status(DDS_OfferedIncompatibleQosStatus& status) {
  return read_status(DDS_OFFERED_INCOMPATIBLE_QOS_STATUS, &WriterCore::incompatible_, status);
}

DDS_ReturnCode_t WriterCore::get_status(DDS_PublicationMatchedStatus& status) {
  return read_status(DDS_PUBLICATION_MATCHED_STATUS, &WriterCore::matched_, status);
}

DDS_ReturnCode_t WriterCore::get_matched_subscriptions(DDS_InstanceHandleSeq& handles) {
  const MutexLock lock(mutex_);
  const int count = static_cast<int>(readers_.size());
  if (!handles.ensure_length(count, count)) { return DDS_RETCODE_OUT_OF_RESOURCES; }
  for (int i = 0; i < count; ++i) { handles[i] = readers_[static_cast<std::size_t>(i)].handle; }
  return DDS_RETCODE_OK;
}

DDS_ReturnCode_t WriterCore::get_matched_subscription_data(DDS_SubscriptionBuiltinTopicData& data,
                                                           DDS_InstanceHandle_t handle) {
  SubscriptionData found;
  {
    const MutexLock lock(mutex_);
    for (const MatchedReader& reader : readers_) {
      if (reader.handle == handle) { found = reader.data; }
    }
  }
  return found == nullptr ? DDS_RETCODE_BAD_PARAMETER : copy_out(data, *found);
}

bool WriterCore::is_free() {
  const MutexLock lock(mutex_);
  return match_conditions_.empty();
}

DDS_ReturnCode_t WriterCore::set_listener(DDSDataWriterListener* listener, DDS_StatusMask mask) {
  StatusDispatch::set_listener(listener == nullptr ? 0 : mask,
                               [&] { listener_.store(listener, std::memory_order_release); });
  return DDS_RETCODE_OK;
}

void WriterCore::tell(DDS_StatusMask status) {
  DDSDataWriterListener* told = listener();
  if (told == nullptr) { return; }
  if (status == DDS_PUBLICATION_MATCHED_STATUS) {
    DDS_PublicationMatchedStatus matched;
    if (get_status(matched) == DDS_RETCODE_OK) { told->on_publication_matched(&api_, matched); }
  } else if (status == DDS_OFFERED_INCOMPATIBLE_QOS_STATUS) {
    DDS_OfferedIncompatibleQosStatus incompatible;
    if (get_status(incompatible) == DDS_RETCODE_OK) { told->on_offered_incompatible_qos(&api_, incompatible); }
  }
}

}  // namespace dds
