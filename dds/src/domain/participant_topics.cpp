// The types and topics of a participant.

#include <cstring>
#include <string_view>

#include "domain/participant_impl.hpp"
#include "log/log.hpp"
#include "qos/qos_check.hpp"
#include "types/same_table.hpp"

namespace dds {

namespace {

// What discovery protocols carry at the most.
constexpr std::size_t kLongestName = 255;

bool is_name(const char* name) { return name != nullptr && *name != '\0' && std::strlen(name) <= kLongestName; }

bool is_complete(const DDS_TypePlugin& type) {
  const bool aligned = type.alignment != 0 && (type.alignment & (type.alignment - 1)) == 0;
  return type.size != 0 && aligned && type.construct != nullptr && type.destroy != nullptr && type.copy != nullptr &&
         type.serialized_size != nullptr && type.serialize != nullptr && type.deserialize != nullptr &&
         (type.key == nullptr) == (type.copy_key == nullptr) &&
         (type.find_string_member == nullptr) == (type.string_member == nullptr);
}

}  // namespace

DDS_ReturnCode_t ParticipantImpl::register_type(const char* type_name, const DDS_TypePlugin& plugin) {
  if (!is_name(type_name) || !is_complete(plugin)) {
    DDS_LOG_FAILURE("register_type", DDS_LOG_BAD_PARAMETER_s, "type name or incomplete type plugin");
    return DDS_RETCODE_BAD_PARAMETER;
  }
  try {
    const MutexLock lock(mutex_);
    const auto [registered, added] = types_.emplace(type_name, plugin);
    if (added || same_table(registered->second, plugin)) { return DDS_RETCODE_OK; }
  } catch (const std::bad_alloc&) { return DDS_RETCODE_OUT_OF_RESOURCES; }
  DDS_LOG_FAILURE("register_type", QVX_LOG_PRECONDITION_FAILURE_s, "another type is registered as \"%s\"", type_name);
  return DDS_RETCODE_PRECONDITION_NOT_MET;
}

bool ParticipantImpl::name_is_free(std::string_view name) {
  return topics_.find(name) == topics_.end() && filtered_topics_.find(name) == filtered_topics_.end();
}

DDSTopic* ParticipantImpl::create_topic(const char* topic_name, const char* type_name, const DDS_TopicQos& qos,
                                        void* listener, DDS_StatusMask /*mask*/) {
  constexpr char context[] = "create_topic";
  TopicImpl* topic = nullptr;
  const char* failure = listener != nullptr ? "topics have no statuses to listen to" : nullptr;
  if (failure == nullptr && (!is_name(topic_name) || type_name == nullptr)) {
    failure = "null, empty or too long name";
  }
  if (failure == nullptr) {
    if (check(qos, context) != DDS_RETCODE_OK) { return nullptr; }
    failure = add_topic(topic_name, type_name, qos, topic);
  }
  if (failure != nullptr) {
    DDS_LOG_FAILURE(context, QVX_LOG_CREATION_FAILURE_s, "topic \"%s\": %s", topic_name == nullptr ? "" : topic_name,
                    failure);
  }
  return topic;
}

const char* ParticipantImpl::add_topic(const char* name, const char* type_name, const DDS_TopicQos& qos,
                                       TopicImpl*& topic) {
  try {
    const MutexLock lock(mutex_);
    const auto type = types_.find(std::string_view(type_name));
    if (type == types_.end()) { return "its type is not registered"; }
    if (!name_is_free(name)) { return "the name is taken"; }
    auto made = std::make_unique<TopicImpl>(*this, name, type_name, type->second,
                                            &qos == &DDS_TOPIC_QOS_DEFAULT ? topic_default_ : qos);
    TopicImpl* added = made.get();
    topics_.emplace(name, std::move(made));
    topic = added;
    return nullptr;
  } catch (const std::bad_alloc&) { return "out of memory"; }
}

ParticipantImpl::TopicMap::iterator ParticipantImpl::find(DDSTopicDescription* topic) {
  if (topic == nullptr) { return topics_.end(); }
  const auto found = topics_.find(std::string_view(topic->get_name()));
  return found != topics_.end() && found->second.get() == topic ? found : topics_.end();
}

ParticipantImpl::FilteredMap::iterator ParticipantImpl::find_filtered(DDSTopicDescription* topic) {
  if (topic == nullptr) { return filtered_topics_.end(); }
  const auto found = filtered_topics_.find(std::string_view(topic->get_name()));
  return found != filtered_topics_.end() && found->second.get() == topic ? found : filtered_topics_.end();
}

DDS_ReturnCode_t ParticipantImpl::delete_topic(DDSTopic* topic) {
  return DDS_LOG_REFUSAL("delete_topic", try_delete(topic), "not a topic of this participant, or in use");
}

DDS_ReturnCode_t ParticipantImpl::try_delete(DDSTopic* topic) {
  if (topic == nullptr) { return DDS_RETCODE_BAD_PARAMETER; }
  std::unique_ptr<TopicImpl> deleted;
  const MutexLock lock(mutex_);
  const auto found = find(topic);
  if (found == topics_.end() || found->second->users != 0) { return DDS_RETCODE_PRECONDITION_NOT_MET; }
  deleted = std::move(found->second);
  topics_.erase(found);
  return DDS_RETCODE_OK;
}

DDSContentFilteredTopic* ParticipantImpl::create_contentfilteredtopic(const char* name, DDSTopic* related_topic,
                                                                      const char* filter_expression,
                                                                      const DDS_StringSeq& expression_parameters) {
  constexpr char context[] = "create_contentfilteredtopic";
  TopicImpl* topic = hold(related_topic);
  if (topic == nullptr || !is_name(name)) {
    if (topic != nullptr) { release(*topic); }
    DDS_LOG_FAILURE(context, DDS_LOG_BAD_PARAMETER_s, "name, or a topic that is not one of this participant");
    return nullptr;
  }
  const char* failure = nullptr;
  try {
    auto filter = Filter::compile(filter_expression, expression_parameters, topic->type(), context);
    if (filter != nullptr) {
      auto made = std::make_unique<ContentFilteredTopicImpl>(name, *topic, filter_expression, expression_parameters,
                                                             std::move(filter));
      DDSContentFilteredTopic* added = made.get();
      const MutexLock lock(mutex_);
      if (name_is_free(name)) {
        filtered_topics_.emplace(name, std::move(made));
        return added;
      }
      failure = "the name is taken";
    }
  } catch (const std::bad_alloc&) { failure = "out of memory"; }
  release(*topic);
  if (failure != nullptr) {
    DDS_LOG_FAILURE(context, QVX_LOG_CREATION_FAILURE_s, "content-filtered topic \"%s\": %s", name, failure);
  }
  return nullptr;
}

DDS_ReturnCode_t ParticipantImpl::delete_contentfilteredtopic(DDSContentFilteredTopic* topic) {
  return DDS_LOG_REFUSAL("delete_contentfilteredtopic", try_delete(topic),
                         "not a content-filtered topic of this participant, or in use");
}

DDS_ReturnCode_t ParticipantImpl::try_delete(DDSContentFilteredTopic* topic) {
  if (topic == nullptr) { return DDS_RETCODE_BAD_PARAMETER; }
  std::unique_ptr<ContentFilteredTopicImpl> deleted;
  const MutexLock lock(mutex_);
  const auto found = find_filtered(topic);
  if (found == filtered_topics_.end() || found->second->users != 0) { return DDS_RETCODE_PRECONDITION_NOT_MET; }
  deleted = std::move(found->second);
  filtered_topics_.erase(found);
  --deleted->topic().users;
  return DDS_RETCODE_OK;
}

DDSTopicDescription* ParticipantImpl::lookup_topicdescription(const char* name) {
  if (name == nullptr) { return nullptr; }
  const MutexLock lock(mutex_);
  const auto topic = topics_.find(std::string_view(name));
  if (topic != topics_.end()) { return topic->second.get(); }
  const auto filtered = filtered_topics_.find(std::string_view(name));
  return filtered == filtered_topics_.end() ? nullptr : filtered->second.get();
}

TopicImpl* ParticipantImpl::hold(DDSTopic* topic) {
  const MutexLock lock(mutex_);
  const auto found = find(topic);
  if (found == topics_.end()) { return nullptr; }
  ++found->second->users;
  return found->second.get();
}

ReaderTopic ParticipantImpl::hold(DDSTopicDescription* description) {
  const MutexLock lock(mutex_);
  const auto topic = find(description);
  if (topic != topics_.end()) {
    ++topic->second->users;
    return {topic->second.get(), nullptr};
  }
  const auto filtered = find_filtered(description);
  if (filtered == filtered_topics_.end()) { return {}; }
  ++filtered->second->users;
  return {&filtered->second->topic(), filtered->second.get()};
}

void ParticipantImpl::release(TopicImpl& topic) {
  const MutexLock lock(mutex_);
  --topic.users;
}

void ParticipantImpl::release(const ReaderTopic& topic) {
  const MutexLock lock(mutex_);
  --(topic.filtered != nullptr ? topic.filtered->users : topic.topic->users);
}

}  // namespace dds
