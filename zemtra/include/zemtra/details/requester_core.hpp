#pragma once

#include <atomic>
#include <cstdint>

#include <requestreply/fast_object_pool.hpp>
#include <requestreply/requester_untyped_impl.hpp>
#include <zemtra/details/service_match.hpp>
#include <zemtra/details/untyped_loan.hpp>

namespace zemtra {
namespace details {

/// What of a typed requester knows no type. Unlike the untyped requester it accepts identities of its own requests
/// only, since those of others would stand for one of its own: `BadParameterException`.
class ZEMTRA_TYPED_EXPORT RequesterCore : public RequesterUntypedImpl {
 public:
  /// `PreconditionNotMetException` when a topic exists with another type.
  RequesterCore(const RequesterParams& params, RegisterTypeFunction register_request_type,
                RegisterTypeFunction register_reply_type, int samples_size);

  /// Waits for `min_count` replies and takes up to `max_count`; empty when the time is over before.
  UntypedLoan receive(const Duration& max_wait, int min_count, int max_count);
  UntypedLoan receive(const DDS_SampleIdentity_t& request, const Duration& max_wait, int min_count, int max_count);
  /// Takes or reads at once.
  UntypedLoan lend(int max_count, bool take);
  UntypedLoan lend(const DDS_SampleIdentity_t& request, int max_count, bool take);

  /// As `wait_for_replies` of the untyped requester.
  bool wait(const DDS_SampleIdentity_t& request, const Duration& max_wait, int min_count);
  /// Waits until there is a reply, whether or not somebody has read it; false when there is none by then.
  bool await_reply(const DDS_SampleIdentity_t& request, const Duration& max_wait);
  /// Takes the first reply with data; `TimeoutException` when none has come by then.
  UntypedLoan first_reply(const DDS_SampleIdentity_t& request, const Duration& max_wait);

  /// Throws away the replies to a request, those that are here and those to come, and counts them, and `taken` that
  /// were taken and not looked at. When memory for it runs out, logs, and the replies stay. What is no request of this
  /// requester is ignored.
  void abandon(const DDS_SampleIdentity_t& request, int taken = 0) noexcept;
  std::int64_t discarded_replies() const;

  ServiceMatch match() const { return {ServiceMatch::Role::requester, *get_datawriter(), *get_datareader()}; }

 private:
  void require_own(const DDS_SampleIdentity_t& request) const;

  DDS_GUID_t guid_;                               // of the writer, and so of all requests
  std::atomic<std::int64_t> discarded_taken_{0};  // replies thrown away here, after they left the reader
  FastObjectPool<DDSWaitSet> wait_sets_;          // one for each call that awaits a reply
};

/// Abandons a request at the end of a scope.
struct AbandonedAtEnd {
  AbandonedAtEnd(RequesterCore& core, const DDS_SampleIdentity_t& identity) noexcept
      : requester(core), request(identity) {}
  ~AbandonedAtEnd() { requester.abandon(request); }
  AbandonedAtEnd(const AbandonedAtEnd&) = delete;
  AbandonedAtEnd& operator=(const AbandonedAtEnd&) = delete;

  RequesterCore& requester;
  const DDS_SampleIdentity_t request;
};

}  // namespace details
}  // namespace zemtra
