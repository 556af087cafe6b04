// The carrier engine: the only file that knows its API.

#include "rtps/engine.hpp"

#include <dds/dds.h>
#include <dds/ddsi/ddsi_serdata.h>
#include <dds/ddsi/ddsi_sertype.h>
#include <dds/ddsi/q_radmin.h>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <new>

#include "rtps/handover.hpp"
#include "rtps/packet_memory.hpp"
#include "rtps/sockets.hpp"

namespace dds::rtps {

namespace {

constexpr char kPresenceTopic[] = "zemtra_presence";
constexpr char kChannelTopic[] = "zemtra_channel";
constexpr char kTypeName[] = "zemtra::Packet";
constexpr std::size_t kAlignment = PacketMemory::kAlignment;

// A packet as the engine sees it: a sample of a type without key, whose serialized form is all there is.
struct PacketData : ddsi_serdata {
  PacketData() : ddsi_serdata() {}
  PacketListener* listener = nullptr;
  PacketData* next = nullptr;  // in a queue
  std::uint32_t size = 0;
  std::size_t block_size = 0;

  static constexpr std::size_t header_size() { return (sizeof(PacketData) + kAlignment - 1) / kAlignment * kAlignment; }
  unsigned char* octets() { return reinterpret_cast<unsigned char*>(this) + header_size(); }
  const unsigned char* octets() const { return reinterpret_cast<const unsigned char*>(this) + header_size(); }
};

// Never destroyed: threads of engines may outlive the objects of this file.
PacketMemory& packet_memory = *new PacketMemory;

PacketData* packet_data(ddsi_serdata* data) { return static_cast<PacketData*>(data); }
const PacketData* packet_data(const ddsi_serdata* data) { return static_cast<const PacketData*>(data); }

PacketData* make_data(const ddsi_sertype* type, std::size_t size) {
  if (size > UINT32_MAX - 4) { return nullptr; }
  const std::size_t padded = (size + 3) / 4 * 4;
  const PacketMemory::Block block = packet_memory.acquire(PacketData::header_size() + padded);
  if (block.memory == nullptr) { return nullptr; }
  auto* data = new (block.memory) PacketData;
  data->block_size = block.size;
  ddsi_serdata_init(data, type, SDK_DATA);
  data->hash = type->serdata_basehash;
  data->size = static_cast<std::uint32_t>(padded);
  std::memset(data->octets() + size, 0, padded - size);
  hand_over(data);
  return data;
}

void free_data(ddsi_serdata* base) {
  PacketData* data = packet_data(base);
  take_over(data);
  if (data->listener != nullptr) { data->listener->on_released(data->size); }
  const PacketMemory::Block block{data, data->block_size};
  data->~PacketData();
  packet_memory.release(block);
}

// The fragments of a sample may overlap, but leave no gap.
ddsi_serdata* from_fragments(const ddsi_sertype* type, ddsi_serdata_kind kind, const nn_rdata* fragment,
                             std::size_t size) {
  if (kind != SDK_DATA) { return nullptr; }
  PacketData* data = make_data(type, size);
  if (data == nullptr) { return nullptr; }
  std::uint32_t offset = 0;
  for (; fragment != nullptr; fragment = fragment->nextfrag) {
    if (fragment->maxp1 <= offset) { continue; }
    const unsigned char* payload = NN_RMSG_PAYLOADOFF(fragment->rmsg, NN_RDATA_PAYLOAD_OFF(fragment));
    const std::size_t end = fragment->maxp1 < size ? fragment->maxp1 : size;
    if (fragment->min > offset || end <= offset) { break; }
    std::memcpy(data->octets() + offset, payload + (offset - fragment->min), end - offset);
    offset = static_cast<std::uint32_t>(end);
  }
  if (offset < size) {
    free_data(data);
    return nullptr;
  }
  hand_over(data);
  return data;
}

ddsi_serdata* from_vector(const ddsi_sertype* type, ddsi_serdata_kind kind, ddsrt_msg_iovlen_t count,
                          const ddsrt_iovec_t* parts, std::size_t size) {
  if (kind != SDK_DATA) { return nullptr; }
  PacketData* data = make_data(type, size);
  if (data == nullptr) { return nullptr; }
  std::size_t offset = 0;
  for (ddsrt_msg_iovlen_t i = 0; i < count && offset < size; ++i) {
    const std::size_t part = parts[i].iov_len < size - offset ? parts[i].iov_len : size - offset;
    std::memcpy(data->octets() + offset, parts[i].iov_base, part);
    offset += part;
  }
  hand_over(data);
  return data;
}

// Whoever holds the last reference frees it.
void unreference(ddsi_serdata* data) {
  hand_over(data);
  ddsi_serdata_unref(data);
}

ddsi_serdata* reference_octets(const ddsi_serdata* base, std::size_t offset, std::size_t size, ddsrt_iovec_t* part) {
  part->iov_base = const_cast<unsigned char*>(packet_data(base)->octets()) + offset;
  part->iov_len = size;
  return ddsi_serdata_ref(base);
}

ddsi_serdata_ops make_data_operations() {
  ddsi_serdata_ops operations{};
  operations.eqkey = [](const ddsi_serdata* /*a*/, const ddsi_serdata* /*b*/) { return true; };
  operations.get_size = [](const ddsi_serdata* data) { return packet_data(data)->size; };
  operations.from_ser = from_fragments;
  operations.from_ser_iov = from_vector;
  operations.from_keyhash = [](const ddsi_sertype* type, const ddsi_keyhash* /*hash*/) -> ddsi_serdata* {
    return make_data(type, 0);
  };
  operations.from_sample = [](const ddsi_sertype* /*type*/, ddsi_serdata_kind /*kind*/,
                              const void* /*sample*/) -> ddsi_serdata* { return nullptr; };
  operations.to_ser = [](const ddsi_serdata* data, std::size_t offset, std::size_t size, void* buffer) {
    std::memcpy(buffer, packet_data(data)->octets() + offset, size);
  };
  operations.to_ser_ref = reference_octets;
  operations.to_ser_unref = [](ddsi_serdata* data, const ddsrt_iovec_t* /*part*/) { ddsi_serdata_unref(data); };
  operations.to_sample = [](const ddsi_serdata* /*data*/, void* /*sample*/, void** /*buffer*/, void* /*limit*/) {
    return false;
  };
  // There is but one instance, so that the octets need not be kept for its key.
  operations.to_untyped = [](const ddsi_serdata* data) -> ddsi_serdata* { return make_data(data->type, 0); };
  operations.untyped_to_sample = [](const ddsi_sertype* /*type*/, const ddsi_serdata* /*data*/, void* /*sample*/,
                                    void** /*buffer*/, void* /*limit*/) { return false; };
  operations.free = free_data;
  operations.print = [](const ddsi_sertype* /*type*/, const ddsi_serdata* data, char* buffer, std::size_t size) {
    return static_cast<std::size_t>(std::snprintf(buffer, size, "(%u octets)", packet_data(data)->size));
  };
  operations.get_keyhash = [](const ddsi_serdata* /*data*/, ddsi_keyhash* hash, bool /*md5*/) {
    std::memset(hash, 0, sizeof(*hash));
  };
  return operations;
}

ddsi_sertype_ops make_type_operations() {
  ddsi_sertype_ops operations{};
  operations.version = ddsi_sertype_v0;
  operations.free = [](ddsi_sertype* type) {
    ddsi_sertype_fini(type);
    delete type;
  };
  operations.zero_samples = [](const ddsi_sertype* /*type*/, void* /*samples*/, std::size_t /*count*/) {};
  operations.realloc_samples = [](void** /*samples*/, const ddsi_sertype* /*type*/, void* /*old*/,
                                  std::size_t /*old_count*/, std::size_t /*count*/) {};
  operations.free_samples = [](const ddsi_sertype* /*type*/, void** /*samples*/, std::size_t /*count*/,
                               dds_free_op_t /*operation*/) {};
  operations.equal = [](const ddsi_sertype* /*a*/, const ddsi_sertype* /*b*/) { return true; };
  operations.hash = [](const ddsi_sertype* /*type*/) -> std::uint32_t { return 0; };
  return operations;
}

ddsi_sertype* make_type() {
  static const ddsi_serdata_ops data_operations = make_data_operations();
  static const ddsi_sertype_ops type_operations = make_type_operations();
  auto* type = new ddsi_sertype();
  ddsi_sertype_init(type, kTypeName, &type_operations, &data_operations, true);
  return type;
}

// Text that stands in a configuration as it is, whatever a property says.
std::string escape(const std::string& text) {
  std::string escaped;
  for (const char c : text) {
    switch (c) {
      case '&':
        escaped += "&amp;";
        break;
      case '<':
        escaped += "&lt;";
        break;
      case '>':
        escaped += "&gt;";
        break;
      case '"':
        escaped += "&quot;";
        break;
      // What the engine would take for the name of an environment variable.
      case '$':
        escaped += "\\$";
        break;
      default:
        escaped += c;
    }
  }
  return escaped;
}

bool is_address(const std::string& text) {
  return !text.empty() && text.find_first_not_of("0123456789abcdefABCDEF.:") == std::string::npos &&
         text.find_first_of(".:") != std::string::npos;
}

std::string configuration(const EngineConfig& config) {
  const bool loopback = config.interface_name.empty();
  // Processes that find each other by multicast need no well-known ports, so that any number fits on a host. Others may
  // only know the host of a participant.
  const bool any_port = loopback && config.multicast && config.peers.empty();
  std::string xml = "<Domain id=\"any\"><General><Interfaces><NetworkInterface ";
  xml += is_address(config.interface_name) ? "address" : "name";
  xml += "=\"" + (loopback ? "lo" : escape(config.interface_name)) + "\" multicast=\"" +
         (config.multicast ? (loopback ? "true" : "default") : "false") + "\"/></Interfaces>";
  xml += std::string("<AllowMulticast>") + (config.multicast ? "spdp" : "false") + "</AllowMulticast>";
  xml += "<MaxMessageSize>" + std::to_string(config.max_message_size) + "B</MaxMessageSize>";
  xml += "<FragmentSize>" + std::to_string(config.max_message_size - 500) + "B</FragmentSize>";
  xml += "</General><Discovery><ExternalDomainId>" + std::to_string(config.domain) + "</ExternalDomainId>";
  xml += std::string("<ParticipantIndex>") + (any_port ? "none" : "auto") + "</ParticipantIndex>";
  xml += "<MaxAutoParticipantIndex>119</MaxAutoParticipantIndex>";
  xml += "<LeaseDuration>" + std::to_string(config.lease_milliseconds) + "ms</LeaseDuration>";
  std::vector<std::string> peers = config.peers;
  if (loopback && !config.multicast) { peers.emplace_back("127.0.0.1"); }
  if (!peers.empty()) {
    xml += "<Peers>";
    for (const std::string& peer : peers) { xml += "<Peer Address=\"" + escape(peer) + "\"/>"; }
    xml += "</Peers>";
  }
  xml += "</Discovery><Internal>";
  const std::string receive_buffer = std::to_string(config.receive_buffer_size) + "B";
  xml += "<SocketReceiveBufferSize min=\"" + receive_buffer + "\" max=\"" + receive_buffer + "\"/>";
  xml += "<SocketSendBufferSize min=\"default\" max=\"" + std::to_string(config.send_buffer_size) + "B\"/>";
  // As long as writing goes on, the engine asks for acknowledgements only when half of the high mark is not
  // acknowledged, and then as often as the shortest interval allows.
  const std::string most = std::to_string(kMostUnacknowledged) + "B";
  xml += "<Watermarks><WhcAdaptive>false</WhcAdaptive><WhcLow>0B</WhcLow><WhcHigh>" + most + "</WhcHigh><WhcHighInit>" +
         most + "</WhcHighInit></Watermarks>";
  // When writing pauses it asks a heartbeat interval later. That is not shorter, because dozens of processes that find
  // each other would do little but ask.
  xml += "<HeartbeatInterval min=\"0s\" minsched=\"10ms\" max=\"1s\">10ms</HeartbeatInterval>";
  // Those who wait for what is on its way do so before they delete a writer, all at once.
  xml += "<WriterLingerDuration>0s</WriterLingerDuration>";
  xml += "<NackDelay>5ms</NackDelay><AckDelay>1ms</AckDelay>";
  xml += "</Internal></Domain>";
  return xml;
}

struct QosDeleter {
  void operator()(dds_qos_t* qos) const { dds_delete_qos(qos); }
};
using Qos = std::unique_ptr<dds_qos_t, QosDeleter>;
struct ListenerDeleter {
  void operator()(dds_listener_t* listener) const { dds_delete_listener(listener); }
};
using Listener = std::unique_ptr<dds_listener_t, ListenerDeleter>;

Qos channel_qos(const std::string& address) {
  Qos qos(dds_create_qos());
  dds_qset_reliability(qos.get(), DDS_RELIABILITY_RELIABLE, DDS_INFINITY);
  dds_qset_history(qos.get(), DDS_HISTORY_KEEP_ALL, 0);
  dds_qset_writer_data_lifecycle(qos.get(), false);
  dds_qset_partition1(qos.get(), address.c_str());
  return qos;
}

Qos presence_qos(bool writer) {
  Qos qos(dds_create_qos());
  dds_qset_reliability(qos.get(), DDS_RELIABILITY_RELIABLE, DDS_INFINITY);
  dds_qset_durability(qos.get(), DDS_DURABILITY_TRANSIENT_LOCAL);
  if (writer) {
    dds_qset_history(qos.get(), DDS_HISTORY_KEEP_LAST, 1);
  } else {
    dds_qset_history(qos.get(), DDS_HISTORY_KEEP_ALL, 0);
  }
  dds_qset_writer_data_lifecycle(qos.get(), false);
  return qos;
}

using Receive = void (EngineEvents::*)(std::uint64_t, const unsigned char*, std::size_t) noexcept;

template <Receive receive>
void take_all(dds_entity_t reader, void* events) {
  constexpr std::uint32_t most = 32;
  ddsi_serdata* packets[most];
  dds_sample_info_t infos[most];
  for (;;) {
    const dds_return_t count = dds_takecdr(reader, packets, most, infos, DDS_ANY_STATE);
    for (dds_return_t i = 0; i < count; ++i) {
      const PacketData* data = packet_data(packets[i]);
      take_over(data);
      if (infos[i].valid_data) {
        (static_cast<EngineEvents*>(events)->*receive)(infos[i].publication_handle, data->octets(), data->size);
      }
      unreference(packets[i]);
    }
    if (count < static_cast<dds_return_t>(most)) { return; }
  }
}

std::atomic<void (*)(const char*)> log_line{nullptr};

void pass_log_line(void* /*argument*/, const dds_log_data_t* data) {
  const auto log = log_line.load(std::memory_order_acquire);
  if (log == nullptr) { return; }
  try {
    const std::string message = data->message;
    log(message.substr(0, message.find_last_not_of('\n') + 1).c_str());
  } catch (const std::bad_alloc&) {}  // then there is no line
}

}  // namespace

Packet::~Packet() {
  if (data_ == nullptr) { return; }
  unreference(static_cast<ddsi_serdata*>(data_));
}

unsigned char* Packet::octets() const { return packet_data(static_cast<ddsi_serdata*>(data_))->octets(); }

std::size_t Packet::size() const { return packet_data(static_cast<ddsi_serdata*>(data_))->size; }

void Packet::notify_release(PacketListener& listener) {
  packet_data(static_cast<ddsi_serdata*>(data_))->listener = &listener;
}

PacketQueue::~PacketQueue() {
  while (!empty()) { pop_front(); }
}

void PacketQueue::push_back(Packet packet) {
  auto* data = packet_data(static_cast<ddsi_serdata*>(packet.release()));
  if (last_ == nullptr) {
    first_ = data;
  } else {
    static_cast<PacketData*>(last_)->next = data;
  }
  last_ = data;
}

void PacketQueue::push_front(Packet packet) {
  auto* data = packet_data(static_cast<ddsi_serdata*>(packet.release()));
  data->next = static_cast<PacketData*>(std::exchange(first_, data));
  if (last_ == nullptr) { last_ = data; }
}

void PacketQueue::append(PacketQueue packets) {
  while (!packets.empty()) { push_back(packets.pop_front()); }
}

Packet PacketQueue::pop_front() {
  auto* data = static_cast<PacketData*>(first_);
  first_ = std::exchange(data->next, nullptr);
  if (first_ == nullptr) { last_ = nullptr; }
  return Packet(static_cast<ddsi_serdata*>(data));
}

EngineWriter::~EngineWriter() { dds_delete(writer_); }

namespace {

bool write_to(dds_entity_t writer, Packet packet) {
  auto* data = static_cast<ddsi_serdata*>(packet.release());
  hand_over(data);
  const dds_return_t written = dds_writecdr(writer, data);
  // A writer that is not there any more does not take the reference.
  if (written == DDS_RETCODE_BAD_PARAMETER || written == DDS_RETCODE_ALREADY_DELETED) { ddsi_serdata_unref(data); }
  return written == DDS_RETCODE_OK;
}

}  // namespace

bool EngineWriter::write(Packet packet) { return write_to(writer_, std::move(packet)); }

struct Engine::State {
  ~State();

