// What comes in from other participants: looked at, and taken to where it belongs. On the engine's receiving thread,
// but for what comes from this participant itself.

#include <new>

#include "rtps/hub.hpp"

namespace dds::rtps {

using Outcome = Inbound::Outcome;

std::shared_ptr<Peer> Hub::sender(std::uint64_t writer) {
  const MutexLock lock(bindings_mutex_);
  const auto found = bindings_.find(writer);
  return found == bindings_.end() ? nullptr : found->second;
}

void Hub::on_packet(std::uint64_t writer, const unsigned char* octets, std::size_t size) noexcept {
  try {
    Prefix prefix;
    Octets payload;
    if (!decode({octets, size}, prefix, payload)) {
      count_malformed("a message that is none of this version");
    } else if (prefix.kind == FrameKind::hello) {
      if (!receive_hello(writer, prefix, payload)) { count_malformed("a greeting"); }
    } else if (const std::shared_ptr<Peer> peer = sender(writer)) {
      try {
        receive(peer, prefix, payload);
      } catch (const std::bad_alloc&) { begin_anew(*peer); }
    }
    // Otherwise it was sent to one who has been forgotten.
  } catch (const std::bad_alloc&) { log("receive", "out of memory: a greeting is lost"); }  // there will be another
}

void Hub::receive(const std::shared_ptr<Peer>& peer, const Prefix& prefix, Octets payload) {
  switch (prefix.kind) {
    case FrameKind::writer:
    case FrameKind::reader:
    case FrameKind::withdrawn:
      if (!receive_endpoint(peer, prefix, payload)) { count_malformed("what is said of an endpoint"); }
      break;
    case FrameKind::placed:
    case FrameKind::waits:
      receive_answer(*peer, prefix);
      break;
    default:
      switch (receive_sample(*peer, prefix, payload)) {
        case Outcome::taken:
          break;
        case Outcome::malformed:
          count_malformed("a sample that does not decode");
          break;
        case Outcome::unknown_writer:
          count_malformed("a sample of a writer that nobody has spoken of");
          break;
        case Outcome::no_memory:
          log("receive", "out of memory: a sample is lost");
          break;
      }
  }
}

Outcome Hub::receive_sample(Peer& peer, const Prefix& prefix, Octets payload) {
  Notifications notifications(listeners_);
  switch (prefix.kind) {
    case FrameKind::sample:
      return peer.inbound().deliver(prefix, payload, notifications);
    case FrameKind::reservation: {
      const Outcome outcome = peer.inbound().park(prefix, payload);
      ask_control(kPlaces);
      return outcome;
    }
    case FrameKind::commit:
      return peer.inbound().commit(prefix, notifications);
    default: {
      const Outcome outcome = peer.inbound().cancel(prefix);
      ask_control(kPlaces);  // what it held may be what another waits for
      return outcome;
    }
  }
}

bool Hub::receive_endpoint(const std::shared_ptr<Peer>& peer, const Prefix& prefix, Octets payload) {
  const DDS_GUID_t& guid = prefix.identity.writer_guid;
  Told told(*this);
  const MutexLock lock(mutex_);
  if (peer->gone) { return true; }
  if (prefix.kind == FrameKind::withdrawn) { return remove_remote(*peer, guid, told); }
  return add_remote(peer, prefix.kind == FrameKind::writer, guid, payload, told);
}

void Hub::receive_answer(Peer& peer, const Prefix& prefix) {
  const MutexLock lock(mutex_);
  const auto found = own_writers_.find(prefix.identity.writer_guid);
  if (found != own_writers_.end()) { found->second->on_answer(prefix.token, peer, prefix.kind == FrameKind::placed); }
}

bool Hub::receive_hello(std::uint64_t writer, const Prefix& prefix, Octets payload) {
  Hello hello;
  if (!decode(payload, hello)) { return false; }
  const DDS_GUID_t& address = prefix.identity.writer_guid;
  {
    Told told(*this);
    const MutexLock lock(mutex_);
    const auto found = peers_.find(address);
    // One who speaks is one participant.
    for (const auto& [known, other] : peers_) {
      if (other->inbound_writer == writer && !DDS_GUID_equals(&known, &address)) { return false; }
    }
    if (found == peers_.end()) {
      // It will say so again.
      add_news({News::Kind::hello, writer, {address, {}}});
      return true;
    }
    Peer& peer = *found->second;
    if (&peer == self_.get()) { return false; }
    const bool anew = peer.their_session != hello.session;
    if (anew) { forget_endpoints(peer, told); }
    peer.their_session = hello.session;
    peer.heard = hello.heard == peer.session;
    // It has forgotten, or never known, what was told in this session.
    if (peer.open && (anew || !peer.heard)) { restart(peer, told); }
    if (!bind(writer, found->second)) { restart(peer, told); }
    peer.hello_due = peer.hello_due || anew || !peer.heard || !peer.open;
  }
  call_control();
  return true;
}

// What it says counts from when it has heard us: before, it may be what was meant for an earlier session. False when
// memory is exhausted.
bool Hub::bind(std::uint64_t writer, const std::shared_ptr<Peer>& peer) {
  const MutexLock lock(bindings_mutex_);
  if (peer->inbound_writer != writer || !peer->heard) { bindings_.erase(peer->inbound_writer); }
  peer->inbound_writer = writer;
  if (!peer->heard) { return true; }
  try {
    bindings_[writer] = peer;
  } catch (const std::bad_alloc&) { return false; }
  return true;
}

void Hub::count_malformed(const char* what) noexcept {
  const DDS_LongLong count = malformed_messages_.fetch_add(1, std::memory_order_relaxed) + 1;
  // Whoever sends much of it does not fill the log: of the first ten each, then every tenth of a power of ten.
  DDS_LongLong step = 1;
  while (step * 10 < count) { step *= 10; }
  if (count % step != 0) { return; }
  try {
    listeners_.log("receive", std::string("dropped ") + what + " (" + std::to_string(count) + " dropped so far)");
  } catch (const std::bad_alloc&) {}  // then there is no line
}

}  // namespace dds::rtps
