#include "reader/data_reader_impl.hpp"

#include <dds/builtin_types.hpp>

#include "domain/topic_impl.hpp"
#include "types/builtin_plugins.hpp"

namespace dds {

template <class Api>
DDSTopicDescription* DataReaderImpl<Api>::get_topicdescription() {
  if (topic_.filtered != nullptr) { return topic_.filtered; }
  return topic_.topic;
}

std::unique_ptr<ReaderEntity> make_reader(DDSSubscriber& subscriber, const ReaderTopic& topic,
                                          const DDS_DataReaderQos& qos) {
  const DDS_TypePlugin& type = topic.topic->type();
  switch (builtin_kind(type)) {
    case BuiltinKind::string:
      return std::make_unique<DataReaderImpl<DDSStringDataReader>>(subscriber, topic, type, qos);
    case BuiltinKind::keyed_string:
      return std::make_unique<DataReaderImpl<DDSKeyedStringDataReader>>(subscriber, topic, type, qos);
    case BuiltinKind::octets:
      return std::make_unique<DataReaderImpl<DDSOctetsDataReader>>(subscriber, topic, type, qos);
    case BuiltinKind::keyed_octets:
      return std::make_unique<DataReaderImpl<DDSKeyedOctetsDataReader>>(subscriber, topic, type, qos);
    case BuiltinKind::none:
      break;
  }
  return std::make_unique<DataReaderImpl<DDSDataReader>>(subscriber, topic, type, qos);
}

}  // namespace dds
