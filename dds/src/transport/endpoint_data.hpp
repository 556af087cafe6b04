#pragma once

#include <dds/builtin_topic_data.hpp>
#include <memory>
#include <new>
#include <utility>

namespace dds {

// What an endpoint tells the ends that it matches of itself. They share it, and it never changes.
using PublicationData = std::shared_ptr<const DDS_PublicationBuiltinTopicData>;
using SubscriptionData = std::shared_ptr<const DDS_SubscriptionBuiltinTopicData>;

/// The data of the writer with that handle. Throws `std::bad_alloc`.
PublicationData describe(DDS_InstanceHandle_t writer, DDS_InstanceHandle_t participant, const DDS_DataWriterQos& qos);
/// The data of the reader with that handle; `related_writer` is null when it wants more than one writer's answers.
/// Throws `std::bad_alloc`.
SubscriptionData describe(DDS_InstanceHandle_t reader, DDS_InstanceHandle_t participant, const DDS_DataReaderQos& qos,
                          const DDS_GUID_t* related_writer);

/// Makes `data` a deep copy; `DDS_RETCODE_OUT_OF_RESOURCES`, and `data` unchanged, when memory is exhausted.
template <class Data>
DDS_ReturnCode_t copy_out(Data& data, const Data& source) {
  try {
    Data copy(source);
    data = std::move(copy);
  } catch (const std::bad_alloc&) { return DDS_RETCODE_OUT_OF_RESOURCES; }
  return DDS_RETCODE_OK;
}

}  // namespace dds
