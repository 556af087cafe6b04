// What comes in from other participants: frames of any octets, among them samples of the built-in types. An input is a
// sequence of frames, each after two octets of length; a participant that has said hello sends them.

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dds/dds.hpp>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "allocated.hpp"
#include "rtps/hub.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* octets, std::size_t size);

namespace {

using namespace dds::rtps;

void expect(bool good, const char* what) {
  if (good) { return; }
  std::fprintf(stderr, "FAILED: %s\n", what);
  std::abort();
}

// An octet of an announcement becomes at the most half a property; a frame makes an endpoint with its matches.
constexpr std::size_t kPerOctet = 64;
constexpr std::size_t kPerFrame = 16384;
constexpr std::uint64_t kChannel = 1;  // stands for the engine's handle of the sender's writer

DDS_GUID_t guid(unsigned char last) {
  DDS_GUID_t guid;
  guid.value[0] = 0xf0;
  guid.value[15] = last;
  return guid;
}

/// A participant with a reader of each built-in type, of which one is bounded, behind a hub without neighbours.
class Receiver {
 public:
  Receiver() {
    DDSLog_set_sink([](void*, int, const char*, int, const char*, const QVXLogMessage*, const char*) {}, nullptr);
    participant_ = DDSDomainParticipantFactory::get_instance()->create_participant(0, DDS_PARTICIPANT_QOS_DEFAULT,
                                                                                   nullptr, DDS_STATUS_MASK_NONE);
    EngineConfig config;
    std::string error;
    hub_ = Hub::open(config, error);
    expect(participant_ != nullptr && hub_ != nullptr, "a participant");
    add<DDSStringTypeSupport>("s", 4);
    add<DDSKeyedStringTypeSupport>("ks", DDS_LENGTH_UNLIMITED);
    add<DDSOctetsTypeSupport>("o", DDS_LENGTH_UNLIMITED);
    add<DDSKeyedOctetsTypeSupport>("ko", DDS_LENGTH_UNLIMITED);
  }

  /// Lets a new session begin, with writers of all types.
  void begin() {
    ++session_;
    // The hub makes its side of a participant in its own time, once.
    do {
      send_hello();
      if (session_ == 1) { std::this_thread::sleep_for(std::chrono::milliseconds(100)); }
    } while (session_ == 1 && ++greetings_ < 5);
    unsigned char last = 1;
    for (const auto& [topic, type] : topics_) { announce(guid(last++), topic, type); }
  }
  void receive(const unsigned char* octets, std::size_t size) {
    const std::size_t before = fuzz::allocated();
    hub_->on_packet(kChannel, octets, size);
    expect(fuzz::allocated() - before <= size * kPerOctet + kPerFrame, "receiving allocates little");
    hub_->on_presence(kChannel, octets, size);
  }
  void empty() {
    for (DDSDataReader* reader : readers_) {
      void** data = nullptr;
      int count = 0;
      DDS_SampleInfoSeq infos;
      while (reader->read_or_take_untyped(&data, &count, infos, DDS_LENGTH_UNLIMITED, DDS_ANY_SAMPLE_STATE,
                                          DDS_ANY_VIEW_STATE, DDS_ANY_INSTANCE_STATE, nullptr,
                                          true) == DDS_RETCODE_OK) {
        expect(reader->return_loan_untyped(data, infos) == DDS_RETCODE_OK, "a loan goes back");
      }
    }
  }

 private:
  template <class TypeSupport>
  void add(const char* topic_name, DDS_Long max_samples) {
    TypeSupport::register_type(participant_, nullptr);
    DDSTopic* topic = participant_->create_topic(topic_name, TypeSupport::get_type_name(), DDS_TOPIC_QOS_DEFAULT,
                                                 nullptr, DDS_STATUS_MASK_NONE);
    DDS_DataReaderQos qos;
    qos.reliability.kind = DDS_RELIABLE_RELIABILITY_QOS;
    qos.history.kind = DDS_KEEP_ALL_HISTORY_QOS;
    qos.resource_limits.max_samples = max_samples;
    readers_.push_back(participant_->create_datareader(topic, qos, nullptr, DDS_STATUS_MASK_NONE));
    topics_.emplace_back(topic_name, TypeSupport::get_type_name());
    auto& core = static_cast<dds::ReaderCore&>(*readers_.back()->procedural_handle());
    endpoints_.push_back(
        std::make_unique<RtpsReader>(*hub_, dds::TopicKey{0, topic_name, topics_.back().second}, core, nullptr));
    endpoints_.back()->announce();
  }
  void send(Prefix prefix, Octets payload) {
    prefix.payload_size = static_cast<std::uint32_t>(payload.size);
    std::vector<unsigned char> frame(kPrefixSize + payload.size);
    encode(prefix, frame.data());
    if (payload.size != 0) { std::memcpy(frame.data() + kPrefixSize, payload.data, payload.size); }
    hub_->on_packet(kChannel, frame.data(), frame.size());
  }
  void send_hello() {
    unsigned char octets[kHelloSize];
    encode(Hello{session_, 0}, octets);
    Prefix prefix;
    prefix.identity.writer_guid = guid(0);
    send(prefix, {octets, sizeof(octets)});
  }
  void announce(const DDS_GUID_t& writer, const std::string& topic, const std::string& type) {
    Endpoint endpoint;
    endpoint.topic_name = topic;
    endpoint.type_name = type;
    endpoint.reliable = true;
    endpoint.publication = std::make_shared<DDS_PublicationBuiltinTopicData>();
    const std::vector<unsigned char> octets = encode(endpoint);
    Prefix prefix;
    prefix.kind = FrameKind::writer;
    prefix.identity.writer_guid = writer;
    send(prefix, {octets.data(), octets.size()});
  }

  DDSDomainParticipant* participant_;
  std::unique_ptr<Hub> hub_;
  std::vector<DDSDataReader*> readers_;
  std::vector<std::pair<std::string, std::string>> topics_;
  std::vector<std::unique_ptr<RtpsReader>> endpoints_;
  std::uint64_t session_ = 0;
  int greetings_ = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* octets, std::size_t size) {
  static auto* const receiver = new Receiver;  // never destroyed: its threads may run to the end
  receiver->begin();
  while (size >= 2) {
    const std::size_t length = std::min(octets[0] + std::size_t{256} * octets[1], size - 2);
    // A copy of its own, so that reading beyond it is seen.
    const std::vector<unsigned char> frame(octets + 2, octets + 2 + length);
    receiver->receive(frame.data(), frame.size());
    octets += 2 + length;
    size -= 2 + length;
  }
  receiver->empty();
  return 0;
}
