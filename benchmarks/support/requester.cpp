#include "support/requester.hpp"

#include <algorithm>

namespace bench {

Requester::Requester(const Participant& participant, std::size_t payload)
    : requester_(zemtra::RequesterParams(participant.get()).service_name(echo_service), register_octets,
                 register_octets, sizeof(DDS_Octets), false),
      request_(payload) {}

void Requester::run_blocking(long count) {
  for (long i = 0; i < count; ++i) {
    send();
    if (!requester_.wait_for_replies(DDS_DURATION_INFINITE, 1, params_.identity)) { fail("no reply"); }
    take_reply();
  }
}

void Requester::run_listener(long count) {
  for (long i = 0; i < count; ++i) {
    send();
    take_reply();
  }
}

void Requester::run_pipelined(long count, long window) {
  long to_send = count;
  for (; to_send > std::max(0L, count - window); --to_send) { send(); }
  for (long to_receive = count; to_receive > 0;) {
    requester_.wait_for_any_sample(DDS_DURATION_INFINITE, 1);
    const long arrived = take_arrived();
    to_receive -= arrived;
    for (const long rest = to_send - std::min(arrived, to_send); to_send > rest; --to_send) { send(); }
  }
}

void Requester::fill_pools() {
  // Fewer than the messages that a writer keeps for reuse; more than any case has under way.
  constexpr int burst = 120;
  for (int i = 0; i < 3; ++i) {
    leave_unread(burst);
    requester_.wait_for_any_sample(DDS_DURATION_INFINITE, burst);
    for (long to_take = burst; to_take > 0;) { to_take -= take_arrived(); }
  }
}

void Requester::leave_unread(long count) {
  for (long i = 0; i < count; ++i) { send(); }
}

void Requester::send_stop() {
  request_.set_tag(stop_tag);
  requester_.send_sample(request_.sample(), params_);
}

void Requester::send() {
  request_.set_tag(++sent_tag_);
  requester_.send_sample(request_.sample(), params_);
}

void Requester::take_reply() {
  Loan loan(requester_);
  requester_.get_reply_loaned(&loan.data, &loan.count, loan.infos, 1, params_.identity, true);
  if (loan.count != 1) { fail("no reply"); }
  check(loan, 0, sent_tag_);
  received_tag_ = sent_tag_;
}

long Requester::take_arrived() {
  Loan loan(requester_);
  requester_.get_sample_loaned(&loan.data, &loan.count, loan.infos, DDS_LENGTH_UNLIMITED, true, nullptr);
  for (int i = 0; i < loan.count; ++i) { check(loan, i, ++received_tag_); }
  return loan.count;
}

void Requester::check(const Loan& loan, int i, std::uint64_t expected_tag) const {
  const DDS_Octets& reply = loan.sample(i);
  if (!loan.infos[i].valid_data || reply.length != request_.sample()->length) { fail("not the reply that was sent"); }
  check_tag(tag_of(reply.value), expected_tag);
}

}  // namespace bench
