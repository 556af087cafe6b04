#include "writer/data_writer_impl.hpp"

#include <dds/builtin_types.hpp>

#include "domain/topic_impl.hpp"
#include "types/builtin_plugins.hpp"

namespace dds {

template <class Api>
DataWriterImpl<Api>::DataWriterImpl(DDSPublisher& publisher, TopicImpl& topic, const DDS_DataWriterQos& qos)
    : publisher_(publisher),
      topic_(topic),
      core_(*this, topic.type(), topic.get_participant()->get_instance_handle(), qos) {}

template <class Api>
DDSTopic* DataWriterImpl<Api>::get_topic() {
  return &topic_;
}

std::unique_ptr<WriterEntity> make_writer(DDSPublisher& publisher, TopicImpl& topic, const DDS_DataWriterQos& qos) {
  switch (builtin_kind(topic.type())) {
    case BuiltinKind::string:
      return std::make_unique<DataWriterImpl<DDSStringDataWriter>>(publisher, topic, qos);
    case BuiltinKind::keyed_string:
      return std::make_unique<DataWriterImpl<DDSKeyedStringDataWriter>>(publisher, topic, qos);
    case BuiltinKind::octets:
      return std::make_unique<DataWriterImpl<DDSOctetsDataWriter>>(publisher, topic, qos);
    case BuiltinKind::keyed_octets:
      return std::make_unique<DataWriterImpl<DDSKeyedOctetsDataWriter>>(publisher, topic, qos);
    case BuiltinKind::none:
      break;
  }
  return std::make_unique<DataWriterImpl<DDSDataWriter>>(publisher, topic, qos);
}

}  // namespace dds
