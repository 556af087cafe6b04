// The control thread of a participant: finds the others, makes sure of them, and does what must not be done on the
// engine's threads. It calls no application code and waits for nobody.

#include <algorithm>
#include <iterator>
#include <new>

#include "rtps/hub.hpp"
#include "util/entity_ids.hpp"

namespace dds::rtps {

namespace {

constexpr std::int64_t kMillisecond = 1000000;

std::int64_t now() { return clock_nanoseconds(CLOCK_MONOTONIC); }

bool before(const Presence::Topic& a, const Presence::Topic& b) { return a.hash < b.hash; }

// Whether that participant reads what this one writes, or writes what this one reads. Ours are in order.
bool interests(const std::vector<Presence::Topic>& ours, const Presence& presence) {
  return std::any_of(presence.topics.begin(), presence.topics.end(), [&](const Presence::Topic& theirs) {
    const auto [first, last] = std::equal_range(ours.begin(), ours.end(), theirs, before);
    return std::any_of(first, last, [&](const Presence::Topic& topic) {
      return ((theirs.roles & Presence::kReads) != 0 && (topic.roles & Presence::kWrites) != 0) ||
             ((theirs.roles & Presence::kWrites) != 0 && (topic.roles & Presence::kReads) != 0);
    });
  });
}

// Often while it is likely that the other is just coming up, then seldom.
std::int64_t pause_after(unsigned hellos) {
  if (hellos < 20) { return kMillisecond; }
  return hellos < 60 ? 10 * kMillisecond : 100 * kMillisecond;
}

}  // namespace

// The inbox has room for some even when memory is exhausted.
void Hub::add_news(News news) noexcept {
  try {
    const MutexLock lock(inbox_mutex_);
    inbox_.push_back(std::move(news));
  } catch (const std::bad_alloc&) { log("discovery", "out of memory: what becomes of a participant goes unnoticed"); }
  call_control();
}

void Hub::on_presence(std::uint64_t writer, const unsigned char* octets, std::size_t size) noexcept {
  News news{News::Kind::presence, writer, {}};
  try {
    if (!decode({octets, size}, news.presence)) {
      count_malformed("what a participant says of itself");
      return;
    }
  } catch (const std::bad_alloc&) { news = {News::Kind::unread_presence, writer, {news.presence.address, {}}}; }
  add_news(std::move(news));
}

// What comes from it after it has come anew must not be taken for what comes next, so this is done at once.
void Hub::on_writer_lost(std::uint64_t writer) noexcept {
  {
    const MutexLock lock(bindings_mutex_);
    bindings_.erase(writer);
  }
  add_news({News::Kind::lost, writer, {}});
}

void Hub::control() {
  for (;;) {
    const std::uint32_t ticket = control_event_.ticket();
    if (ending_.load(std::memory_order_acquire)) { return; }
    const std::int64_t next = control_once(asked_.exchange(0, std::memory_order_acquire));
    const std::int64_t pause = std::max<std::int64_t>(next - now(), 0);
    Deadline deadline({static_cast<std::int32_t>(pause / 1000000000), static_cast<std::uint32_t>(pause % 1000000000)});
    control_event_.wait(ticket, deadline);
  }
}

// What finds no memory is done again, and keeps nothing else from being done.
std::int64_t Hub::control_once(std::uint32_t asked) {
  std::int64_t next = now() + 3600000 * kMillisecond;
  const auto attempt = [&](auto step) {
    try {
      step();
      return true;
    } catch (const std::bad_alloc&) {
      log("discovery", "out of memory");
      next = std::min(next, now() + 100 * kMillisecond);
      return false;
    }
  };
  graveyard_.empty();
  attempt([&] { receive_loopback(); });
  if ((asked & kPresence) != 0 && attempt([&] { publish_presence(); })) { asked &= ~kPresence; }
  attempt([&] { read_news(); });
  if ((asked & kPlaces) != 0 && attempt([&] { find_places(); })) { asked &= ~kPlaces; }
  attempt([&] { next = std::min(next, greet()); });
  attempt([&] { flush(); });
  asked_.fetch_or(asked, std::memory_order_relaxed);
  return next;
}

// What has been put in line under the hub's lock, and what could not go before.
void Hub::flush() {
  flushed_.clear();
  {
    const MutexLock lock(mutex_);
    for (const auto& known : peers_) {
      if (known.second->has_line()) { flushed_.push_back(known.second); }
    }
  }
  for (const std::shared_ptr<Peer>& peer : flushed_) { peer->flush(); }
  flushed_.clear();
}

void Hub::receive_loopback() {
  received_.append(loopback_->receive());
  while (!received_.empty()) {
    Packet packet = received_.pop_front();
    Prefix prefix;
    Octets payload;
    decode({packet.octets(), packet.size()}, prefix, payload);
    try {
      receive(self_, prefix, payload);
    } catch (const std::bad_alloc&) {
      received_.push_front(std::move(packet));  // nothing has been done
      throw;
    }
  }
}

std::vector<Presence::Topic> Hub::own_topics() {
  std::vector<Presence::Topic> topics;
  for (const auto& [name, topic] : topics_) {
    const int roles = (topic.writers.empty() ? 0 : Presence::kWrites) | (topic.readers.empty() ? 0 : Presence::kReads);
    if (roles != 0) { topics.push_back({topic_hash(name), static_cast<std::uint8_t>(roles)}); }
  }
  std::sort(topics.begin(), topics.end(), before);
  return topics;
}

void Hub::publish_presence() {
  Presence presence;
  presence.address = address_;
  {
    const MutexLock lock(mutex_);
    presence.topics = own_topics();
  }
  const std::vector<unsigned char> octets = encode(presence);
  if (octets != last_presence_) {
    Packet packet = make_packet(octets.size());
    if (!packet) { throw std::bad_alloc(); }
    std::copy(octets.begin(), octets.end(), packet.octets());
    if (!engine_->publish_presence(std::move(packet))) { log("discovery", "the engine does not take a message"); }
    last_presence_ = octets;
  }
  meet_interesting();
}

void Hub::read_news() {
  {
    const MutexLock lock(inbox_mutex_);
    if (news_.empty()) {
      news_.swap(inbox_);
    } else {  // memory was exhausted: what could not be seen to comes first
      news_.reserve(news_.size() + inbox_.size());
      news_.insert(news_.end(), std::make_move_iterator(inbox_.begin()), std::make_move_iterator(inbox_.end()));
      inbox_.clear();
    }
  }
  if (news_.empty()) { return; }
  for (; news_read_ < news_.size(); ++news_read_) {
    const News& news = news_[news_read_];
    switch (news.kind) {
      case News::Kind::presence: {
        const MutexLock lock(mutex_);
        const auto [known, is_new] = presences_.try_emplace(news.writer, news.presence);
        // Nobody becomes another participant.
        if (!is_new && DDS_GUID_equals(&known->second.address, &news.presence.address)) {
          known->second = news.presence;
        }
        break;
      }
      case News::Kind::unread_presence: {  // of interest or not
        {
          const MutexLock lock(mutex_);
          presences_.try_emplace(news.writer, news.presence);
        }
        meet(news.presence.address, 0);
        break;
      }
      case News::Kind::lost:
        lose(news.writer);
        break;
      case News::Kind::hello:
        meet(news.presence.address, news.writer);
        break;
    }
  }
  meet_interesting();
  news_.clear();
  news_read_ = 0;
}

void Hub::meet_interesting() {
  std::vector<DDS_GUID_t> addresses;
  {
    const MutexLock lock(mutex_);
    const std::vector<Presence::Topic> topics = own_topics();
    for (const auto& [writer, presence] : presences_) {
      if (peers_.count(presence.address) == 0 && interests(topics, presence)) { addresses.push_back(presence.address); }
    }
  }
  for (const DDS_GUID_t& address : addresses) { meet(address, 0); }
}

void Hub::meet(const DDS_GUID_t& address, std::uint64_t writer) {
  {
    const MutexLock lock(mutex_);
    if (peers_.count(address) != 0) { return; }
    // One who speaks is one participant, however many it claims to be.
    const auto speaks = [&](const Peers::value_type& known) { return known.second->inbound_writer == writer; };
    if (writer != 0 && std::any_of(peers_.begin(), peers_.end(), speaks)) { return; }
  }
  // Not under the lock, which the engine's threads want.
  std::unique_ptr<EngineWriter> channel = engine_->connect(to_text(address));
  if (channel == nullptr) {
    log("discovery", "a channel to another participant");
    return;
  }
  auto peer = graveyard_.make_peer(address, std::make_unique<EngineChannel>(std::move(channel), listeners_));
  peer->session = random_number();
  peer->inbound_writer = writer;
  const MutexLock lock(mutex_);
  peers_.emplace(address, std::move(peer));
}

void Hub::lose(std::uint64_t writer) {
  std::shared_ptr<Peer> lost;
  Told told(*this);
  const MutexLock lock(mutex_);
  const auto presence = presences_.find(writer);
  if (presence != presences_.end()) {
    const auto peer = peers_.find(presence->second.address);
    if (peer != peers_.end() && peer->second != self_) { lost = peer->second; }
    presences_.erase(presence);
  }
  for (const auto& [address, peer] : peers_) {
    if (peer->inbound_writer == writer) { lost = peer; }
  }
  if (lost == nullptr) { return; }
  lost->gone = true;
  leave_readers(*lost, told);
  forget_endpoints(*lost, told);
  {
    const MutexLock bindings(bindings_mutex_);
    bindings_.erase(lost->inbound_writer);
  }
  lost->window()->close();
  peers_.erase(lost->address());
  openings_.notify();
}

// Nothing more is sent to its readers.
void Hub::leave_readers(Peer& peer, Told& told) {
  for (const auto& known : peer.endpoints) {
    const RemoteEndpoint& remote = *known.second;
    if (remote.is_writer) { continue; }
    for (RtpsWriter* writer : topics_[remote.endpoint.topic_name].writers) {
      writer->disconnect(remote, told.notifications);
    }
  }
  for (const auto& known : own_writers_) { known.second->on_peer_lost(peer); }
}

void Hub::restart(Peer& peer, Told& told) {
  leave_readers(peer, told);
  peer.session = random_number();
  peer.heard = false;
  peer.open = false;
  peer.told_session = 0;
  peer.hellos = 0;
  peer.hello_due = true;
}

// After something has been missed about which the two would disagree for ever. If neither hears the other, they are
// about to begin anew already. Whatever was missed may be again, so there is no hurry.
void Hub::begin_anew(Peer& peer) {
  log("receive", "out of memory: a message is lost");
  {
    Told told(*this);
    const MutexLock lock(mutex_);
    if (peer.gone || !(peer.open || peer.heard)) { return; }
    restart(peer, told);
    peer.hello_due = false;
    peer.next_hello = now() + 100 * kMillisecond;
  }
  call_control();
}

// The other hears us: from here on everything arrives. It learns of our endpoints before anything of them comes.
void Hub::open_way(const std::shared_ptr<Peer>& peer, Told& told) {
  try {
    for (const auto& [name, topic] : topics_) {
      for (const RtpsWriter* writer : topic.writers) { send_endpoint(*peer, true, writer->guid(), writer->endpoint()); }
      for (const RtpsReader* reader : topic.readers) {
        send_endpoint(*peer, false, reader->guid(), reader->endpoint());
      }
    }
    peer->open = true;
    for (const auto& known : peer->endpoints) {
      const RemoteEndpoint& remote = *known.second;
      if (remote.is_writer) { continue; }
      for (RtpsWriter* writer : topics_[remote.endpoint.topic_name].writers) { match(*writer, remote, told); }
    }
  } catch (const std::bad_alloc&) {
    restart(*peer, told);  // from the beginning, in a session of which nothing has been said
    throw;
  }
  openings_.notify();
}

std::int64_t Hub::greet() {
  std::int64_t next = now() + 3600000 * kMillisecond;
  Told told(*this);
  const MutexLock lock(mutex_);
  for (const auto& [address, peer] : peers_) {
    if (peer == self_) { continue; }
    const bool opens = peer->heard && !peer->open;
    const bool settled = peer->open && peer->told_session == peer->their_session;
    if (!peer->hello_due && settled) { continue; }
    const std::int64_t time = now();
    if (opens || peer->hello_due || peer->next_hello <= time) {
      unsigned char octets[kHelloSize];
      encode(Hello{peer->session, peer->their_session}, octets);
      Prefix prefix;
      prefix.kind = FrameKind::hello;
      prefix.identity.writer_guid = address_;
      peer->push(make_frame(prefix, {octets, sizeof(octets)}));
      peer->hello_due = false;
      // Through an open way it surely arrives, and before what follows it.
      if (peer->heard) { peer->told_session = peer->their_session; }
      peer->next_hello = time + pause_after(peer->hellos++);
    }
    if (opens) { open_way(peer, told); }
    if (!peer->open) { next = std::min(next, peer->next_hello); }
  }
  return next;
}

std::vector<std::shared_ptr<Peer>> Hub::all_peers() {
  const MutexLock lock(mutex_);
  std::vector<std::shared_ptr<Peer>> peers;
  for (const auto& known : peers_) { peers.push_back(known.second); }
  return peers;
}

namespace {
thread_local bool finding_places = false;
}

// While places are tried, those that are given back have been taken just before: nobody has gained room.
void Hub::on_space() noexcept {
  if (!finding_places) { ask_control(kPlaces); }
}

void Hub::find_places() {
  std::vector<std::shared_ptr<Peer>> peers = all_peers();
  std::rotate(peers.begin(), peers.begin() + static_cast<std::ptrdiff_t>(places_turn_++ % peers.size()), peers.end());
  bool out_of_memory = false;
  for (const std::shared_ptr<Peer>& peer : peers) {
    finding_places = true;
    try {
      peer->inbound().try_reservations(peer->answers);
    } catch (const std::bad_alloc&) { out_of_memory = true; }
    finding_places = false;
    auto answer = peer->answers.begin();
    try {
      for (; answer != peer->answers.end(); ++answer) {
        Prefix prefix;
        prefix.kind = answer->placed ? FrameKind::placed : FrameKind::waits;
        prefix.identity.writer_guid = answer->writer;
        prefix.token = answer->token;
        peer->push(make_frame(prefix));
      }
    } catch (const std::bad_alloc&) { out_of_memory = true; }
    peer->answers.erase(peer->answers.begin(), answer);
  }
  if (out_of_memory) { throw std::bad_alloc(); }
}

}  // namespace dds::rtps
