#pragma once

#include <memory>
#include <optional>
#include <string>
#include <type_traits>

#include <requestreply/entity_params.hpp>
#include <requestreply/loaned_samples.hpp>
#include <requestreply/sample.hpp>
#include <zemtra/details/requester_core.hpp>
#include <zemtra/pending_request.hpp>
#include <zemtra/type_traits.hpp>

namespace zemtra {

/// Sends requests of type `TReq` and receives the replies to them, of type `TRep`, and no others.
///
/// There are three ways to use one, from the shortest to the most open: `call` waits for one reply; `send` gives a
/// pending request, over whose replies one iterates; `send_request` gives the request's identity, under which, or under
/// none for any reply, replies are then waited for, received, taken and read. Only replies of the third way stay until
/// somebody takes them or abandons the request. Abandon such a request when you are done with it: until then the reader
/// has to remember it among those that are over.
///
/// Whoever receives or takes any reply may get one that a call or a pending request waits for; so do not mix these in
/// one requester. Identities are those of this requester's own requests: `BadParameterException` for others.
///
/// Results are either loans (`LoanedSamples<TRep>`, the replies), valid until destroyed, in the reader's memory, or
/// copies (`Sample<TRep>`, one reply). No result means that there was none in time; that is no failure. Failures throw
/// the exceptions of `requestreply/exception.hpp`, and `std::bad_alloc` when memory is exhausted.
///
/// Thread-safe, but for what receives or waits for any reply: one thread at a time. Move-only; all loans and pending
/// requests must be gone before it is, and nobody else may be using it while it is moved.
template <class TReq, class TRep>
class Requester {
  using RequestTraits = dds_type_traits<TReq>;
  using ReplyTraits = dds_type_traits<TRep>;

 public:
  using Reply = Sample<TRep>;
  using Replies = LoanedSamples<TRep>;

  /// On the topics of a service, with the default QoS for request-reply. The participant must outlive the requester.
  Requester(DDSDomainParticipant* participant, const std::string& service_name)
      : Requester(RequesterParams(participant).service_name(service_name)) {}
  explicit Requester(const RequesterParams& params)
      : core_(std::make_unique<details::RequesterCore>(params, &RequestTraits::register_type,
                                                       &ReplyTraits::register_type, ReplyTraits::sample_size)),
        reader_(ReplyTraits::narrow(core_->get_datareader())) {}

  // Calling.

  /// Sends a request and returns the data of the first reply; `TimeoutException` when none has come by then. Whatever
  /// else is replied to the request is thrown away. The time-out is that of the wait for the reply: it begins when the
  /// request has been written, which a full replier may delay by the writer's maximum blocking time, and which in one
  /// process includes the replier's handler, if it has one. It is all that ends the wait: a replier that dies does not.
  /// In the steady state this allocates no more than a copy of the reply does.
  typename ReplyTraits::Value call(const TReq& request, const Duration& timeout) {
    const details::AbandonedAtEnd sent(*core_, send_request(request));
    const Replies reply = all(core_->first_reply(sent.request, timeout));
    return reply[0].value();
  }

  /// Sends a request whose replies are wanted until the deadline. See `PendingRequest`.
  [[nodiscard]] PendingRequest<TRep> send(const TReq& request, const Deadline& deadline) {
    return {*core_, reader_, send_request(request), deadline};
  }

  // Sending.

  /// Writes a request and returns its identity. `TimeoutException` when a replier stayed full for the writer's maximum
  /// blocking time; nobody has the request then.
  DDS_SampleIdentity_t send_request(const TReq& request) {
    DDS_WriteParams_t params;
    return write(request, params);
  }
  /// The same with write parameters, in which the identity is left, too.
  DDS_SampleIdentity_t send_request(WriteSample<TReq>& request) { return write(request.data(), request.info()); }
  template <class Ref, std::enable_if_t<std::is_same_v<Ref, WriteSampleRef<TReq>>, int> = 0>
  DDS_SampleIdentity_t send_request(Ref request) {
    return write(request.data(), request.info());
  }

  // Receiving: waiting and taking.

