#include <zemtra/details/requester_core.hpp>

#include <optional>

#include <dds/data_reader.hpp>
#include <dds/data_writer.hpp>
#include <requestreply/entity_params.hpp>
#include <requestreply/exception.hpp>
#include <requestreply/scoped_read_condition.hpp>

#include "log.hpp"
#include "topic_type.hpp"

namespace zemtra {
namespace details {

namespace {

constexpr const char* kIndexName = "RequestReplyIndex";  // the one that every requester makes

/// A wait set borrowed from a pool for the length of a scope.
class PooledWaitSet {
 public:
  explicit PooledWaitSet(FastObjectPool<DDSWaitSet>& pool) : pool_(pool), wait_set_(pool.take()) {}
  ~PooledWaitSet() { pool_.give_back(wait_set_); }
  PooledWaitSet(const PooledWaitSet&) = delete;
  PooledWaitSet& operator=(const PooledWaitSet&) = delete;

  DDSWaitSet* operator->() const { return wait_set_; }

 private:
  FastObjectPool<DDSWaitSet>& pool_;
  DDSWaitSet* wait_set_;  // the pool's
};

}  // namespace

RequesterCore::RequesterCore(const RequesterParams& params, RegisterTypeFunction register_request_type,
                             RegisterTypeFunction register_reply_type, int samples_size)
    : RequesterUntypedImpl(params, register_request_type, register_reply_type, samples_size, false) {
  constexpr const char* method_name = "Requester::Requester";
  require_type(*writer_topic, register_request_type(params.datawriter_type_support(), participant), method_name);
  require_type(*reader_topic, register_reply_type(params.datareader_type_support(), participant), method_name);
  DDS_DataWriterQos qos;
  check_retcode(get_datawriter()->get_qos(qos), method_name, QVX_LOG_GET_FAILURE_s, "DataWriter qos", false);
  guid_ = qos.protocol.writer_guid;
}

void RequesterCore::require_own(const DDS_SampleIdentity_t& request) const {
  if (request.writer_guid == guid_) { return; }
  check_retcode(DDS_RETCODE_BAD_PARAMETER, "Requester", DDS_LOG_BAD_PARAMETER_s, "not a request of this requester",
                false);
}

UntypedLoan RequesterCore::receive(const Duration& max_wait, int min_count, int max_count) {
  UntypedLoan loan;
  receive_sample_loaned(&loan.data, &loan.count, loan.infos, max_count, max_wait, min_count);
  return loan;
}

UntypedLoan RequesterCore::receive(const DDS_SampleIdentity_t& request, const Duration& max_wait, int min_count,
                                   int max_count) {
  validate(min_count, max_count, max_wait);
  if (!wait(request, max_wait, min_count)) { return {}; }
  return lend(request, max_count, true);
}

UntypedLoan RequesterCore::lend(int max_count, bool take) {
  UntypedLoan loan;
  get_sample_loaned(&loan.data, &loan.count, loan.infos, max_count, take, nullptr);
  return loan;
}

UntypedLoan RequesterCore::lend(const DDS_SampleIdentity_t& request, int max_count, bool take) {
  require_own(request);
  UntypedLoan loan;
  get_reply_loaned(&loan.data, &loan.count, loan.infos, max_count, request, take);
  return loan;
}

bool RequesterCore::wait(const DDS_SampleIdentity_t& request, const Duration& max_wait, int min_count) {
  require_own(request);
  return wait_for_replies(max_wait, min_count, request);
}

// Not `wait_for_replies`, which waits for replies that nobody has read: whoever reads any reply would hide it.
bool RequesterCore::await_reply(const DDS_SampleIdentity_t& request, const Duration& max_wait) {
  constexpr const char* method_name = "RequesterCore::await_reply";
  // Destroyed in reverse order: deleting the condition detaches it before the wait set goes back to the pool.
  const PooledWaitSet wait_set(wait_sets_);
  const ScopedReadCondition any(create_correlation_condition(DDS_ANY_SAMPLE_STATE, request.sequence_number));
  DDS_ReturnCode_t retcode = wait_set->attach_condition(any.get());
  if (retcode == DDS_RETCODE_OK) {
    DDSCondition* triggered[1] = {};  // lent, so that the wait need not allocate
    DDSConditionSeq active;
    active.loan_contiguous(triggered, 0, 1);
    retcode = wait_set->wait(active, max_wait);
  }
  if (retcode == DDS_RETCODE_OK) { return true; }
  return check_retcode(retcode, method_name, QVX_LOG_ANY_FAILURE_s, "wait for a reply", false);
}

UntypedLoan RequesterCore::first_reply(const DDS_SampleIdentity_t& request, const Duration& max_wait) {
  std::optional<Deadline> deadline;  // once there is need to wait: a replier with a handler has answered by now
  while (true) {
    UntypedLoan loan = lend(request, 1, true);
    if (loan.data != nullptr && loan.infos[0].valid_data) { return loan; }
    if (loan.data != nullptr) {
      return_loan(loan.data, loan.infos);
      continue;
    }
    if (!deadline) { deadline.emplace(max_wait); }
    if (!await_reply(request, deadline->remaining())) {
      throw_retcode(DDS_RETCODE_TIMEOUT, "Requester::call: no reply in time");
    }
  }
}

void RequesterCore::abandon(const DDS_SampleIdentity_t& request, int taken) noexcept {
  if (request.writer_guid != guid_) { return; }
  if (taken > 0) { discarded_taken_.fetch_add(taken, std::memory_order_relaxed); }
  DDS_SampleInfo key;
  key.related_sample_identity.sequence_number = request.sequence_number;
  if (reader->discard_index_key(kIndexName, key) != DDS_RETCODE_OK) {
    log_failure("RequesterCore::abandon", QVX_LOG_ANY_FAILURE_s, "its replies stay in the reader");
  }
}

std::int64_t RequesterCore::discarded_replies() const {
  DDS_LongLong count = 0;
  check_retcode(get_datareader()->get_discarded_sample_count(count), "RequesterCore::discarded_replies",
                QVX_LOG_GET_FAILURE_s, "discarded sample count", false);
  return count + discarded_taken_.load(std::memory_order_relaxed);
}

}  // namespace details
}  // namespace zemtra
