#include "transport/endpoint_data.hpp"

#include "util/entity_ids.hpp"

namespace dds {

namespace {

DDS_PropertyQosPolicy propagated(const DDS_PropertyQosPolicy& policy) {
  int count = 0;
  for (int i = 0; i < policy.value.length(); ++i) { count += policy.value[i].propagate ? 1 : 0; }
  DDS_PropertyQosPolicy result;
  if (!result.value.ensure_length(count, count)) { throw std::bad_alloc(); }
  int next = 0;
  for (int i = 0; i < policy.value.length(); ++i) {
    if (policy.value[i].propagate) { result.value[next++] = policy.value[i]; }
  }
  return result;
}

}  // namespace

PublicationData describe(DDS_InstanceHandle_t writer, DDS_InstanceHandle_t participant, const DDS_DataWriterQos& qos) {
  auto data = std::make_shared<DDS_PublicationBuiltinTopicData>();
  data->key = make_guid(writer);
  data->participant_key = make_guid(participant);
  data->property = propagated(qos.property);
  data->publication_name = qos.publication_name;
  return data;
}

SubscriptionData describe(DDS_InstanceHandle_t reader, DDS_InstanceHandle_t participant, const DDS_DataReaderQos& qos,
                          const DDS_GUID_t* related_writer) {
  auto data = std::make_shared<DDS_SubscriptionBuiltinTopicData>();
  data->key = make_guid(reader);
  data->participant_key = make_guid(participant);
  data->property = propagated(qos.property);
  data->subscription_name = qos.subscription_name;
  data->related_writer_guid = related_writer == nullptr ? DDS_GUID_UNKNOWN : *related_writer;
  return data;
}

}  // namespace dds
