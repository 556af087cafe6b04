#pragma once

#include <memory>

#include <requestreply/entity_untyped_impl.hpp>

namespace zemtra {

class RequesterParams;
template <class T>
class FastObjectPool;

namespace details {

/// Sends requests and receives the replies to them, and no others: its reader sees the reply topic through a
/// content-filtered topic that admits only what answers this requester's own writer.
///
/// Send with `send_sample`, which leaves the request's identity in the write parameters, and use that identity to wait
/// for, read and take its replies. `wait_for_replies` and `get_reply_loaned` may be called by several threads at once,
/// for the same or for different requests. Of an identity only the sequence number counts: the writer's GUID is neither
/// checked nor used.
class ZEMTRA_EXPORT RequesterUntypedImpl : public EntityUntypedImpl {
 public:
  /// Creates the requester's topics, writer, reader, conditions and index; `register_writer_type` registers the request
  /// type and `register_reader_type` the reply type. `samples_size` and `flag` are those of
  /// `EntityUntypedImpl::initialize`. Throws on any failure; nothing but topics is then left in the participant (and,
  /// if the reader could not be created, the content-filtered topic). Not looked at is whether the writer could be
  /// asked for its GUID: without it the filter names the automatic GUID and no reply arrives.
  RequesterUntypedImpl(const RequesterParams& params, RegisterTypeFunction register_writer_type,
                       RegisterTypeFunction register_reader_type, int samples_size, bool flag);
  /// All loans must have been given back. Never throws.
  ~RequesterUntypedImpl() override;

  /// A read condition that selects the replies of the given sample states to the request with that sequence number. The
  /// caller owns it, normally through a `ScopedReadCondition`. `BadParameterException` for a sequence number that no
  /// request can have (automatic, unknown, zero, maximum), `RuntimeException` when the reader cannot make it.
  DDSReadCondition* create_correlation_condition(unsigned int sample_states,
                                                 const DDS_SequenceNumber_t& sequence_number);

  /// Waits until the reader holds `min_count` replies to a request (true) or `max_wait` has passed (false); replies
  /// that are already there count, whether read or not. Replies that were counted are marked as read, as by
  /// `wait_for_samples`, and then wake nobody else: where several threads wait for the same request, one that counts a
  /// reply first can keep the others waiting until their time is over. `BadParameterException` for an identity that no
  /// request can have, `std::bad_alloc` when there is no wait set.
  bool wait_for_replies(const DDS_Duration_t& max_wait, int min_count, const DDS_SampleIdentity_t& related_request_id);

  /// Lends up to `max_samples` replies to a request, read or unread, taking them out of the reader if `take`. With none
  /// there, `data_count` is 0 and nothing is lent. Give back with `return_loan`.
  void get_reply_loaned(void*** received_data, int* data_count, DDS_SampleInfoSeq& info_seq, int max_samples,
                        const DDS_SampleIdentity_t& related_request_id, bool take);

 private:
  class ZEMTRA_HIDDEN RequesterTopicBuilder;

  std::unique_ptr<FastObjectPool<DDSWaitSet>> waitset_pool_;  // one wait set for each call that waits; never null
};

/// Exchanges two requesters as `EntityUntypedImpl::swap` does; each keeps its own pool of wait sets, which are idle and
/// interchangeable. Neither may be in use by another thread.
ZEMTRA_EXPORT void swap(RequesterUntypedImpl& a, RequesterUntypedImpl& b);

}  // namespace details
}  // namespace zemtra
