#pragma once

#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>

#include <requestreply/loaned_samples.hpp>
#include <requestreply/sample.hpp>
#include <zemtra/details/replier_core.hpp>
#include <zemtra/replier_params.hpp>
#include <zemtra/type_traits.hpp>

namespace zemtra {

/// The request that a reply is for: its identity, or the received sample itself, a copy, a reference or an element of a
/// loan. Made where it is needed, by conversion.
template <class TReq>
class ToRequest {
 public:
  // NOLINTBEGIN(google-explicit-constructor): see above
  ToRequest(const DDS_SampleIdentity_t& identity) noexcept : identity_(identity) {}
  ToRequest(const Sample<TReq>& request) : identity_(request.identity()) {}
  ToRequest(const LoanedSample<TReq>& request) : identity_(request.identity()) {}
  ToRequest(const SampleRef<TReq>& request) : identity_(request.identity()) {}
  // NOLINTEND(google-explicit-constructor)

  const DDS_SampleIdentity_t& identity() const noexcept { return identity_; }

 private:
  DDS_SampleIdentity_t identity_;
};

/// Receives requests of type `TReq` and answers each with any number of replies of type `TRep`, at once or later, from
/// any thread. For a handler that is called for each request see `HandlerReplier`.
///
/// Results are either loans (`LoanedSamples<TReq>`, the requests), valid until destroyed, in the reader's memory, or
/// copies (`Sample<TReq>`, one request). No result means that there was none in time; that is no failure. Failures
/// throw the exceptions of `requestreply/exception.hpp`, and `std::bad_alloc` when memory is exhausted.
///
/// Thread-safe, but for what waits for or receives requests: one thread at a time. Move-only; all loans must be gone
/// before it is, and nobody else may be using it while it is moved.
template <class TReq, class TRep>
class Replier {
  using RequestTraits = dds_type_traits<TReq>;
  using ReplyTraits = dds_type_traits<TRep>;

 public:
  using Request = Sample<TReq>;
  using Requests = LoanedSamples<TReq>;

  /// On the topics of a service, with the default QoS for request-reply. The participant must outlive the replier.
  Replier(DDSDomainParticipant* participant, const std::string& service_name)
      : Replier(ReplierParams(participant).service_name(service_name)) {}
  explicit Replier(const ReplierParams& params)
      : core_(std::make_unique<details::ReplierCore>(params, &RequestTraits::register_type, &ReplyTraits::register_type,
                                                     RequestTraits::sample_size)),
        reader_(RequestTraits::narrow(core_->get_datareader())) {}

  /// Waits for a request and takes it; empty when the time is over before. `max_wait` may not be zero. Should the copy
  /// fail for want of memory, the request is gone all the same; that is true of `take_request` as well.
  std::optional<Request> receive_request(const Duration& max_wait) { return first(core_->receive(max_wait, 1, 1)); }
  /// Waits for `min_count` requests and takes up to `max_count`; empty when the time is over before. `max_wait` may not
  /// be zero, and `min_count` not above `max_count`: `BadParameterException`. An unlimited count is that of the
  /// reader's `max_samples_per_read`, normally 1024; no more are taken or read at once.
  Requests receive_requests(const Duration& max_wait, int min_count = 1, int max_count = DDS_LENGTH_UNLIMITED) {
    return all(core_->receive(max_wait, min_count, max_count));
  }
  /// Whether `min_count` requests are there, before `max_wait` is over; leaves them there.
  bool wait_for_requests(const Duration& max_wait, int min_count = 1) {
    return core_->wait_for_any_sample(max_wait, min_count);
  }

  // Taking (removes requests) and reading (leaves them, read or not) without waiting; at most `max_samples_per_read`.

  std::optional<Request> take_request() { return first(core_->lend(1, true)); }
  Requests take_requests(int max_count = DDS_LENGTH_UNLIMITED) { return all(core_->lend(max_count, true)); }
  std::optional<Request> read_request() { return first(core_->lend(1, false)); }
  Requests read_requests(int max_count = DDS_LENGTH_UNLIMITED) { return all(core_->lend(max_count, false)); }

  /// Writes a reply to a request. A requester that has gone meanwhile is no failure. `BadParameterException` for an
  /// identity that no request can have, `TimeoutException` when the requester stayed full for the writer's maximum
  /// blocking time.
  void send_reply(const TRep& reply, const ToRequest<TReq>& request) {
    DDS_WriteParams_t params;
    write(reply, request, params);
  }
  /// The same with write parameters, in which the reply's identity and the request's are left.
  void send_reply(WriteSample<TRep>& reply, const ToRequest<TReq>& request) {
    write(reply.data(), request, reply.info());
  }
  template <class Ref, std::enable_if_t<std::is_same_v<Ref, WriteSampleRef<TRep>>, int> = 0>
  void send_reply(Ref reply, const ToRequest<TReq>& request) {
    write(reply.data(), request, reply.info());
  }

  // The other end.

  /// Waits until there is a requester whose requests reach this replier and whom its replies reach; false when there is
  /// none by then. `explain` then says what is missing.
  bool wait_for_requesters(const Duration& timeout) const { return core_->match().wait(timeout); }
  /// How many such requesters there are now.
  int matched_requesters() const { return core_->match().complete_ends(); }
  /// Says in a sentence who is matched and, if nobody is, what is missing. Reads, and so resets the change counts of,
  /// the incompatible-QoS statuses of the writer and the reader.
  std::string explain() const { return core_->match().explain(); }

  // What is underneath, for wait sets, conditions, listeners and statuses. Belongs to the replier.

  typename RequestTraits::DataReader* request_datareader() const noexcept { return reader_; }
  DDSDataWriter* reply_datawriter() const noexcept { return core_->get_datawriter(); }
  details::ReplierUntypedImpl& untyped() const noexcept { return *core_; }

 private:
  void write(const TRep& reply, const ToRequest<TReq>& request, DDS_WriteParams_t& params) {
    const typename ReplyTraits::Outgoing outgoing(reply);
    core_->send_sample(outgoing.get(), request.identity(), params);
  }
  Requests all(details::UntypedLoan&& loan) const {
    if (loan.data == nullptr) { return {}; }
    return details::create_loaned_samples<TReq>(loan.data, loan.count, loan.infos, reader_);
  }
  std::optional<Request> first(details::UntypedLoan&& loan) const {
    const Requests requests = all(std::move(loan));
    if (requests.empty()) { return std::nullopt; }
    return Request(requests[0]);
  }

  std::unique_ptr<details::ReplierCore> core_;
  typename RequestTraits::DataReader* reader_;  // the core's
};

}  // namespace zemtra
