#include <dds/data_reader.hpp>
#include <dds/data_writer.hpp>
#include <dds/topic.hpp>
#include <requestreply/entity_untyped_impl.hpp>
#include <requestreply/log_and_rethrow.hpp>

#include "internal/log.hpp"

namespace zemtra {
namespace details {

namespace {

/// Null when there is no writer, topic or name.
const char* topic_name_of(DDSDataWriter* writer) {
  DDSTopic* topic = writer == nullptr ? nullptr : writer->get_topic();
  return topic == nullptr ? nullptr : topic->get_name();
}

/// The name of the topic that the reader reads, also through a filter; null when there is none.
const char* topic_name_of(DDSDataReader* reader) {
  DDSTopicDescription* description = reader == nullptr ? nullptr : reader->get_topicdescription();
  if (description == nullptr) { return nullptr; }
  DDSContentFilteredTopic* filtered = DDSContentFilteredTopic::narrow(description);
  if (filtered == nullptr) { return description->get_name(); }
  DDSTopic* related = filtered->get_related_topic();
  return related == nullptr ? nullptr : related->get_name();
}

}  // namespace

std::string log_and_rethrow_conditional(DDSDataWriter* writer, DDSDataReader* reader, const Rethrowable& ex,
                                        const char* class_name, const char* method_name, bool rethrow_now) {
  const char* writer_topic_name = topic_name_of(writer);
  const char* reader_topic_name = topic_name_of(reader);
  std::string text = class_name;
  if (writer_topic_name != nullptr && reader_topic_name != nullptr) {
    text.append("(").append(writer_topic_name).append(", ").append(reader_topic_name).append(")");
  }
  text.append("::").append(method_name);
  log(DDS_LOG_LEVEL_FAILURE, text.c_str(), QVX_LOG_ANY_FAILURE_s, "failed (see previous errors)");
  text.append(" failure");
  if (rethrow_now) { ex.rethrow(text); }
  return text;
}

void EntityUntypedImpl::log_and_rethrow(const Rethrowable& ex, const char* class_name, const char* method_name) const {
  log_and_rethrow_conditional(get_datawriter(), get_datareader(), ex, class_name, method_name, true);
}

}  // namespace details
}  // namespace zemtra
