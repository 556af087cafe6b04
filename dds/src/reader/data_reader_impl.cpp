#include "reader/data_reader_impl.hpp"

#include <dds/builtin_types.hpp>

#include "domain/topic_impl.hpp"
#include "types/builtin_plugins.hpp"

namespace dds {

namespace {

const DDS_GUID_t* related_writer(const ReaderTopic& topic) {
  return topic.filtered == nullptr ? nullptr : topic.filtered->filter()->related_writer();
}

}  // namespace

template <class Api>
DataReaderImpl<Api>::DataReaderImpl(DDSSubscriber& subscriber, const ReaderTopic& topic, const DDS_DataReaderQos& qos)
    : subscriber_(subscriber),
      topic_(topic),
      core_(*this, topic.topic->type(), topic.topic->get_participant()->get_instance_handle(), related_writer(topic),
            qos) {}

template <class Api>
DDSTopicDescription* DataReaderImpl<Api>::get_topicdescription() {
  if (topic_.filtered != nullptr) { return topic_.filtered; }
  return topic_.topic;
}

std::unique_ptr<ReaderEntity> make_reader(DDSSubscriber& subscriber, const ReaderTopic& topic,
                                          const DDS_DataReaderQos& qos) {
  switch (builtin_kind(topic.topic->type())) {
    case BuiltinKind::string:
      return std::make_unique<DataReaderImpl<DDSStringDataReader>>(subscriber, topic, qos);
    case BuiltinKind::keyed_string:
      return std::make_unique<DataReaderImpl<DDSKeyedStringDataReader>>(subscriber, topic, qos);
    case BuiltinKind::octets:
      return std::make_unique<DataReaderImpl<DDSOctetsDataReader>>(subscriber, topic, qos);
    case BuiltinKind::keyed_octets:
      return std::make_unique<DataReaderImpl<DDSKeyedOctetsDataReader>>(subscriber, topic, qos);
    case BuiltinKind::none:
      break;
  }
  return std::make_unique<DataReaderImpl<DDSDataReader>>(subscriber, topic, qos);
}

}  // namespace dds
