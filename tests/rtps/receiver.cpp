#include "rtps/receiver.hpp"

#include <chrono>
#include <cstring>
#include <stdexcept>
#include <thread>

namespace rtps_test {

using namespace dds::rtps;

DDS_GUID_t guid(unsigned char last) {
  DDS_GUID_t guid;
  guid.value[0] = 0xf0;
  guid.value[15] = last;
  return guid;
}

Frame make_frame(Prefix prefix, const Frame& payload) {
  prefix.payload_size = static_cast<std::uint32_t>(payload.size());
  Frame frame(kPrefixSize);
  encode(prefix, frame.data());
  frame.insert(frame.end(), payload.begin(), payload.end());
  return frame;
}

Frame string_sample(const DDS_GUID_t& writer, std::uint32_t number, const std::string& text) {
  Frame payload{0, 1, 0, 0, static_cast<unsigned char>(text.size() + 1), 0, 0, 0};
  payload.insert(payload.end(), text.begin(), text.end());
  payload.push_back(0);
  Prefix prefix;
  prefix.kind = FrameKind::sample;
  prefix.identity = {writer, {0, number}};
  prefix.source_time = {1, 0};
  return make_frame(prefix, payload);
}

Receiver::Receiver()
    : participant_(DDSDomainParticipantFactory::get_instance()->create_participant(0, DDS_PARTICIPANT_QOS_DEFAULT,
                                                                                   nullptr, DDS_STATUS_MASK_NONE)) {
  std::string error;
  hub_ = Hub::open(EngineConfig(), error);
  if (participant_ == nullptr || hub_ == nullptr) { throw std::runtime_error("no participant: " + error); }
  add_reader<DDSStringTypeSupport>("s", DDS_LENGTH_UNLIMITED);
  add_reader<DDSKeyedStringTypeSupport>("ks", DDS_LENGTH_UNLIMITED);
  add_reader<DDSOctetsTypeSupport>("o", 4);
  add_reader<DDSKeyedOctetsTypeSupport>("ko", DDS_LENGTH_UNLIMITED);
  // The hub makes its side of the sender in its own time, once.
  while (!hub_->has_peer(guid(0))) {
    ++session_;
    send_hello();
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
}

Receiver::~Receiver() {
  endpoints_.clear();
  hub_.reset();
  participant_->delete_contained_entities();
  DDSDomainParticipantFactory::get_instance()->delete_participant(participant_);
}

template <class TypeSupport>
void Receiver::add_reader(const char* topic_name, DDS_Long max_samples) {
  TypeSupport::register_type(participant_, nullptr);
  DDSTopic* topic = participant_->create_topic(topic_name, TypeSupport::get_type_name(), DDS_TOPIC_QOS_DEFAULT, nullptr,
                                               DDS_STATUS_MASK_NONE);
  DDS_DataReaderQos qos;
  qos.reliability.kind = DDS_RELIABLE_RELIABILITY_QOS;
  qos.history.kind = DDS_KEEP_ALL_HISTORY_QOS;
  qos.resource_limits.max_samples = max_samples;
  readers_.push_back(participant_->create_datareader(topic, qos, nullptr, DDS_STATUS_MASK_NONE));
  topics_.emplace_back(topic_name, TypeSupport::get_type_name());
  auto& core = static_cast<dds::ReaderCore&>(*readers_.back()->procedural_handle());
  const dds::TopicKey key{0, topic_name, TypeSupport::get_type_name()};
  endpoints_.push_back(std::make_unique<RtpsReader>(*hub_, key, core, nullptr));
  endpoints_.back()->announce();
}

void Receiver::send_hello() {
  Frame payload(kHelloSize);
  encode(Hello{session_, hub_->session_with(guid(0))}, payload.data());
  Prefix prefix;
  prefix.identity.writer_guid = guid(0);
  receive(make_frame(prefix, payload));
}

void Receiver::begin_session() {
  ++session_;
  // The first may make the hub begin anew as well, the second has heard of that.
  send_hello();
  send_hello();
  unsigned char last = 0;
  for (const auto& [topic, type] : topics_) {
    Endpoint endpoint;
    endpoint.topic_name = topic;
    endpoint.type_name = type;
    endpoint.reliable = true;
    endpoint.publication = std::make_shared<DDS_PublicationBuiltinTopicData>();
    Prefix prefix;
    prefix.kind = FrameKind::writer;
    prefix.identity.writer_guid = guid(++last);
    receive(make_frame(prefix, encode(endpoint)));
  }
}

std::vector<std::string> Receiver::take_strings() {
  std::vector<std::string> strings;
  for (DDSDataReader* reader : readers_) {
    void** data = nullptr;
    int count = 0;
    DDS_SampleInfoSeq infos;
    while (reader->read_or_take_untyped(&data, &count, infos, DDS_LENGTH_UNLIMITED, DDS_ANY_SAMPLE_STATE,
                                        DDS_ANY_VIEW_STATE, DDS_ANY_INSTANCE_STATE, nullptr, true) == DDS_RETCODE_OK) {
      for (int i = 0; reader == readers_.front() && i < count; ++i) {
        if (infos[i].valid_data) { strings.emplace_back(*static_cast<char* const*>(data[i])); }
      }
      taken_ += count;
      if (reader->return_loan_untyped(data, infos) != DDS_RETCODE_OK) { throw std::runtime_error("a loan is refused"); }
    }
  }
  return strings;
}

}  // namespace rtps_test