  dds_entity_t domain = 0;
  dds_entity_t participant = 0;
  dds_entity_t channel_topic = 0;
  dds_entity_t channel_reader = 0;
  dds_entity_t presence_reader = 0;
  dds_entity_t presence_writer = 0;
  ddsi_sertype* type = nullptr;  // a counted reference
  EngineEvents* events = nullptr;
};

Engine::State::~State() {
  // The type belongs to the domain.
  if (type != nullptr) { ddsi_sertype_unref(type); }
  if (domain > 0) { dds_delete(domain); }
}

namespace {

const char* reason(dds_return_t code) { return dds_strretcode(-code); }

void on_subscription_matched(dds_entity_t /*reader*/, dds_subscription_matched_status_t status, void* argument) {
  auto* events = static_cast<EngineEvents*>(argument);
  if (status.current_count_change < 0) { events->on_writer_lost(status.last_publication_handle); }
  events->on_matches_changed();
}

void on_publication_matched(dds_entity_t /*writer*/, dds_publication_matched_status_t /*status*/, void* argument) {
  static_cast<EngineEvents*>(argument)->on_matches_changed();
}

}  // namespace

namespace {

// A socket of the engine receives from all interfaces, whichever it was told to use. Where nothing is to come from
// outside, it is confined to the loopback interface as soon as it is there.
bool open_domain(std::uint32_t instance, const EngineConfig& wanted, dds_entity_t& domain, std::string& error) {
  // Not a size that anybody else would ask for: it tells the engine's sockets from others.
  constexpr std::uint32_t oddity = 4321;
  constexpr std::size_t kMostFilesAtStart = 12;
  static std::mutex one_at_a_time;
  const std::lock_guard<std::mutex> lock(one_at_a_time);
  EngineConfig config = wanted;
  config.receive_buffer_size = possible_receive_buffer(wanted.receive_buffer_size) - oddity;
  // The engine does not come back from having too few.
  if (!can_open(kMostFilesAtStart)) {
    error = "the process may not open as many files as a participant needs";
    return false;
  }
  const SocketWatch watch;
  domain = dds_create_domain(instance, configuration(config).c_str());
  if (domain < 0) {
    error = std::string("the engine does not start: ") + reason(domain);
    return false;
  }
  return watch.adopt(config.interface_name.empty() ? "lo" : nullptr, config.receive_buffer_size, error);
}

}  // namespace

Engine::Engine(std::unique_ptr<State> state) : state_(std::move(state)) {}
Engine::~Engine() = default;

// Returns when no listener of theirs is running.
void Engine::stop_receiving() {
  dds_delete(state_->channel_reader);
  dds_delete(state_->presence_reader);
}

std::unique_ptr<Engine> Engine::open(const EngineConfig& config, const std::string& address, EngineEvents& events,
                                     std::string& error) {
  // An instance has a number of its own in the process, whatever the domain that it is in.
  static std::atomic<std::uint32_t> last_instance{1000};
  const std::uint32_t instance = last_instance.fetch_add(1, std::memory_order_relaxed);
  auto state = std::make_unique<State>();
  state->events = &events;
  const auto failed = [&](const char* what, dds_return_t code) {
    if (code < 0) { error = std::string(what) + ": " + reason(code); }
    return code < 0;
  };

  if (!open_domain(instance, config, state->domain, error)) { return nullptr; }
  Qos participant_qos(dds_create_qos());
  for (const auto& [name, value] : config.security) {
    dds_qset_prop(participant_qos.get(), name.c_str(), value.c_str());
  }
  state->participant = dds_create_participant(instance, participant_qos.get(), nullptr);
  if (failed("participant", state->participant)) { return nullptr; }

  ddsi_sertype* type = make_type();
  state->channel_topic = dds_create_topic_sertype(state->participant, kChannelTopic, &type, nullptr, nullptr, nullptr);
  if (failed("topic", state->channel_topic)) {
    ddsi_sertype_unref(type);
    return nullptr;
  }
  state->type = ddsi_sertype_ref(type);
  ddsi_sertype* same_type = make_type();
  const dds_entity_t presence_topic =
      dds_create_topic_sertype(state->participant, kPresenceTopic, &same_type, nullptr, nullptr, nullptr);
  if (failed("topic", presence_topic)) {
    ddsi_sertype_unref(same_type);
    return nullptr;
  }

  Listener listener(dds_create_listener(&events));
  dds_lset_subscription_matched(listener.get(), on_subscription_matched);
  dds_lset_data_available(listener.get(), take_all<&EngineEvents::on_packet>);
  state->channel_reader =
      dds_create_reader(state->participant, state->channel_topic, channel_qos(address).get(), listener.get());
  if (failed("channel reader", state->channel_reader)) { return nullptr; }
  state->presence_writer = dds_create_writer(state->participant, presence_topic, presence_qos(true).get(), nullptr);
  if (failed("presence writer", state->presence_writer)) { return nullptr; }
  dds_lset_data_available(listener.get(), take_all<&EngineEvents::on_presence>);
  state->presence_reader =
      dds_create_reader(state->participant, presence_topic, presence_qos(false).get(), listener.get());
  if (failed("presence reader", state->presence_reader)) { return nullptr; }
  return std::unique_ptr<Engine>(new Engine(std::move(state)));
}

Packet Engine::make_packet(std::size_t size) const {
  return Packet(static_cast<ddsi_serdata*>(make_data(state_->type, size)));
}

bool Engine::publish_presence(Packet packet) { return write_to(state_->presence_writer, std::move(packet)); }

std::unique_ptr<EngineWriter> Engine::connect(const std::string& address) {
  Listener listener(dds_create_listener(state_->events));
  dds_lset_publication_matched(listener.get(), on_publication_matched);
  const dds_entity_t writer =
      dds_create_writer(state_->participant, state_->channel_topic, channel_qos(address).get(), listener.get());
  if (writer < 0) { return nullptr; }
  try {
    return std::make_unique<EngineWriter>(writer);
  } catch (const std::bad_alloc&) {
    dds_delete(writer);
    throw;
  }
}

void set_engine_log(void (*log)(const char*)) {
  log_line.store(log, std::memory_order_release);
  dds_set_log_sink(pass_log_line, nullptr);
}

}  // namespace dds::rtps
