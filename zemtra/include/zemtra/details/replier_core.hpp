#pragma once

#include <requestreply/replier_untyped_impl.hpp>
#include <zemtra/details/service_match.hpp>
#include <zemtra/details/untyped_loan.hpp>

namespace zemtra {
namespace details {

/// What of a typed replier knows no type.
class ZEMTRA_TYPED_EXPORT ReplierCore final : public ReplierUntypedImpl {
 public:
  /// `PreconditionNotMetException` when a topic exists with another type.
  ReplierCore(const EntityParams& params, RegisterTypeFunction register_request_type,
              RegisterTypeFunction register_reply_type, int samples_size);

  // The QoS of the base, and in it what lets requesters know both for one replier's.

  void get_datawriter_qos(DDS_DataWriterQos& qos, const EntityParams& params, const char* topic_name,
                          const char* role) override;
  void get_datareader_qos(DDS_DataReaderQos& qos, const EntityParams& params, const char* topic_name,
                          const char* role) override;

  /// Waits for `min_count` requests and takes up to `max_count`; empty when the time is over before.
  UntypedLoan receive(const Duration& max_wait, int min_count, int max_count);
  /// Takes or reads at once.
  UntypedLoan lend(int max_count, bool take);
  /// The most of `wanted` that one receive gives.
  int most_at_once(int wanted) const {
    return max_samples_per_read == DDS_LENGTH_UNLIMITED || wanted < max_samples_per_read ? wanted
                                                                                         : max_samples_per_read;
  }

  ServiceMatch match() const { return {ServiceMatch::Role::replier, *get_datawriter(), *get_datareader()}; }
};

}  // namespace details
}  // namespace zemtra
