#pragma once

#include <requestreply/entity_untyped_impl.hpp>

namespace zemtra {
namespace details {

/// Receives requests and answers them. Receive with the operations of `EntityUntypedImpl`, read each request's identity
/// with `get_sample_identity_from_sample_info`, and send any number of replies to it.
class ZEMTRA_EXPORT ReplierUntypedImpl : public EntityUntypedImpl {
 public:
  /// Creates no middleware object but the wait set.
  ReplierUntypedImpl();
  /// All loans must have been given back. Never throws.
  ~ReplierUntypedImpl() override;

  /// As `EntityUntypedImpl::initialize`, with the type functions in the order in which a requester has them: first the
  /// request type, which a replier reads, then the reply type, which it writes. A content-filtered topic that the
  /// participant holds under the request topic's name is used for the reader, so that only what it admits arrives.
  void initialize(const EntityParams& params, RegisterTypeFunction register_request_type,
                  RegisterTypeFunction register_reply_type, int samples_size, DDSDataReaderListener* reader_listener,
                  bool flag);

  /// Makes `related_request_id` the related identity in `params` and changes nothing else. `BadParameterException`, and
  /// `params` unchanged, for an identity that no request can have: a GUID that is automatic or unknown, or a sequence
  /// number that is automatic, unknown, zero or the maximum.
  static void configure_params_for_reply(DDS_WriteParams_t& params, const DDS_SampleIdentity_t& related_request_id);

  /// Writes one reply to a request: `configure_params_for_reply`, then `EntityUntypedImpl::send_sample`. `params` keep
  /// the related identity.
  void send_sample(const void* data, const DDS_SampleIdentity_t& related_request_id, DDS_WriteParams_t& params);

 private:
  class ZEMTRA_HIDDEN ReplierTopicBuilder;
};

}  // namespace details
}  // namespace zemtra
