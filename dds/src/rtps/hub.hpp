#pragma once

#include <atomic>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <unordered_map>
#include <vector>

#include "reader/reader_core.hpp"
#include "rtps/channels.hpp"
#include "rtps/endpoints.hpp"
#include "rtps/engine.hpp"
#include "rtps/listener_threads.hpp"
#include "rtps/peer.hpp"

namespace dds::rtps {

/// The middle of a participant's transport: knows the participant's own endpoints, the other participants and their
/// endpoints; matches them; and passes on what comes in.
///
/// Endpoints of this participant meet each other as those of others do: the participant is a peer of its own, behind a
/// channel that leads back here.
class Hub final : public EngineEvents, public SpaceListener {
 public:
  /// Starts the engine and the threads. Null, and the reason in `error`, when the engine refuses. Throws
  /// `std::bad_alloc` and `std::system_error`.
  static std::unique_ptr<Hub> open(const EngineConfig& config, std::string& error);
  /// All endpoints are gone by then.
  ~Hub() override;
  Hub(const Hub&) = delete;
  Hub& operator=(const Hub&) = delete;

  // For the endpoints. `add` throws `std::bad_alloc`; `remove` then takes back what was done.

  void add(RtpsWriter& writer) DDS_EXCLUDES(mutex_);
  void add(RtpsReader& reader) DDS_EXCLUDES(mutex_);
  void remove(RtpsWriter& writer) DDS_EXCLUDES(mutex_);
  void remove(RtpsReader& reader) DDS_EXCLUDES(mutex_);

  /// Empty when memory is exhausted.
  Packet make_packet(std::size_t size) const { return engine_->make_packet(size); }
  /// A frame of a prefix alone, or with a payload. Throws `std::bad_alloc`.
  Packet make_frame(Prefix prefix, Octets payload = {}) const;
  enum class Whereabouts { unknown, not_reachable_yet, reachable };
  /// Whether there is such a writer, and the way to its participant is open.
  Whereabouts find_writer(const DDS_GUID_t& writer) DDS_EXCLUDES(mutex_);
  /// Happens whenever a way to a participant opens, or a participant goes.
  EventCount& openings() { return openings_; }
  /// Whether there is a channel to the participant of that address.
  bool has_peer(const DDS_GUID_t& address) DDS_EXCLUDES(mutex_) { return session_with(address) != 0; }
  /// Our session with it; 0 when there is no channel.
  std::uint64_t session_with(const DDS_GUID_t& address) DDS_EXCLUDES(mutex_);
  void count_vanished_reply() { vanished_replies_.fetch_add(1, std::memory_order_relaxed); }
  DDS_TransportStatistics statistics() const;

  void on_packet(std::uint64_t writer, const unsigned char* octets, std::size_t size) noexcept override
      DDS_EXCLUDES(mutex_, bindings_mutex_);
  void on_presence(std::uint64_t writer, const unsigned char* octets, std::size_t size) noexcept override
      DDS_EXCLUDES(inbox_mutex_);
  void on_writer_lost(std::uint64_t writer) noexcept override DDS_EXCLUDES(inbox_mutex_, bindings_mutex_);
  void on_matches_changed() noexcept override { call_control(); }
  void on_space() noexcept override;

 private:
  /// Where the endpoints of a topic meet.
  struct Topic {
    std::vector<RtpsWriter*> writers;
    std::vector<RtpsReader*> readers;
    std::vector<RemoteEndpoint*> remote_writers;
    std::vector<RemoteEndpoint*> remote_readers;
  };
  /// News for the control thread.
  struct News {
    enum class Kind { presence, unread_presence, lost, hello } kind;
    std::uint64_t writer = 0;
    Presence presence;
  };
  struct Told;
  using Peers = std::unordered_map<DDS_GUID_t, std::shared_ptr<Peer>, GuidHash, GuidEqual>;

  // What the control thread is asked for.
  static constexpr std::uint32_t kPresence = 1;  // the topics of this participant have changed
  static constexpr std::uint32_t kPlaces = 2;    // samples wait for places, and there may be some

  Hub();

  // Endpoints and matches: hub.cpp

  void send_endpoint(Peer& peer, bool is_writer, const DDS_GUID_t& guid, const Endpoint& endpoint) DDS_REQUIRES(mutex_);
  Packet make_withdrawal(const DDS_GUID_t& guid) const;
  void withdraw(const DDS_GUID_t& guid, Packet own, Told& told) DDS_REQUIRES(mutex_);
  void match(RtpsWriter& writer, const RemoteEndpoint& reader, Told& told) DDS_REQUIRES(mutex_);
  void match(RtpsReader& reader, const RemoteEndpoint& writer, Told& told) DDS_REQUIRES(mutex_);
  /// False for what is no new endpoint.
  bool add_remote(const std::shared_ptr<Peer>& peer, bool is_writer, const DDS_GUID_t& guid, Octets payload, Told& told)
      DDS_REQUIRES(mutex_);
  bool remove_remote(Peer& peer, const DDS_GUID_t& guid, Told& told) DDS_REQUIRES(mutex_);
  void forget_endpoint(RemoteEndpoint& remote, Told& told) DDS_REQUIRES(mutex_);
  void forget_endpoints(Peer& peer, Told& told) DDS_REQUIRES(mutex_);
  void leave_readers(Peer& peer, Told& told) DDS_REQUIRES(mutex_);
  void drop_topic_if_empty(const std::string& name) DDS_REQUIRES(mutex_);

