#pragma once

#include <dds/data_writer.hpp>

#include "support/seam.hpp"
#include "support/wrapping.hpp"

namespace support {

/// Passes everything on to a real writer; what the request-reply library calls may fail by plan.
class FaultyWriter final : public Wrapping<DDSDataWriter> {
 public:
  using Wrapping::Wrapping;

  DDSTopic* get_topic() override {
    return Seam::get().enter(Call::get_writer_topic, "writer.get_topic") ? nullptr : real_.get_topic();
  }
  DDS_ReturnCode_t get_qos(DDS_DataWriterQos& qos) override {
    if (const auto fault = Seam::get().enter(Call::get_writer_qos, "writer.get_qos")) { return *fault; }
    return real_.get_qos(qos);
  }

  PASS_ON_0(DDSPublisher*, get_publisher);
  PASS_ON_2(set_listener, DDSDataWriterListener*, DDS_StatusMask);
  PASS_ON_0(DDSDataWriterListener*, get_listener);
  PASS_ON_2(write_untyped, const void*, DDS_WriteParams_t&);
  PASS_ON_2(dispose_untyped, const void*, DDS_WriteParams_t&);
  PASS_ON_2(unregister_untyped, const void*, DDS_WriteParams_t&);
  DDS_InstanceHandle_t lookup_instance_untyped(const void* data) override {
    return real_.lookup_instance_untyped(data);
  }
  PASS_ON_1(get_offered_incompatible_qos_status, DDS_OfferedIncompatibleQosStatus&);
  PASS_ON_1(get_publication_matched_status, DDS_PublicationMatchedStatus&);
  PASS_ON_1(get_matched_subscriptions, DDS_InstanceHandleSeq&);
  PASS_ON_2(get_matched_subscription_data, DDS_SubscriptionBuiltinTopicData&, DDS_InstanceHandle_t);
  PASS_ON_0(DDSMatchCondition*, create_match_condition);
  PASS_ON_1(delete_match_condition, DDSMatchCondition*);
  PASS_ON_0(DDS_DataWriter*, procedural_handle);
};

}  // namespace support
