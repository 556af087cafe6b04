#include <dds/domain_participant.hpp>
#include <requestreply/topic_naming.hpp>

#include "internal/check.hpp"
#include "internal/topic_names.hpp"

namespace zemtra {
namespace details {

namespace {

constexpr const char* kGetOrCreateTopic = "zemtra::details::get_or_create_topic";

}  // namespace

std::string create_request_topic_name_from_service_name(std::string service_name) {
  return std::move(service_name) + "Request";
}

std::string create_reply_topic_name_from_service_name(std::string service_name) {
  return std::move(service_name) + "Reply";
}

std::string request_topic_name(const EntityParams& params) {
  return params.request_topic_name().empty() ? create_request_topic_name_from_service_name(params.service_name())
                                             : params.request_topic_name();
}

std::string reply_topic_name(const EntityParams& params) {
  return params.reply_topic_name().empty() ? create_reply_topic_name_from_service_name(params.service_name())
                                           : params.reply_topic_name();
}

DDSTopicDescription* get_or_create_topic(DDSDomainParticipant* participant, const char* topic_name,
                                         const char* type_name, bool allow_cft) {
  DDSTopicDescription* existing = participant->lookup_topicdescription(topic_name);
  if (existing == nullptr) {
    DDSTopic* created =
        participant->create_topic(topic_name, type_name, DDS_TOPIC_QOS_DEFAULT, nullptr, DDS_STATUS_MASK_NONE);
    if (created == nullptr) {
      fail(DDS_RETCODE_ERROR, kGetOrCreateTopic, QVX_LOG_CREATION_FAILURE_s, std::string("topic ") + topic_name);
    }
    return created;
  }
  if (DDSTopic::narrow(existing) == nullptr && !allow_cft) {
    fail(DDS_RETCODE_PRECONDITION_NOT_MET, kGetOrCreateTopic, QVX_LOG_PRECONDITION_FAILURE_s,
         std::string("a content-filtered topic with the name already exists (") + topic_name + ")");
  }
  return existing;
}

}  // namespace details
}  // namespace zemtra
