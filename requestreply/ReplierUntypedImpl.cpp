#include <dds/builtin_types.hpp>
#include <requestreply/entity_params.hpp>
#include <requestreply/replier_untyped_impl.hpp>
#include <requestreply/sample_identity.hpp>
#include <requestreply/topic_naming.hpp>

#include "internal/check.hpp"
#include "internal/sequence_numbers.hpp"
#include "internal/topic_names.hpp"

namespace zemtra {
namespace details {

namespace {

DDS_SampleIdentity_t copy_of(const DDS_SampleIdentity_t& source) {
  DDS_SampleIdentity_t identity;
  DDS_SampleIdentity_t_initialize(&identity);
  DDS_GUID_copy(&identity.writer_guid, &source.writer_guid);
  identity.sequence_number = source.sequence_number;
  return identity;
}

}  // namespace

/// Writes to the reply topic and reads the request topic, or a content-filtered topic of that name.
class ReplierUntypedImpl::ReplierTopicBuilder final : public EntityUntypedImpl::TopicBuilder {
 public:
  explicit ReplierTopicBuilder(ReplierUntypedImpl* replier) : replier_(replier) {}

  DDSTopic* create_writer_topic(const EntityParams& params, const char* type_name) override {
    return DDSTopic::narrow(
        get_or_create_topic(replier_->participant, reply_topic_name(params).c_str(), type_name, false));
  }

  DDSTopicDescription* create_reader_topic(const EntityParams& params, const char* type_name) override {
    return get_or_create_topic(replier_->participant, request_topic_name(params).c_str(), type_name, true);
  }

 private:
  ReplierUntypedImpl* replier_;  // not owned
};

ReplierUntypedImpl::ReplierUntypedImpl() : EntityUntypedImpl(false) {}

ReplierUntypedImpl::~ReplierUntypedImpl() = default;

void ReplierUntypedImpl::initialize(const EntityParams& params, RegisterTypeFunction register_request_type,
                                    RegisterTypeFunction register_reply_type, int samples_size,
                                    DDSDataReaderListener* reader_listener, bool flag) {
  ReplierTopicBuilder topic_builder(this);
  EntityUntypedImpl::initialize(params, register_reply_type, register_request_type, samples_size, topic_builder,
                                reader_listener, flag, "Replier");
}

void ReplierUntypedImpl::configure_params_for_reply(DDS_WriteParams_t& params,
                                                    const DDS_SampleIdentity_t& related_request_id) {
  constexpr const char* method_name = "ReplierUntypedImpl::configure_params_for_reply";
  const DDS_GUID_t& guid = related_request_id.writer_guid;
  if (DDS_GUID_equals(&guid, &DDS_GUID_AUTO) || DDS_GUID_equals(&guid, &DDS_GUID_UNKNOWN)) {
    fail(DDS_RETCODE_BAD_PARAMETER, method_name, DDS_LOG_BAD_PARAMETER_s, "related request identity (writer guid)");
  }
  if (is_special(related_request_id.sequence_number)) {
    fail(DDS_RETCODE_BAD_PARAMETER, method_name, DDS_LOG_BAD_PARAMETER_s, "related request identity (sequence number)");
  }
  DDS_GUID_copy(&params.related_sample_identity.writer_guid, &guid);
  params.related_sample_identity.sequence_number = related_request_id.sequence_number;
}

void ReplierUntypedImpl::send_sample(const void* data, const DDS_SampleIdentity_t& related_request_id,
                                     DDS_WriteParams_t& params) {
  configure_params_for_reply(params, related_request_id);
  EntityUntypedImpl::send_sample(data, params);
}

DDS_SampleIdentity_t get_sample_identity_from_sample_info(const DDS_SampleInfo& info) {
  return copy_of(info.sample_identity);
}

DDS_SampleIdentity_t get_related_sample_identity_from_sample_info(const DDS_SampleInfo& info) {
  return copy_of(info.related_sample_identity);
}

DDSDynamicDataTypeSupport* dynamic_data_type_support_cast(DDSTypeSupport* type_support) {
  return dynamic_cast<DDSDynamicDataTypeSupport*>(type_support);
}

}  // namespace details
}  // namespace zemtra
