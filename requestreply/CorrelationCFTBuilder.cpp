#include <cstring>
#include <dds/domain_participant.hpp>
#include <requestreply/correlation_cft_builder.hpp>

#include "internal/check.hpp"

namespace zemtra {
namespace details {

namespace {

constexpr std::size_t kMaxTopicNameLength = 190;

/// Two lower-case digits for each octet, in the order of the octets.
std::string to_hex(const DDS_GUID_t& guid) {
  constexpr const char* digits = "0123456789abcdef";
  std::string text;
  text.reserve(2 * sizeof(guid.value));
  for (const DDS_Octet octet : guid.value) {
    text += digits[octet >> 4];
    text += digits[octet & 0xf];
  }
  return text;
}

}  // namespace

const char* CorrelationCFTBuilder::GUID_FIELD_NAME = "@related_sample_identity.writer_guid.value";

DDSContentFilteredTopic* CorrelationCFTBuilder::create_correlation_cft(DDSDomainParticipant* participant,
                                                                       DDSTopic* topic, const DDS_GUID_t& guid) {
  constexpr const char* method_name = "CorrelationCFTBuilder::create_correlation_cft";
  const std::string topic_name = topic->get_name();
  if (topic_name.size() > kMaxTopicNameLength) {
    fail(DDS_RETCODE_BAD_PARAMETER, method_name, DDS_LOG_BAD_PARAMETER_s, "topic name is too long: " + topic_name);
  }
  const std::string hex = to_hex(guid);
  const std::string name = topic_name + "_" + hex;
  const std::string filter = std::string(GUID_FIELD_NAME) + " = &hex(" + hex + ")";
  DDSContentFilteredTopic* created =
      participant->create_contentfilteredtopic(name.c_str(), topic, filter.c_str(), DDS_StringSeq());
  if (created == nullptr) {
    fail(DDS_RETCODE_ERROR, method_name, QVX_LOG_CREATE_s, "content-filtered topic for topic " + topic_name);
  }
  return created;
}

}  // namespace details
}  // namespace zemtra
