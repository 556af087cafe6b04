#include "support/faulty_participant.hpp"

#include <algorithm>

namespace support {

namespace {

template <class Wrappers, class Entity>
auto find(Wrappers& wrappers, Entity* entity) {
  return std::find_if(wrappers.begin(), wrappers.end(),
                      [entity](const auto& wrapper) { return wrapper.get() == entity; });
}

template <class Wrappers, class Entity>
void erase(Wrappers& wrappers, Entity* entity) {
  const auto found = find(wrappers, entity);
  if (found != wrappers.end()) { wrappers.erase(found); }
}

}  // namespace

DDSDataWriter* FaultyEntities::wrap(DDSDataWriter* real) {
  if (real == nullptr) { return nullptr; }
  writers_.push_back(std::make_unique<FaultyWriter>(*real));
  return writers_.back().get();
}

DDSDataReader* FaultyEntities::wrap(DDSDataReader* real) {
  if (real == nullptr) { return nullptr; }
  readers_.push_back(std::make_unique<FaultyReader>(*real));
  return readers_.back().get();
}

DDSDataWriter* FaultyEntities::unwrap(DDSDataWriter* writer) const {
  const auto found = find(writers_, writer);
  return found == writers_.end() ? writer : (*found)->real();
}

DDSDataReader* FaultyEntities::unwrap(DDSDataReader* reader) const {
  const auto found = find(readers_, reader);
  return found == readers_.end() ? reader : (*found)->real();
}

void FaultyEntities::forget(DDSDataWriter* writer) { erase(writers_, writer); }

void FaultyEntities::forget(DDSDataReader* reader) { erase(readers_, reader); }

DDSDataWriter* FaultyPublisher::create_datawriter(DDSTopic* topic, const DDS_DataWriterQos& qos,
                                                  DDSDataWriterListener* listener, DDS_StatusMask mask) {
  if (Seam::get().enter(Call::create_datawriter, "publisher.create_datawriter")) { return nullptr; }
  return entities_.wrap(real_.create_datawriter(topic, qos, listener, mask));
}

DDS_ReturnCode_t FaultyPublisher::delete_datawriter(DDSDataWriter* writer) {
  if (const auto fault = Seam::get().enter(Call::delete_datawriter, "publisher.delete_datawriter")) { return *fault; }
  const DDS_ReturnCode_t retcode = real_.delete_datawriter(entities_.unwrap(writer));
  if (retcode == DDS_RETCODE_OK) { entities_.forget(writer); }
  return retcode;
}

DDSDataReader* FaultySubscriber::create_datareader(DDSTopicDescription* topic, const DDS_DataReaderQos& qos,
                                                   DDSDataReaderListener* listener, DDS_StatusMask mask) {
  if (Seam::get().enter(Call::create_datareader, "subscriber.create_datareader")) { return nullptr; }
  return entities_.wrap(real_.create_datareader(topic, qos, listener, mask));
}

DDS_ReturnCode_t FaultySubscriber::delete_datareader(DDSDataReader* reader) {
  if (const auto fault = Seam::get().enter(Call::delete_datareader, "subscriber.delete_datareader")) { return *fault; }
  const DDS_ReturnCode_t retcode = real_.delete_datareader(entities_.unwrap(reader));
  if (retcode == DDS_RETCODE_OK) { entities_.forget(reader); }
  return retcode;
}

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

DDSDataWriter* FaultyParticipant::create_datawriter(DDSTopic* topic, const DDS_DataWriterQos& qos,
                                                    DDSDataWriterListener* listener, DDS_StatusMask mask) {
  if (Seam::get().enter(Call::create_datawriter, "participant.create_datawriter")) { return nullptr; }
  return entities_.wrap(real_.create_datawriter(topic, qos, listener, mask));
}

DDS_ReturnCode_t FaultyParticipant::delete_datawriter(DDSDataWriter* writer) {
  if (const auto fault = Seam::get().enter(Call::delete_datawriter, "participant.delete_datawriter")) { return *fault; }
  const DDS_ReturnCode_t retcode = real_.delete_datawriter(entities_.unwrap(writer));
  if (retcode == DDS_RETCODE_OK) { entities_.forget(writer); }
  return retcode;
}

DDSDataReader* FaultyParticipant::create_datareader(DDSTopicDescription* topic, const DDS_DataReaderQos& qos,
                                                    DDSDataReaderListener* listener, DDS_StatusMask mask) {
  reader_listeners.emplace_back(listener, mask);
  if (Seam::get().enter(Call::create_datareader, "participant.create_datareader")) { return nullptr; }
  return entities_.wrap(real_.create_datareader(topic, qos, listener, mask));
}

DDS_ReturnCode_t FaultyParticipant::delete_datareader(DDSDataReader* reader) {
  if (const auto fault = Seam::get().enter(Call::delete_datareader, "participant.delete_datareader")) { return *fault; }
  const DDS_ReturnCode_t retcode = real_.delete_datareader(entities_.unwrap(reader));
  if (retcode == DDS_RETCODE_OK) { entities_.forget(reader); }
  return retcode;
}

DDSPublisher* FaultyParticipant::create_publisher(const DDS_PublisherQos& qos, void* listener, DDS_StatusMask mask) {
  DDSPublisher* real = real_.create_publisher(qos, listener, mask);
  if (real == nullptr) { return nullptr; }
  publishers_.push_back(std::make_unique<FaultyPublisher>(*real, *this, entities_));
  return publishers_.back().get();
}

DDS_ReturnCode_t FaultyParticipant::delete_publisher(DDSPublisher* publisher) {
  const auto found = find(publishers_, publisher);
  if (found == publishers_.end()) { return real_.delete_publisher(publisher); }
  const DDS_ReturnCode_t retcode = real_.delete_publisher((*found)->real());
  if (retcode == DDS_RETCODE_OK) { publishers_.erase(found); }
  return retcode;
}

DDSSubscriber* FaultyParticipant::create_subscriber(const DDS_SubscriberQos& qos, void* listener, DDS_StatusMask mask) {
  DDSSubscriber* real = real_.create_subscriber(qos, listener, mask);
  if (real == nullptr) { return nullptr; }
  subscribers_.push_back(std::make_unique<FaultySubscriber>(*real, *this, entities_));
  return subscribers_.back().get();
}

DDS_ReturnCode_t FaultyParticipant::delete_subscriber(DDSSubscriber* subscriber) {
  const auto found = find(subscribers_, subscriber);
  if (found == subscribers_.end()) { return real_.delete_subscriber(subscriber); }
  const DDS_ReturnCode_t retcode = real_.delete_subscriber((*found)->real());
  if (retcode == DDS_RETCODE_OK) { subscribers_.erase(found); }
  return retcode;
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
