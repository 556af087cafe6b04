#pragma once

#include <dds/identity.hpp>
#include <requestreply/export.hpp>

class DDSContentFilteredTopic;
class DDSDomainParticipant;
class DDSTopic;

namespace zemtra {
namespace details {

/// Makes the content-filtered topics through which requesters see only the replies to their own requests.
class ZEMTRA_EXPORT CorrelationCFTBuilder {
 public:
  /// "@related_sample_identity.writer_guid.value", the meta-data field that the filter compares. Not to be assigned to.
  static const char* GUID_FIELD_NAME;

  /// A content-filtered topic over `topic` that admits exactly the samples that are related to a sample of the writer
  /// with that GUID. It is called like the topic, followed by "_" and the GUID as 32 lower-case hexadecimal digits. The
  /// caller owns the result, which is never null. `BadParameterException` for a topic name of more than 190 characters,
  /// `RuntimeException` when the participant refuses, for one because it has a description of that name.
  DDSContentFilteredTopic* create_correlation_cft(DDSDomainParticipant* participant, DDSTopic* topic,
                                                  const DDS_GUID_t& guid);
};

}  // namespace details
}  // namespace zemtra
