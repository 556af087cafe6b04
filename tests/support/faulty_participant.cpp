#include "support/faulty_participant.hpp"

namespace support {

DDSTopic* FaultyParticipant::create_topic(const char* topic_name, const char* type_name, const DDS_TopicQos& qos,
                                          void* listener, DDS_StatusMask mask) {
  const std::string who = std::string("participant.create_topic(") + topic_name + ", " + type_name + ")";
  if (Seam::get().enter(Call::create_topic, who)) { return nullptr; }
  DDSTopic* topic = real_.create_topic(topic_name, type_name, qos, listener, mask);
  if (topic != nullptr) { created_topics.emplace_back(topic_name); }
  return topic;
}

DDSContentFilteredTopic* FaultyParticipant::create_contentfilteredtopic(const char* name, DDSTopic* related_topic,
                                                                        const char* filter_expression,
                                                                        const DDS_StringSeq& expression_parameters) {
  if (Seam::get().enter(Call::create_contentfilteredtopic, "participant.create_contentfilteredtopic")) {
    return nullptr;
  }
  DDSContentFilteredTopic* topic =
      real_.create_contentfilteredtopic(name, related_topic, filter_expression, expression_parameters);
  if (topic != nullptr) { created_filtered_topics.emplace_back(name); }
  return topic;
}

DDS_ReturnCode_t FaultyParticipant::delete_contentfilteredtopic(DDSContentFilteredTopic* topic) {
  const auto fault = Seam::get().enter(Call::delete_contentfilteredtopic, "participant.delete_contentfilteredtopic");
  return fault ? *fault : real_.delete_contentfilteredtopic(topic);
}

DDS_ReturnCode_t FaultyParticipant::get_default_datawriter_qos(DDS_DataWriterQos& qos, const char* topic_name) {
  const std::string who = std::string("participant.get_default_datawriter_qos(") + topic_name + ")";
  const auto fault = Seam::get().enter(Call::get_default_datawriter_qos, who);
  return fault ? *fault : real_.get_default_datawriter_qos(qos, topic_name);
}

DDS_ReturnCode_t FaultyParticipant::get_default_datareader_qos(DDS_DataReaderQos& qos, const char* topic_name) {
  const std::string who = std::string("participant.get_default_datareader_qos(") + topic_name + ")";
  const auto fault = Seam::get().enter(Call::get_default_datareader_qos, who);
  return fault ? *fault : real_.get_default_datareader_qos(qos, topic_name);
}

DDS_ReturnCode_t FaultyParticipant::get_current_time(DDS_Time_t& time) {
  Seam& seam = Seam::get();
  if (const auto fault = seam.enter(Call::get_current_time, "participant.get_current_time")) { return *fault; }
  if (seam.times.empty()) { return real_.get_current_time(time); }
  time = seam.times.front();
  seam.times.pop_front();
  return DDS_RETCODE_OK;
}

}  // namespace support