  /// Takes the first reply that there is; empty when the time is over before. `max_wait` may not be zero. Should the
  /// copy fail for want of memory, the reply is gone all the same; that is true of all that take a single one.
  std::optional<Reply> receive_reply(const Duration& max_wait) { return first(core_->receive(max_wait, 1, 1)); }
  std::optional<Reply> receive_reply(const DDS_SampleIdentity_t& request, const Duration& max_wait) {
    return first(core_->receive(request, max_wait, 1, 1));
  }
  /// Waits for `min_count` replies and takes up to `max_count`; empty when the time is over before. `max_wait` may not
  /// be zero, and `min_count` not above `max_count`: `BadParameterException`. An unlimited count is that of the
  /// reader's `max_samples_per_read`, normally 1024; no more are taken or read at once.
  Replies receive_replies(const Duration& max_wait, int min_count = 1, int max_count = DDS_LENGTH_UNLIMITED) {
    return all(core_->receive(max_wait, min_count, max_count));
  }
  Replies receive_replies(const DDS_SampleIdentity_t& request, const Duration& max_wait, int min_count = 1,
                          int max_count = DDS_LENGTH_UNLIMITED) {
    return all(core_->receive(request, max_wait, min_count, max_count));
  }
  /// Whether `min_count` replies are there, before `max_wait` is over; leaves them there.
  bool wait_for_replies(const Duration& max_wait, int min_count = 1) {
    return core_->wait_for_any_sample(max_wait, min_count);
  }
  bool wait_for_replies(const DDS_SampleIdentity_t& request, const Duration& max_wait, int min_count = 1) {
    return core_->wait(request, max_wait, min_count);
  }

  // Taking (removes replies) and reading (leaves them, read or not) without waiting; at most `max_samples_per_read`.

  std::optional<Reply> take_reply() { return first(core_->lend(1, true)); }
  std::optional<Reply> take_reply(const DDS_SampleIdentity_t& request) { return first(core_->lend(request, 1, true)); }
  Replies take_replies(int max_count = DDS_LENGTH_UNLIMITED) { return all(core_->lend(max_count, true)); }
  Replies take_replies(const DDS_SampleIdentity_t& request, int max_count = DDS_LENGTH_UNLIMITED) {
    return all(core_->lend(request, max_count, true));
  }
  std::optional<Reply> read_reply() { return first(core_->lend(1, false)); }
  std::optional<Reply> read_reply(const DDS_SampleIdentity_t& request) { return first(core_->lend(request, 1, false)); }
  Replies read_replies(int max_count = DDS_LENGTH_UNLIMITED) { return all(core_->lend(max_count, false)); }
  Replies read_replies(const DDS_SampleIdentity_t& request, int max_count = DDS_LENGTH_UNLIMITED) {
    return all(core_->lend(request, max_count, false));
  }

  /// Throws away the replies to a request, those that are here and those to come. The identity of another requester's
  /// request is ignored.
  void abandon(const DDS_SampleIdentity_t& request) noexcept { core_->abandon(request); }
  /// How many replies have been thrown away because their request was abandoned or its call had ended.
  std::int64_t discarded_replies() const { return core_->discarded_replies(); }

  // The service.

  /// Waits until requests reach a replier whose replies reach this requester; false when there is none by then.
  /// `explain` then says what is missing.
  bool wait_for_service(const Duration& timeout) const { return core_->match().wait(timeout); }
  /// How many such repliers there are now.
  int matched_repliers() const { return core_->match().complete_ends(); }
  /// Says in a sentence who is matched and, if nobody is, what is missing. Reads, and so resets the change counts of,
  /// the incompatible-QoS statuses of the writer and the reader.
  std::string explain() const { return core_->match().explain(); }

  // What is underneath, for wait sets, conditions, listeners and statuses. Belongs to the requester.

  DDSDataWriter* request_datawriter() const noexcept { return core_->get_datawriter(); }
  typename ReplyTraits::DataReader* reply_datareader() const noexcept { return reader_; }
  details::RequesterUntypedImpl& untyped() const noexcept { return *core_; }

 private:
  DDS_SampleIdentity_t write(const TReq& request, DDS_WriteParams_t& params) {
    const typename RequestTraits::Outgoing outgoing(request);
    core_->send_sample(outgoing.get(), params);
    return params.identity;
  }
  Replies all(details::UntypedLoan&& loan) const {
    if (loan.data == nullptr) { return {}; }
    return details::create_loaned_samples<TRep>(loan.data, loan.count, loan.infos, reader_);
  }
  std::optional<Reply> first(details::UntypedLoan&& loan) const {
    const Replies replies = all(std::move(loan));
    if (replies.empty()) { return std::nullopt; }
    return Reply(replies[0]);
  }

  std::unique_ptr<details::RequesterCore> core_;  // in one place, since pending requests refer to it
  typename ReplyTraits::DataReader* reader_;      // the core's
};

}  // namespace zemtra
