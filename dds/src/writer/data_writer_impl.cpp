#include "writer/data_writer_impl.hpp"

#include <dds/builtin_types.hpp>

#include "domain/topic_impl.hpp"
#include "types/builtin_plugins.hpp"

namespace dds {

template <class Api>
DDSTopic* DataWriterImpl<Api>::get_topic() {
  return &topic_;
}

std::unique_ptr<WriterEntity> make_writer(DDSPublisher& publisher, TopicImpl& topic, const DDS_DataWriterQos& qos) {
  const DDS_TypePlugin& type = topic.type();
  switch (builtin_kind(type)) {
    case BuiltinKind::string:
      return std::make_unique<DataWriterImpl<DDSStringDataWriter>>(publisher, topic, type, qos);
    case BuiltinKind::keyed_string:
      return std::make_unique<DataWriterImpl<DDSKeyedStringDataWriter>>(publisher, topic, type, qos);
    case BuiltinKind::octets:
      return std::make_unique<DataWriterImpl<DDSOctetsDataWriter>>(publisher, topic, type, qos);
    case BuiltinKind::keyed_octets:
      return std::make_unique<DataWriterImpl<DDSKeyedOctetsDataWriter>>(publisher, topic, type, qos);
    case BuiltinKind::none:
      break;
  }
  return std::make_unique<DataWriterImpl<DDSDataWriter>>(publisher, topic, type, qos);
}

}  // namespace dds