  // What comes in: hub_receiving.cpp

  void receive(const std::shared_ptr<Peer>& peer, const Prefix& prefix, Octets payload);
  Inbound::Outcome receive_sample(Peer& peer, const Prefix& prefix, Octets payload);
  bool receive_endpoint(const std::shared_ptr<Peer>& peer, const Prefix& prefix, Octets payload) DDS_EXCLUDES(mutex_);
  void receive_answer(Peer& peer, const Prefix& prefix) DDS_EXCLUDES(mutex_);
  bool receive_hello(std::uint64_t writer, const Prefix& prefix, Octets payload)
      DDS_EXCLUDES(mutex_, bindings_mutex_, inbox_mutex_);
  std::shared_ptr<Peer> sender(std::uint64_t writer) DDS_EXCLUDES(bindings_mutex_);
  void count_malformed(const char* what) noexcept;
  bool bind(std::uint64_t writer, const std::shared_ptr<Peer>& peer) DDS_REQUIRES(mutex_) DDS_EXCLUDES(bindings_mutex_);
  void log(const char* context, const char* text) noexcept;

  // The control thread: hub_control.cpp

  void call_control() { control_event_.notify(); }
  void ask_control(std::uint32_t what) {
    asked_.fetch_or(what, std::memory_order_release);
    call_control();
  }
  void add_news(News news) noexcept DDS_EXCLUDES(inbox_mutex_);
  void control();
  /// When to look again at the latest, on the monotonic clock.
  std::int64_t control_once(std::uint32_t asked);
  void receive_loopback();
  void publish_presence() DDS_EXCLUDES(mutex_);
  void read_news() DDS_EXCLUDES(mutex_, inbox_mutex_);
  /// `writer` is the engine's handle of the channel through which it has said hello; 0 when it has not.
  void meet(const DDS_GUID_t& address, std::uint64_t writer) DDS_EXCLUDES(mutex_);
  void meet_interesting() DDS_EXCLUDES(mutex_);
  /// What this participant writes and reads, by hash.
  std::vector<Presence::Topic> own_topics() DDS_REQUIRES(mutex_);
  void lose(std::uint64_t writer) DDS_EXCLUDES(mutex_, bindings_mutex_);
  void restart(Peer& peer, Told& told) DDS_REQUIRES(mutex_);
  void begin_anew(Peer& peer) DDS_EXCLUDES(mutex_);
  /// Says what is due to the peers; when the next is, on the monotonic clock.
  std::int64_t greet() DDS_EXCLUDES(mutex_);
  void open_way(const std::shared_ptr<Peer>& peer, Told& told) DDS_REQUIRES(mutex_);
  void find_places() DDS_EXCLUDES(mutex_);
  void flush() DDS_EXCLUDES(mutex_);
  std::vector<std::shared_ptr<Peer>> all_peers() DDS_EXCLUDES(mutex_);

  const DDS_GUID_t address_;
  ListenerThreads listeners_;
  std::unique_ptr<Engine> engine_;
  Graveyard graveyard_{control_event_};
  std::shared_ptr<Peer> self_;
  LoopbackChannel* loopback_ = nullptr;  // the channel of self_

  Mutex mutex_;
  std::map<std::string, Topic> topics_ DDS_GUARDED_BY(mutex_);
  std::unordered_map<DDS_GUID_t, RtpsWriter*, GuidHash, GuidEqual> own_writers_ DDS_GUARDED_BY(mutex_);
  Peers peers_ DDS_GUARDED_BY(mutex_);
  // What others say to all, by the engine's handle of who says it.
  std::unordered_map<std::uint64_t, Presence> presences_ DDS_GUARDED_BY(mutex_);

  Mutex bindings_mutex_;
  // By the engine's handle of its channel to us: who has said hello through it.
  std::unordered_map<std::uint64_t, std::shared_ptr<Peer>> bindings_ DDS_GUARDED_BY(bindings_mutex_);

  Mutex inbox_mutex_;
  std::vector<News> inbox_ DDS_GUARDED_BY(inbox_mutex_);

  EventCount openings_;
  std::atomic<DDS_LongLong> malformed_messages_{0};
  std::atomic<DDS_LongLong> vanished_replies_{0};

  std::atomic<std::uint32_t> asked_{0};
  EventCount control_event_;
  std::atomic<bool> ending_{false};
  // The control thread's.
  std::vector<unsigned char> last_presence_;
  PacketQueue received_;                        // from this participant
  std::vector<News> news_;                      // what it has read from the inbox
  std::size_t news_read_ = 0;                   // of them, it has seen to
  std::size_t places_turn_ = 0;                 // whose samples are the first to look for places
  std::vector<std::shared_ptr<Peer>> flushed_;  // scratch
  std::thread control_thread_;
};

/// What a change of matches has to tell. Declared before the hub's lock is taken, so that it is told afterwards.
struct Hub::Told {
  explicit Told(Hub& hub) : listeners(hub.listeners_), notifications(hub.listeners_) {}
  /// Logs why two ends of a topic do not match.
  void mismatch(const std::string& topic_name, const std::string& reason) {
    listeners.log("match", "writer and reader of topic \"" + topic_name + "\" do not match: " + reason);
  }
  ListenerThreads& listeners;
  Notifications notifications;
};

}  // namespace dds::rtps
