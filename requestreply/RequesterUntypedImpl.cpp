#include <dds/domain_participant.hpp>
#include <requestreply/correlation_cft_builder.hpp>
#include <requestreply/entity_params.hpp>
#include <requestreply/fast_object_pool.hpp>
#include <requestreply/requester_untyped_impl.hpp>
#include <requestreply/scoped_read_condition.hpp>
#include <requestreply/topic_naming.hpp>

#include "internal/check.hpp"
#include "internal/sequence_numbers.hpp"
#include "internal/topic_names.hpp"

ScopedReadCondition::ScopedReadCondition(DDSReadCondition* condition) noexcept : condition_(condition) {}

ScopedReadCondition::~ScopedReadCondition() {
  DDSDataReader* reader = condition_ == nullptr ? nullptr : condition_->get_datareader();
  if (reader != nullptr) { static_cast<void>(reader->delete_readcondition(condition_)); }
}

namespace zemtra {

template struct FastObjectPool<DDSWaitSet>::BufferMemoryAdapter<DDSWaitSet>;

namespace details {

namespace {

constexpr const char* kIndexName = "RequestReplyIndex";

/// A wait set borrowed from a pool for the length of a scope.
class PooledWaitSet {
 public:
  explicit PooledWaitSet(FastObjectPool<DDSWaitSet>& pool) : pool_(pool), waitset_(pool.take()) {}
  ~PooledWaitSet() { pool_.give_back(waitset_); }
  PooledWaitSet(const PooledWaitSet&) = delete;
  PooledWaitSet& operator=(const PooledWaitSet&) = delete;

  DDSWaitSet& operator*() const { return *waitset_; }

 private:
  FastObjectPool<DDSWaitSet>& pool_;
  DDSWaitSet* waitset_;  // the pool's
};

/// The key that selects the replies to one request.
class CorrelationKey {
 public:
  explicit CorrelationKey(const DDS_SequenceNumber_t& sequence_number) {
    DDS_SampleInfo_initialize(&info_);
    info_.related_sample_identity.sequence_number = sequence_number;
  }
  ~CorrelationKey() { DDS_SampleInfo_finalize(&info_); }
  CorrelationKey(const CorrelationKey&) = delete;
  CorrelationKey& operator=(const CorrelationKey&) = delete;

  const DDS_SampleInfo& info() const { return info_; }

 private:
  DDS_SampleInfo info_;
};

}  // namespace

/// Writes to the request topic and reads the reply topic through the correlation filter.
class RequesterUntypedImpl::RequesterTopicBuilder final : public EntityUntypedImpl::TopicBuilder {
 public:
  explicit RequesterTopicBuilder(RequesterUntypedImpl* requester) : requester_(requester) {}

  DDSTopic* create_writer_topic(const EntityParams& params, const char* type_name) override {
    return get_or_create(request_topic_name(params), type_name);
  }

  DDSTopicDescription* create_reader_topic(const EntityParams& params, const char* type_name) override {
    DDSTopic* reply_topic = get_or_create(reply_topic_name(params), type_name);
    // A failure is not looked at: the filter then names the automatic GUID, which no reply is related to.
    DDS_DataWriterQos qos;
    static_cast<void>(requester_->get_datawriter()->get_qos(qos));
    return CorrelationCFTBuilder().create_correlation_cft(requester_->participant, reply_topic,
                                                          qos.protocol.writer_guid);
  }

 private:
  DDSTopic* get_or_create(const std::string& topic_name, const char* type_name) {
    return DDSTopic::narrow(get_or_create_topic(requester_->participant, topic_name.c_str(), type_name, false));
  }

  RequesterUntypedImpl* requester_;  // not owned
};

RequesterUntypedImpl::RequesterUntypedImpl(const RequesterParams& params, RegisterTypeFunction register_writer_type,
                                           RegisterTypeFunction register_reader_type, int samples_size, bool flag)
    : EntityUntypedImpl(true) {
  RequesterTopicBuilder topic_builder(this);
  initialize(params, register_writer_type, register_reader_type, samples_size, topic_builder, nullptr, flag,
             "Requester");
  check(get_datareader()->create_index(kIndexName), "RequesterUntypedImpl", QVX_LOG_CREATION_FAILURE_s,
        "correlation index");
  waitset_pool_ = std::make_unique<FastObjectPool<DDSWaitSet>>();
}

RequesterUntypedImpl::~RequesterUntypedImpl() = default;

DDSReadCondition* RequesterUntypedImpl::create_correlation_condition(unsigned int sample_states,
                                                                     const DDS_SequenceNumber_t& sequence_number) {
  constexpr const char* method_name = "RequesterUntypedImpl::create_correlation_condition";
  if (is_special(sequence_number)) {
    fail(DDS_RETCODE_BAD_PARAMETER, method_name, DDS_LOG_BAD_PARAMETER_s, "sample identity");
  }
  const CorrelationKey key(sequence_number);
  DDSReadCondition* condition =
      reader->create_index_condition(sample_states, DDS_ANY_VIEW_STATE, DDS_ANY_INSTANCE_STATE, kIndexName, key.info());
  if (condition == nullptr) {
    fail(DDS_RETCODE_ERROR, method_name, QVX_LOG_CREATION_FAILURE_s, "correlation condition");
  }
  return condition;
}

bool RequesterUntypedImpl::wait_for_replies(const DDS_Duration_t& max_wait, int min_count,
                                            const DDS_SampleIdentity_t& related_request_id) {
  const DDS_SequenceNumber_t& request = related_request_id.sequence_number;
  // Destroyed in reverse order: deleting the unread condition detaches it before the wait set goes back to the pool.
  const PooledWaitSet pooled(*waitset_pool_);
  const ScopedReadCondition unread(create_correlation_condition(DDS_NOT_READ_SAMPLE_STATE, request));
  const ScopedReadCondition any(create_correlation_condition(DDS_ANY_SAMPLE_STATE, request));
  static_cast<void>((*pooled).attach_condition(unread.get()));
  return wait_for_samples(max_wait, min_count, *pooled, any.get(), unread.get());
}

void RequesterUntypedImpl::get_reply_loaned(void*** received_data, int* data_count, DDS_SampleInfoSeq& info_seq,
                                            int max_samples, const DDS_SampleIdentity_t& related_request_id,
                                            bool take) {
  const ScopedReadCondition any(create_correlation_condition(DDS_ANY_SAMPLE_STATE, related_request_id.sequence_number));
  get_sample_loaned(received_data, data_count, info_seq, max_samples, take, any.get());
}

void swap(RequesterUntypedImpl& a, RequesterUntypedImpl& b) { a.EntityUntypedImpl::swap(b); }

}  // namespace details
}  // namespace zemtra
