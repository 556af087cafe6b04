#include <algorithm>
#include <cstring>
#include <utility>

#include "rtps/endpoints.hpp"
#include "rtps/hub.hpp"
#include "rtps/writer_attempt.hpp"
#include "util/entity_ids.hpp"
#include "util/reserve_one.hpp"

namespace dds::rtps {

namespace {

bool is_guid(const DDS_GUID_t& guid) {
  return !DDS_GUID_equals(&guid, &DDS_GUID_UNKNOWN) && !DDS_GUID_equals(&guid, &DDS_GUID_AUTO);
}

/// Leaves scratch empty, whatever happens: what is in it takes room in windows.
template <class Scratch>
struct Clearing {
  ~Clearing() { scratch.clear(); }
  Scratch& scratch;
};

}  // namespace

RtpsWriter::RtpsWriter(Hub& hub, const TopicKey& key, WriterCore& sink) : hub_(hub), sink_(sink) {
  endpoint_.topic_name = key.topic_name;
  endpoint_.type_name = key.type_name;
  endpoint_.reliable = sink.reliable();
  endpoint_.publication = sink.data();
}

RtpsWriter::~RtpsWriter() { hub_.remove(*this); }

void RtpsWriter::announce() { hub_.add(*this); }

void RtpsWriter::change(Routes& routes, const RemoteEndpoint& reader, int difference) {
  auto route =
      std::find_if(routes.begin(), routes.end(), [&](const Route& known) { return known.peer == reader.peer; });
  if (route == routes.end()) { route = routes.insert(routes.end(), Route{reader.peer}); }
  const auto by = static_cast<unsigned>(difference);
  route->readers += by;
  if (reader.endpoint.reliable) {
    route->reliable += by;
    if (reader.endpoint.bounded) { route->bounded += by; }
  }
  if (route->readers == 0) { routes.erase(route); }
}

void RtpsWriter::connect(const RemoteEndpoint& reader, Notifications& notifications) {
  const DDS_GUID_t& related = reader.endpoint.subscription->related_writer_guid;
  {
    const MutexLock lock(mutex_);
    reserve_one(shipments_, connected_.size());
    Routes added;
    added.reserve(1);
    connected_.insert(reader.handle);
    try {
      Routes& routes =
          is_guid(related) ? by_related_writer_.try_emplace(related, std::move(added)).first->second : others_;
      reserve_one(routes, routes.size());
      change(routes, reader, 1);
    } catch (const std::bad_alloc&) {
      connected_.erase(reader.handle);
      throw;
    }
    reader_count_.store(connected_.size(), std::memory_order_relaxed);
  }
  try {
    sink_.add_reader(reader.handle, reader.endpoint.subscription, notifications);
  } catch (const std::bad_alloc&) {
    disconnect(reader, notifications);
    throw;
  }
}

void RtpsWriter::disconnect(const RemoteEndpoint& reader, Notifications& notifications) {
  const DDS_GUID_t& related = reader.endpoint.subscription->related_writer_guid;
  {
    const MutexLock lock(mutex_);
    if (connected_.erase(reader.handle) == 0) { return; }
    if (is_guid(related)) {
      const auto routes = by_related_writer_.find(related);
      change(routes->second, reader, -1);
      if (routes->second.empty()) { by_related_writer_.erase(routes); }
    } else {
      change(others_, reader, -1);
    }
    reader_count_.store(connected_.size(), std::memory_order_relaxed);
  }
  sink_.remove_reader(reader.handle, notifications);
}

DDS_SampleIdentity_t RtpsWriter::next_identity() { return {guid(), to_sequence_number(++last_number_)}; }

DDS_ReturnCode_t RtpsWriter::write(const WrittenSample& sample, Deadline& deadline, DDS_SampleIdentity_t& assigned) {
  const DDS_ReturnCode_t refused = sink_.check_sample(sample);
  if (refused != DDS_RETCODE_OK) { return refused; }
  Attempt attempt{sample, assigned, deadline, {}, false, {}, 0, {}, {}, {}, {}};
  for (;;) {
    if (!attempt.packet && reader_count_.load(std::memory_order_relaxed) != 0) {
      const DDS_ReturnCode_t serialized = serialize(sample, attempt.packet);
      if (serialized != DDS_RETCODE_OK) { return serialized; }
    }
    try {
      Step step = try_write(attempt);
      if (step != Step::again) { attempt.waited.move_to(nullptr, 0); }
      if (step == Step::reserve) { step = reserve_and_write(attempt); }
      if (step == Step::done) {
        attempt.pushed.flush();
        return DDS_RETCODE_OK;
      }
      if (step == Step::timed_out) { return DDS_RETCODE_TIMEOUT; }
      if (step == Step::find_requester) {
        if (!await_requester(sample.params.related_sample_identity.writer_guid, deadline)) {
          return DDS_RETCODE_TIMEOUT;
        }
        attempt.awaited = true;
        continue;
      }
    } catch (const std::bad_alloc&) { return DDS_RETCODE_OUT_OF_RESOURCES; }
    if (attempt.full.get() == nullptr) { continue; }  // readers came while there was nothing to send to them
    attempt.waited.move_to(attempt.full.get(), attempt.packet.size());
    attempt.full->wait(attempt.ticket, deadline);
    if (deadline.passed()) { return DDS_RETCODE_TIMEOUT; }
    attempt.full = RefPtr<Window>();
  }
}

// A requester's reply reader is announced before its requests are sent, but what is known of it waits for the way to
// its participant to open. False when the deadline comes first.
bool RtpsWriter::await_requester(const DDS_GUID_t& requester, Deadline& deadline) {
  for (;;) {
    const std::uint32_t ticket = hub_.openings().ticket();
    {
      const MutexLock lock(mutex_);
      if (by_related_writer_.find(requester) != by_related_writer_.end()) { return true; }
    }
    switch (hub_.find_writer(requester)) {
      case Hub::Whereabouts::reachable:
        return true;
      case Hub::Whereabouts::unknown:
        hub_.count_vanished_reply();
        return true;
      case Hub::Whereabouts::not_reachable_yet:
        break;
    }
    if (deadline.passed()) { return false; }
    hub_.openings().wait(ticket, deadline);
  }
}

DDS_ReturnCode_t RtpsWriter::serialize(const WrittenSample& sample, Packet& packet) const {
  const DDS_TypePlugin& type = sink_.type();
  RefPtr<Message> key;
  const void* data = sample.data;
  if (sample.kind != MessageKind::data) {
    const DDS_ReturnCode_t made = sink_.make_message(sample, key);
    if (made != DDS_RETCODE_OK) { return made; }
    data = key->sample();
  }
  const std::size_t size = type.serialized_size(data);
  if (size > UINT32_MAX - kPrefixSize) { return DDS_RETCODE_OUT_OF_RESOURCES; }
  Packet made = hub_.make_packet(kPrefixSize + size);
  if (!made) { return DDS_RETCODE_OUT_OF_RESOURCES; }
  if (!type.serialize(data, made.octets() + kPrefixSize, size)) { return DDS_RETCODE_BAD_PARAMETER; }
  Prefix prefix;
  prefix.kind = FrameKind::sample;
  prefix.message_kind = static_cast<std::uint8_t>(sample.kind);
  prefix.identity.writer_guid = guid();
  prefix.related_identity = sample.params.related_sample_identity;
  prefix.source_time =
      sample.params.source_timestamp == DDS_TIME_INVALID ? current_time() : sample.params.source_timestamp;
  prefix.payload_size = static_cast<std::uint32_t>(size);
  encode(prefix, made.octets());
  packet = std::move(made);
  return DDS_RETCODE_OK;
}

void RtpsWriter::add_shipments(const Routes& routes) {
  for (const Route& route : routes) {
    auto shipment = std::find_if(shipments_.begin(), shipments_.end(),
                                 [&](const Shipment& known) { return known.peer == route.peer.get(); });
    if (shipment == shipments_.end()) {
      shipment = shipments_.insert(shipments_.end(), Shipment{route.peer.get(), false, false, {}});
    }
    shipment->reliable = shipment->reliable || route.reliable != 0;
    shipment->bounded = shipment->bounded || route.bounded != 0;
  }
}

// The end of an instance concerns whoever holds it, whatever it was in answer to.
bool RtpsWriter::find_shipments(MessageKind kind, const DDS_GUID_t& related_writer) {
  add_shipments(others_);
  if (kind != MessageKind::data) {
    for (const auto& [writer, routes] : by_related_writer_) { add_shipments(routes); }
    return true;
  }
  const auto found = by_related_writer_.find(related_writer);
  if (found == by_related_writer_.end()) { return false; }
  add_shipments(found->second);
  return true;
}

Packet RtpsWriter::copy_packet(const Packet& packet) const {
  Packet copy = hub_.make_packet(packet.size());
  if (!copy) { throw std::bad_alloc(); }
  std::memcpy(copy.octets(), packet.octets(), packet.size());
  return copy;
}

// Gives each participant its copy and room for it in its window, or none: false, and what has to be waited for. Nobody
// waits for a participant that has only best-effort readers: it goes without.
bool RtpsWriter::fill_shipments(Attempt& attempt) {
  const std::size_t size = attempt.packet.size();
  for (Shipment& shipment : shipments_) {
    const bool waits = sink_.reliable() && shipment.reliable;
    Window& window = *shipment.peer->window();
    const std::uint32_t ticket = window.ticket();
    if (!window.acquire(size, waits)) {
      if (!waits) { continue; }
      attempt.full = RefPtr<Window>(&window);
      attempt.ticket = ticket;
      return false;
    }
    try {
      // The last one is the sample's own packet.
      shipment.packet = &shipment == &shipments_.back() ? std::move(attempt.packet) : copy_packet(attempt.packet);
    } catch (const std::bad_alloc&) {
      window.on_released(size);
      throw;
    }
    shipment.packet.notify_release(window);
  }
  return true;
}

// Whether there is room for the sample now. What is then sent to find places and after they have been found is not held
// back: a writer that waits for a place keeps nobody else out of a window.
bool RtpsWriter::windows_are_open(Attempt& attempt) {
  const std::size_t size = attempt.packet.size();
  for (const Shipment& shipment : shipments_) {
    if (!shipment.reliable) { continue; }
    Window& window = *shipment.peer->window();
    const std::uint32_t ticket = window.ticket();
    if (!window.acquire(size, true)) {
      attempt.full = RefPtr<Window>(&window);
      attempt.ticket = ticket;
      return false;
    }
    window.on_released(size);
  }
  return true;
}

RtpsWriter::Step RtpsWriter::try_write(Attempt& attempt) {
  const MutexLock lock(mutex_);
  const Clearing<std::vector<Shipment>> clearing{shipments_};
  const DDS_GUID_t& related = attempt.sample.params.related_sample_identity.writer_guid;
  if (!find_shipments(attempt.sample.kind, related) && is_guid(related) && !attempt.awaited) {
    return Step::find_requester;
  }
  if (shipments_.empty()) {
    attempt.assigned = next_identity();
    return Step::done;
  }
  if (!attempt.packet) { return Step::again; }
  const bool bounded = sink_.reliable() && std::any_of(shipments_.begin(), shipments_.end(),
                                                       [](const Shipment& shipment) { return shipment.bounded; });
  if (bounded) {
    if (!windows_are_open(attempt)) { return Step::again; }
    prepare_reservation(attempt);
    return Step::reserve;
  }
  if (!fill_shipments(attempt)) { return Step::again; }
  for (const Shipment& shipment : shipments_) {
    if (shipment.packet) { attempt.pushed.add(shipment.peer->shared_from_this()); }
  }
  // Before a reader has the sample: the answer may come at once.
  attempt.assigned = next_identity();
  for (Shipment& shipment : shipments_) {
    if (!shipment.packet) { continue; }
    encode_number(attempt.assigned.sequence_number, shipment.packet.octets());
    shipment.peer->push_admitted(std::move(shipment.packet));
  }
  return Step::done;
}

}  // namespace dds::rtps
