#pragma once

#include <string>

#include <requestreply/export.hpp>

class DDSDomainParticipant;
class DDSTopicDescription;

namespace zemtra {
namespace details {

/// The service name followed by "Request"; nothing is trimmed, checked or escaped.
ZEMTRA_EXPORT std::string create_request_topic_name_from_service_name(std::string service_name);

/// The service name followed by "Reply"; nothing is trimmed, checked or escaped.
ZEMTRA_EXPORT std::string create_reply_topic_name_from_service_name(std::string service_name);

/// The participant's topic description of that name or, when there is none, a new topic with the participant's default
/// topic QoS. The result belongs to the participant and is never null. A topic that exists is returned whatever its
/// type. A description of another kind (a content-filtered topic) is returned only if `allow_cft`; otherwise
/// `PreconditionNotMetException`. `RuntimeException` when the topic cannot be created. Looking and creating are two
/// steps: two threads that meet a new name at the same time may see one of them fail.
ZEMTRA_EXPORT DDSTopicDescription* get_or_create_topic(DDSDomainParticipant* participant, const char* topic_name,
                                                       const char* type_name, bool allow_cft);

}  // namespace details
}  // namespace zemtra
