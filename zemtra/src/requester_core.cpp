#include <zemtra/details/requester_core.hpp>

#include <optional>

#include <dds/data_reader.hpp>
#include <dds/data_writer.hpp>
#include <requestreply/exception.hpp>

#include "log.hpp"

namespace zemtra {
namespace details {

namespace {

constexpr const char* kIndexName = "RequestReplyIndex";  // the one that every requester makes

}  // namespace

RequesterCore::RequesterCore(const RequesterParams& params, RegisterTypeFunction register_request_type,
                             RegisterTypeFunction register_reply_type, int samples_size)
    : RequesterUntypedImpl(params, register_request_type, register_reply_type, samples_size, false) {
  DDS_DataWriterQos qos;
  check_retcode(get_datawriter()->get_qos(qos), "RequesterCore::RequesterCore", QVX_LOG_GET_FAILURE_s, "DataWriter qos",
                false);
  guid_ = qos.protocol.writer_guid;
}

UntypedLoan RequesterCore::receive(const Duration& max_wait, int min_count, int max_count) {
  UntypedLoan loan;
  receive_sample_loaned(&loan.data, &loan.count, loan.infos, max_count, max_wait, min_count);
  return loan;
}

UntypedLoan RequesterCore::receive(const DDS_SampleIdentity_t& request, const Duration& max_wait, int min_count,
                                   int max_count) {
  validate(min_count, max_count, max_wait);
  if (!wait_for_replies(max_wait, min_count, request)) { return {}; }
  return lend(request, max_count, true);
}

UntypedLoan RequesterCore::lend(int max_count, bool take) {
  UntypedLoan loan;
  get_sample_loaned(&loan.data, &loan.count, loan.infos, max_count, take, nullptr);
  return loan;
}

UntypedLoan RequesterCore::lend(const DDS_SampleIdentity_t& request, int max_count, bool take) {
  UntypedLoan loan;
  get_reply_loaned(&loan.data, &loan.count, loan.infos, max_count, request, take);
  return loan;
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
    if (!wait_for_replies(deadline->remaining(), 1, request)) {
      throw_retcode(DDS_RETCODE_TIMEOUT, "Requester::call: no reply in time");
    }
  }
}

void RequesterCore::abandon(const DDS_SampleIdentity_t& request) noexcept {
  // The index knows requests by their number alone, so another requester's would hit one of this requester's.
  if (!DDS_GUID_equals(&request.writer_guid, &guid_)) { return; }
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
  return count;
}

}  // namespace details
}  // namespace zemtra
