// A reader as the application uses it: conditions, reading, loans, statuses.

#include "reader/reader_core.hpp"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string_view>

#include "log/log.hpp"
#include "util/entity_ids.hpp"

namespace dds {

namespace {

std::size_t limit(DDS_Long value) { return value == DDS_LENGTH_UNLIMITED ? SIZE_MAX : static_cast<std::size_t>(value); }

ReaderCache::Limits limits(const DDS_DataReaderQos& qos) {
  return {qos.history.kind == DDS_KEEP_ALL_HISTORY_QOS, static_cast<std::size_t>(qos.history.depth),
          limit(qos.resource_limits.max_samples), limit(qos.resource_limits.max_instances),
          limit(qos.resource_limits.max_samples_per_instance)};
}

bool is_bounded(const DDS_ResourceLimitsQosPolicy& limits) {
  return limits.max_samples != DDS_LENGTH_UNLIMITED || limits.max_instances != DDS_LENGTH_UNLIMITED ||
         limits.max_samples_per_instance != DDS_LENGTH_UNLIMITED;
}

bool wants_no_writers_sample(const DDS_PropertyQosPolicy& properties) {
  const DDS_Property_t* property = DDSPropertyQosPolicyHelper::lookup_property(
      properties, "dds.data_reader.history.generate_not_alive_no_writers_sample");
  return property == nullptr || property->value == nullptr || std::string_view(property->value) != "0";
}

}  // namespace

DDSDataReader* ReadConditionImpl::get_datareader() { return &reader_.api(); }

ReaderCore::ReaderCore(DDSDataReader& api, const DDS_TypePlugin& type, DDS_InstanceHandle_t participant,
                       const DDS_GUID_t* related_writer, const DDS_DataReaderQos& qos)
    : StatusDispatch(api),
      api_(api),
      type_(type),
      qos_(qos),
      handle_(next_entity_handle()),
      data_(describe(handle_, participant, qos, related_writer)),
      bounded_(is_bounded(qos.resource_limits)),
      mutex_(owner_lock().mutex),
      cache_(type, limits(qos), wants_no_writers_sample(qos.property)),
      match_conditions_(owner_lock()) {}

ReaderCore::~ReaderCore() {
  while (idle_conditions_ != nullptr) {
    ReadConditionImpl* next = idle_conditions_->next_;
    delete idle_conditions_;
    idle_conditions_ = next;
  }
}

DDSReadCondition* ReaderCore::create_readcondition(DDS_SampleStateMask sample_states, DDS_ViewStateMask view_states,
                                                   DDS_InstanceStateMask instance_states) {
  DDSReadCondition* condition = nullptr;
  {
    Notifications notifications;
    const MutexLock lock(mutex_);
    condition = make_condition(sample_states, view_states, instance_states, nullptr, notifications);
  }
  if (condition == nullptr) {
    DDS_LOG_FAILURE("DDSDataReader::create_readcondition", QVX_LOG_CREATION_FAILURE_s, "out of memory");
  }
  return condition;
}

DDS_ReturnCode_t ReaderCore::create_index(const char* name) {
  return DDS_LOG_REFUSAL("DDSDataReader::create_index", add_index(name), "an index of that name exists");
}

bool ReaderCore::has_index(const char* name) const {
  return name != nullptr && std::find(index_names_.begin(), index_names_.end(), name) != index_names_.end();
}

DDS_ReturnCode_t ReaderCore::add_index(const char* name) {
  if (name == nullptr || *name == '\0') { return DDS_RETCODE_BAD_PARAMETER; }
  const MutexLock lock(mutex_);
  if (has_index(name)) { return DDS_RETCODE_PRECONDITION_NOT_MET; }
  try {
    index_names_.reserve(index_names_.size() + 1);
    std::string copy(name);
    cache_.enable_index();
    index_names_.push_back(std::move(copy));
  } catch (const std::bad_alloc&) { return DDS_RETCODE_OUT_OF_RESOURCES; }
  return DDS_RETCODE_OK;
}

DDSReadCondition* ReaderCore::create_index_condition(DDS_SampleStateMask sample_states, DDS_ViewStateMask view_states,
                                                     DDS_InstanceStateMask instance_states, const char* index_name,
                                                     const DDS_SampleInfo& key) {
  const std::uint64_t number = CorrelationIndex::key(key.related_sample_identity.sequence_number);
  const char* const name = index_name == nullptr ? "" : index_name;
  bool known = false;
  DDSReadCondition* condition = nullptr;
  {
    Notifications notifications;
    const MutexLock lock(mutex_);
    known = has_index(name);
    if (known) { condition = make_condition(sample_states, view_states, instance_states, &number, notifications); }
  }
  if (condition == nullptr) {
    DDS_LOG_FAILURE("DDSDataReader::create_index_condition", QVX_LOG_CREATION_FAILURE_s,
                    "condition on index \"%s\": %s", name, known ? "out of memory" : "no such index");
  }
  return condition;
}

ReadConditionImpl* ReaderCore::make_condition(DDS_SampleStateMask sample_states, DDS_ViewStateMask view_states,
                                              DDS_InstanceStateMask instance_states, const std::uint64_t* key,
                                              Notifications& notifications) {
  try {
    std::unique_ptr<ReadConditionImpl> condition(idle_conditions_);
    if (condition != nullptr) {
      idle_conditions_ = condition->next_;
      --idle_condition_count_;
    } else {
      condition = std::make_unique<ReadConditionImpl>(*this, owner_lock());
    }
    condition->sample_states_ = sample_states;
    condition->view_states_ = view_states;
    condition->instance_states_ = instance_states;
    cache_.add_watch(condition->watch_, state_mask(sample_states, view_states, instance_states), key, notifications);
    condition->in_use_ = true;
    conditions_.push_back(condition.get());
    return condition.release();
  } catch (const std::bad_alloc&) { return nullptr; }
}

DDS_ReturnCode_t ReaderCore::delete_readcondition(DDSReadCondition* condition) {
  return DDS_LOG_REFUSAL("DDSDataReader::delete_readcondition", try_delete(condition),
                         "not a condition of this reader");
}

DDS_ReturnCode_t ReaderCore::try_delete(DDSReadCondition* condition) {
  if (condition == nullptr) { return DDS_RETCODE_BAD_PARAMETER; }
  auto* own = static_cast<ReadConditionImpl*>(condition->procedural_handle());
  const MutexLock lock(mutex_);
  if (&own->reader_ != this || !own->in_use_) { return DDS_RETCODE_PRECONDITION_NOT_MET; }
  drop_condition(own);
  return DDS_RETCODE_OK;
}

DDS_ReturnCode_t ReaderCore::discard_index_key(const char* index_name, const DDS_SampleInfo& key) {
  const std::uint64_t number = CorrelationIndex::key(key.related_sample_identity.sequence_number);
  return DDS_LOG_REFUSAL("DDSDataReader::discard_index_key", discard(index_name, number), "");
}

// The messages are released after the lock, because a type's own code may run when the last reference goes. A writer
// that waits for room may be about to try a sample with this key: it has to look again even if nothing was removed.
DDS_ReturnCode_t ReaderCore::discard(const char* index_name, std::uint64_t key) {
  Message* removed[kFewMessages];
  std::size_t count = 0;
  do {
    {
      Notifications notifications;
      const MutexLock lock(mutex_);
      if (!has_index(index_name)) { return DDS_RETCODE_BAD_PARAMETER; }
      try {
        count = cache_.discard(key, removed, kFewMessages, notifications);
      } catch (const std::bad_alloc&) { return DDS_RETCODE_OUT_OF_RESOURCES; }
    }
    for (std::size_t i = 0; i < count; ++i) { removed[i]->unref(); }
  } while (count == kFewMessages);
  if (bounded_) { notify_space(); }
  return DDS_RETCODE_OK;
}

DDS_LongLong ReaderCore::discarded_sample_count() {
  const MutexLock lock(mutex_);
  return cache_.discarded_count();
}

void ReaderCore::delete_all_conditions() {
  match_conditions_.remove_all();
  const MutexLock lock(mutex_);
  while (!conditions_.empty()) { drop_condition(conditions_.front()); }
}

void ReaderCore::drop_condition(ReadConditionImpl* condition) {
  cache_.remove_watch(condition->watch_);
  conditions_.erase(condition);
  condition->in_use_ = false;
  condition->core_->detach_all();
  // A wait set that is just going may still refer to the core, which then cannot be used again.
  if (idle_condition_count_ == kMostIdleConditions || !condition->core_->unique()) {
    delete condition;
    return;
  }
  condition->next_ = idle_conditions_;
  idle_conditions_ = condition;
  ++idle_condition_count_;
}

DDS_ReturnCode_t ReaderCore::read_or_take(void*** data, int* count, DDS_SampleInfoSeq& infos, int max_samples,
                                          StateMask states, DDS_ReadCondition* condition, bool take) {
  return DDS_LOG_REFUSAL("DDSDataReader::read or take",
                         try_read_or_take(data, count, infos, max_samples, states, condition, take),
                         "the sequence of infos is in use, or the condition is not one of this reader");
}

DDS_ReturnCode_t ReaderCore::try_read_or_take(void*** data, int* count, DDS_SampleInfoSeq& infos, int max_samples,
                                              StateMask states, DDS_ReadCondition* condition, bool take) {
  if (data == nullptr || count == nullptr) { return DDS_RETCODE_BAD_PARAMETER; }
  *count = 0;
  if (max_samples < 0 && max_samples != DDS_LENGTH_UNLIMITED) { return DDS_RETCODE_BAD_PARAMETER; }
  if (!infos.has_ownership() || infos.maximum() != 0) { return DDS_RETCODE_PRECONDITION_NOT_MET; }
  const auto* own = static_cast<ReadConditionImpl*>(condition);
  if (own != nullptr && &own->reader_ != this) { return DDS_RETCODE_PRECONDITION_NOT_MET; }
  const std::size_t most = std::min(limit(max_samples), limit(qos_.reader_resource_limits.max_samples_per_read));
  Loan* loan = nullptr;
  const DDS_ReturnCode_t retcode = lend(states, own, most, take, loan);
  if (retcode != DDS_RETCODE_OK) { return retcode; }
  *data = loan->data.data();
  *count = static_cast<int>(loan->count);
  infos.loan_contiguous(loan->infos.data(), *count, *count);
  return DDS_RETCODE_OK;
}

DDS_ReturnCode_t ReaderCore::lend(StateMask states, const ReadConditionImpl* condition, std::size_t most, bool take,
                                  Loan*& loan) {
  Notifications notifications;
  {
    const MutexLock lock(mutex_);
    ReaderCache::Selection selection{states, nullptr};
    if (condition != nullptr) {
      if (!condition->in_use_) { return DDS_RETCODE_PRECONDITION_NOT_MET; }
      selection = {condition->watch_.states, condition->watch_.bucket};
    }
    read(DDS_DATA_AVAILABLE_STATUS, notifications);
    try {
      loan = cache_.get(selection, most, take, notifications);
    } catch (const std::bad_alloc&) { return DDS_RETCODE_OUT_OF_RESOURCES; }
  }
  if (loan == nullptr) { return DDS_RETCODE_NO_DATA; }
  if (take && bounded_) { notify_space(); }
  return DDS_RETCODE_OK;
}

DDS_ReturnCode_t ReaderCore::return_loan(void** data, DDS_SampleInfoSeq& infos) {
  return DDS_LOG_REFUSAL("DDSDataReader::return_loan", end_loan(data, infos), "not an outstanding loan of this reader");
}

// The messages are released after the lock, because a type's own code may run when the last reference goes.
DDS_ReturnCode_t ReaderCore::end_loan(void** data, DDS_SampleInfoSeq& infos) {
  if (data == nullptr || infos.has_ownership()) { return DDS_RETCODE_PRECONDITION_NOT_MET; }
  Message* few[kFewMessages];
  std::size_t count = 0;
  Loan* many = nullptr;
  {
    const MutexLock lock(mutex_);
    Loan* loan = cache_.loans().end(data, infos.get_contiguous_buffer());
    if (loan == nullptr) { return DDS_RETCODE_PRECONDITION_NOT_MET; }
    if (loan->count <= kFewMessages) {
      while (count < loan->count) {
        few[count] = loan->messages[count];
        ++count;
      }
      cache_.loans().recycle(loan);
    } else {
      many = loan;
    }
  }
  infos.unloan();
  for (std::size_t i = 0; i < count; ++i) { few[i]->unref(); }
  if (many != nullptr) {
    for (std::size_t i = 0; i < many->count; ++i) { many->messages[i]->unref(); }
    const MutexLock lock(mutex_);
    cache_.loans().recycle(many);
  }
  return DDS_RETCODE_OK;
}

DDS_InstanceHandle_t ReaderCore::lookup_instance(const void* data) {
  if (data == nullptr || type_.key == nullptr) { return DDS_HANDLE_NIL; }
  try {
    std::string key;
    read_key(type_, data, key);
    const MutexLock lock(mutex_);
    const Instance* instance = cache_.instances().find(key);
    return instance == nullptr ? DDS_HANDLE_NIL : instance->handle;
  } catch (const std::bad_alloc&) { return DDS_HANDLE_NIL; }
}

bool ReaderCore::is_free() {
  const MutexLock lock(mutex_);
  return conditions_.empty() && match_conditions_.empty() && cache_.loans().outstanding() == 0;
}

}  // namespace dds
