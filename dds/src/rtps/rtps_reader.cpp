#include "rtps/endpoints.hpp"
#include "rtps/hub.hpp"

namespace dds::rtps {

namespace {

bool is_bounded(const DDS_ResourceLimitsQosPolicy& limits) {
  return limits.max_samples != DDS_LENGTH_UNLIMITED || limits.max_instances != DDS_LENGTH_UNLIMITED ||
         limits.max_samples_per_instance != DDS_LENGTH_UNLIMITED;
}

}  // namespace

RtpsReader::RtpsReader(Hub& hub, const TopicKey& key, ReaderCore& sink, const Filter* filter)
    : hub_(hub), sink_(sink), filter_(filter) {
  endpoint_.topic_name = key.topic_name;
  endpoint_.type_name = key.type_name;
  endpoint_.reliable = sink.qos().reliability.kind == DDS_RELIABLE_RELIABILITY_QOS;
  endpoint_.bounded = is_bounded(sink.qos().resource_limits);
  endpoint_.subscription = sink.data();
  sink_.set_space_listener(&hub);
}

RtpsReader::~RtpsReader() {
  hub_.remove(*this);
  sink_.set_space_listener(nullptr);
}

void RtpsReader::announce() { hub_.add(*this); }

}  // namespace dds::rtps
