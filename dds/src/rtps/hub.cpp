// The endpoints of a participant and of its peers, and which of them match.

#include "rtps/hub.hpp"

#include <algorithm>
#include <cstring>
#include <utility>

#include "util/entity_ids.hpp"
#include "util/reserve_one.hpp"

namespace dds::rtps {

namespace {

template <class Element>
void erase(std::vector<Element*>& elements, const Element* element) {
  const auto found = std::find(elements.begin(), elements.end(), element);
  if (found != elements.end()) { elements.erase(found); }
}

/// Why two ends do not match; no policy when they do.
struct Mismatch {
  DDS_QosPolicyId_t policy = DDS_INVALID_QOS_POLICY_ID;
  std::string reason;
};

Mismatch compare(const Endpoint& writer, const Endpoint& reader) {
  if (writer.type_name != reader.type_name) {
    return {DDS_TYPE_CONSISTENCY_ENFORCEMENT_QOS_POLICY_ID,
            "their types have different names, \"" + writer.type_name + "\" and \"" + reader.type_name + "\""};
  }
  if (reader.reliable && !writer.reliable) {
    return {DDS_RELIABILITY_QOS_POLICY_ID, DDS_QosPolicyId_get_name(DDS_RELIABILITY_QOS_POLICY_ID)};
  }
  return {};
}

}  // namespace

Hub::Hub() : address_(make_guid(next_entity_handle())) {
  constexpr std::size_t few = 64;
  inbox_.reserve(few);
  news_.reserve(few);
}

std::unique_ptr<Hub> Hub::open(const EngineConfig& config, std::string& error) {
  std::unique_ptr<Hub> hub(new Hub);
  auto loopback = std::make_unique<LoopbackChannel>(hub->control_event_);
  hub->loopback_ = loopback.get();
  hub->self_ = hub->graveyard_.make_peer(hub->address_, std::move(loopback));
  hub->self_->open = true;
  {
    const MutexLock lock(hub->mutex_);
    hub->peers_.emplace(hub->address_, hub->self_);
  }
  hub->engine_ = Engine::open(config, to_text(hub->address_), *hub, error);
  if (hub->engine_ == nullptr) { return nullptr; }
  hub->control_thread_ = std::thread([raw = hub.get()] { raw->control(); });
  hub->ask_control(kPresence);
  return hub;
}

// First the threads that send; then what calls us, so that nobody holds a peer any more; then the ways out, and in the
// end the engine.
Hub::~Hub() {
  ending_.store(true, std::memory_order_release);
  call_control();
  if (control_thread_.joinable()) { control_thread_.join(); }
  flushed_.clear();
  {
    const MutexLock lock(bindings_mutex_);
    bindings_.clear();
  }
  Peers peers;
  {
    Told told(*this);
    const MutexLock lock(mutex_);
    for (const auto& known : peers_) {
      known.second->gone = true;
      forget_endpoints(*known.second, told);
    }
    peers.swap(peers_);
  }
  if (engine_ != nullptr) { engine_->stop_receiving(); }
  {
    // A greeting that came meanwhile may have bound its sender anew.
    const MutexLock lock(bindings_mutex_);
    bindings_.clear();
  }
  // What is on its way is given a second to arrive, altogether.
  Deadline flushed({1, 0});
  flushed.end();
  for (const auto& known : peers) {
    if (known.second != self_) { known.second->drain(flushed); }
  }
  self_.reset();
  peers.clear();
  graveyard_.empty();
  engine_.reset();
}

Packet Hub::make_frame(Prefix prefix, Octets payload) const {
  prefix.payload_size = static_cast<std::uint32_t>(payload.size);
  Packet packet = make_packet(kPrefixSize + payload.size);
  if (!packet) { throw std::bad_alloc(); }
  encode(prefix, packet.octets());
  if (payload.size != 0) { std::memcpy(packet.octets() + kPrefixSize, payload.data, payload.size); }
  return packet;
}

void Hub::send_endpoint(Peer& peer, bool is_writer, const DDS_GUID_t& guid, const Endpoint& endpoint) {
  const std::vector<unsigned char> octets = encode(endpoint);
  Prefix prefix;
  prefix.kind = is_writer ? FrameKind::writer : FrameKind::reader;
  prefix.identity.writer_guid = guid;
  peer.push(make_frame(prefix, {octets.data(), octets.size()}));
}

Packet Hub::make_withdrawal(const DDS_GUID_t& guid) const {
  Prefix prefix;
  prefix.kind = FrameKind::withdrawn;
  prefix.identity.writer_guid = guid;
  return make_frame(prefix);
}

void Hub::add(RtpsWriter& writer) {
  Told told(*this);
  {
    const MutexLock lock(mutex_);
    writer.withdrawal() = make_withdrawal(writer.guid());
    Topic& topic = topics_[writer.endpoint().topic_name];
    topic.writers.push_back(&writer);
    own_writers_.emplace(writer.guid(), &writer);
    // The others know the writer before anything of it can come to them.
    for (const auto& known : peers_) {
      if (known.second->open) { send_endpoint(*known.second, true, writer.guid(), writer.endpoint()); }
    }
    for (const RemoteEndpoint* reader : topic.remote_readers) { match(writer, *reader, told); }
  }
  ask_control(kPresence);
}

void Hub::add(RtpsReader& reader) {
  Told told(*this);
  {
    const MutexLock lock(mutex_);
    reader.withdrawal() = make_withdrawal(reader.guid());
    Topic& topic = topics_[reader.endpoint().topic_name];
    topic.readers.push_back(&reader);
    // The reader takes what comes before the others are told that they may send.
    for (const RemoteEndpoint* writer : topic.remote_writers) { match(reader, *writer, told); }
    for (const auto& known : peers_) {
      if (known.second->open) { send_endpoint(*known.second, false, reader.guid(), reader.endpoint()); }
    }
  }
  ask_control(kPresence);
}

// Whoever cannot be told for want of memory learns anew what there is.
void Hub::withdraw(const DDS_GUID_t& guid, Packet own, Told& told) {
  if (own) { self_->push(std::move(own)); }
  for (const auto& known : peers_) {
    Peer& peer = *known.second;
    if (!peer.open || &peer == self_.get()) { continue; }
    try {
      peer.push(make_withdrawal(guid));
    } catch (const std::bad_alloc&) { restart(peer, told); }
  }
}

void Hub::drop_topic_if_empty(const std::string& name) {
  const auto found = topics_.find(name);
  if (found == topics_.end()) { return; }
  const Topic& topic = found->second;
  if (topic.writers.empty() && topic.readers.empty() && topic.remote_writers.empty() && topic.remote_readers.empty()) {
    topics_.erase(found);
  }
}

void Hub::remove(RtpsWriter& writer) {
  Told told(*this);
  {
    const MutexLock lock(mutex_);
    own_writers_.erase(writer.guid());
    const auto found = topics_.find(writer.endpoint().topic_name);
    if (found == topics_.end()) { return; }
    Topic& topic = found->second;
    erase(topic.writers, static_cast<const RtpsWriter*>(&writer));
    withdraw(writer.guid(), std::move(writer.withdrawal()), told);
    for (const RemoteEndpoint* reader : topic.remote_readers) { writer.disconnect(*reader, told.notifications); }
    drop_topic_if_empty(writer.endpoint().topic_name);
  }
  ask_control(kPresence);
}

void Hub::remove(RtpsReader& reader) {
  Told told(*this);
  {
    const MutexLock lock(mutex_);
    const auto found = topics_.find(reader.endpoint().topic_name);
    if (found == topics_.end()) { return; }
    erase(found->second.readers, static_cast<const RtpsReader*>(&reader));
    withdraw(reader.guid(), std::move(reader.withdrawal()), told);
    for (const auto& known : peers_) { known.second->inbound().disconnect(reader, told.notifications); }
    drop_topic_if_empty(reader.endpoint().topic_name);
  }
  ask_control(kPresence | kPlaces);
}

void Hub::match(RtpsWriter& writer, const RemoteEndpoint& reader, Told& told) {
  if (!reader.peer->open) { return; }
  const Mismatch mismatch = compare(writer.endpoint(), reader.endpoint);
  if (mismatch.policy == DDS_INVALID_QOS_POLICY_ID) {
    writer.connect(reader, told.notifications);
    return;
  }
  told.mismatch(writer.endpoint().topic_name, mismatch.reason);
  writer.sink().count_incompatible(mismatch.policy, told.notifications);
}

void Hub::match(RtpsReader& reader, const RemoteEndpoint& writer, Told& told) {
  const Mismatch mismatch = compare(writer.endpoint, reader.endpoint());
  if (mismatch.policy == DDS_INVALID_QOS_POLICY_ID) {
    writer.peer->inbound().connect(writer.guid, reader, told.notifications);
    return;
  }
  told.mismatch(reader.endpoint().topic_name, mismatch.reason);
  reader.sink().count_incompatible(mismatch.policy, told.notifications);
}

bool Hub::add_remote(const std::shared_ptr<Peer>& peer, bool is_writer, const DDS_GUID_t& guid, Octets payload,
                     Told& told) {
  auto remote = std::make_unique<RemoteEndpoint>();
  if (!decode(payload, is_writer, guid, remote->endpoint) || peer->endpoints.count(guid) != 0) { return false; }
  remote->guid = guid;
  remote->handle = next_entity_handle();
  remote->is_writer = is_writer;
  remote->peer = peer;
  Topic& topic = topics_[remote->endpoint.topic_name];
  std::vector<RemoteEndpoint*>& ends = is_writer ? topic.remote_writers : topic.remote_readers;
  reserve_one(ends, ends.size());
  RemoteEndpoint& added = *remote;
  peer->endpoints.emplace(guid, std::move(remote));
  ends.push_back(&added);
  try {
    if (is_writer) {
      peer->inbound().add_writer(guid, added.handle, added.endpoint.publication, added.endpoint.reliable);
      for (RtpsReader* reader : topic.readers) { match(*reader, added, told); }
    } else {
      for (RtpsWriter* writer : topic.writers) { match(*writer, added, told); }
    }
  } catch (const std::bad_alloc&) {
    remove_remote(*peer, guid, told);
    throw;
  }
  return true;
}

// Takes an endpoint out of its topic, and ends its matches.
void Hub::forget_endpoint(RemoteEndpoint& remote, Told& told) {
  const auto found = topics_.find(remote.endpoint.topic_name);
  Topic& topic = found->second;
  erase(remote.is_writer ? topic.remote_writers : topic.remote_readers, static_cast<const RemoteEndpoint*>(&remote));
  if (remote.is_writer) {
    remote.peer->inbound().remove_writer(remote.guid, told.notifications);
  } else {
    for (RtpsWriter* writer : topic.writers) { writer->disconnect(remote, told.notifications); }
  }
  drop_topic_if_empty(found->first);
}

bool Hub::remove_remote(Peer& peer, const DDS_GUID_t& guid, Told& told) {
  const auto found = peer.endpoints.find(guid);
  if (found == peer.endpoints.end()) { return false; }
  forget_endpoint(*found->second, told);
  peer.endpoints.erase(found);
  return true;
}

void Hub::forget_endpoints(Peer& peer, Told& told) {
  for (const auto& known : peer.endpoints) { forget_endpoint(*known.second, told); }
  peer.endpoints.clear();
  peer.inbound().clear(told.notifications);
}

Hub::Whereabouts Hub::find_writer(const DDS_GUID_t& writer) {
  const MutexLock lock(mutex_);
  for (const auto& known : peers_) {
    const auto found = known.second->endpoints.find(writer);
    if (found == known.second->endpoints.end() || !found->second->is_writer) { continue; }
    return known.second->open ? Whereabouts::reachable : Whereabouts::not_reachable_yet;
  }
  return Whereabouts::unknown;
}

std::uint64_t Hub::session_with(const DDS_GUID_t& address) {
  const MutexLock lock(mutex_);
  const auto found = peers_.find(address);
  return found == peers_.end() ? 0 : found->second->session;
}

void Hub::log(const char* context, const char* text) noexcept {
  try {
    listeners_.log(context, text);
  } catch (const std::bad_alloc&) {}  // then there is no line
}

DDS_TransportStatistics Hub::statistics() const {
  return {malformed_messages_.load(std::memory_order_relaxed), vanished_replies_.load(std::memory_order_relaxed)};
}

}  // namespace dds::rtps
