#pragma once

#include <memory>
#include <unordered_map>
#include <vector>

#include "rtps/frame.hpp"
#include "rtps/inbound.hpp"
#include "rtps/window.hpp"

namespace dds::rtps {

class Peer;

/// Takes frames to one participant, in order.
class Channel {
 public:
  virtual ~Channel() = default;
  /// One at a time. Does not wait, as long as no more is on its way than the engine takes.
  virtual void send(Packet packet) = 0;
};

/// An endpoint of another participant. The hub's lock guards it.
struct RemoteEndpoint {
  DDS_GUID_t guid;
  DDS_InstanceHandle_t handle = DDS_HANDLE_NIL;  // this process's name for it
  bool is_writer = false;
  Endpoint endpoint;
  std::shared_ptr<Peer> peer;
};

/// Another participant that this one has to do with, or this one itself: a channel to it, and what is known of it.
///
/// The two make sure of each other before anything else is said. Each side draws a session, a number of its own, and
/// repeats it until it has read it in what the other says: then, and not before, all that follows arrives. A session
/// that is not the known one says that the other has forgotten everything, or is another.
class Peer : public std::enable_shared_from_this<Peer> {
 public:
  /// `released` happens when `send_held` has something to do.
  Peer(const DDS_GUID_t& address, std::unique_ptr<Channel> channel, EventCount& released)
      : address_(address), channel_(std::move(channel)), window_(RefPtr<Window>::adopt(new Window(released))) {}

  const DDS_GUID_t& address() const { return address_; }
  const RefPtr<Window>& window() const { return window_; }
  /// Sends a packet that gives back to the window the room that it has there. Never waits: what comes too thick for the
  /// engine, as only that can which is sent beyond the window, is held back, in order. Thread-safe.
  void send_admitted(Packet packet) DDS_EXCLUDES(sending_);
  /// Sends a packet whether there is room in the window or not. Thread-safe.
  void send(Packet packet) DDS_EXCLUDES(sending_);
  /// Sends what has been held back and may go now. Thread-safe.
  void send_held() DDS_EXCLUDES(sending_);
  /// Waits until everything has been acknowledged, or for the deadline.
  void drain(Deadline& deadline) DDS_EXCLUDES(sending_);
  Inbound& inbound() { return inbound_; }

  std::vector<Inbound::Answer> answers;  // due to it; the control thread's

  // The hub's lock guards the rest.

  std::uint64_t session = 0;        // ours with it
  std::uint64_t their_session = 0;  // 0 until it has been heard
  std::uint64_t told_session = 0;   // the one of theirs that they surely know we have heard
  bool heard = false;               // it says that it hears our session
  bool open = false;                // besides, it has been told of our endpoints
  bool gone = false;                // nothing that is still under way from it counts
  bool hello_due = false;
  unsigned hellos = 0;               // sent in this session
  std::int64_t next_hello = 0;       // on the monotonic clock, in nanoseconds
  std::uint64_t inbound_writer = 0;  // the engine's handle of its channel to us; 0 until it has been heard
  std::unordered_map<DDS_GUID_t, std::unique_ptr<RemoteEndpoint>, GuidHash, GuidEqual> endpoints;

 private:
  friend class Graveyard;
  void send_what_may_go() DDS_REQUIRES(sending_);

  const DDS_GUID_t address_;
  const std::unique_ptr<Channel> channel_;
  const RefPtr<Window> window_;
  Inbound inbound_;
  Mutex sending_;
  PacketQueue held_ DDS_GUARDED_BY(sending_);
  std::size_t held_cost_ DDS_GUARDED_BY(sending_) = 0;
  Peer* next_ = nullptr;  // in the graveyard
};

/// Where peers go whose last owner has let go of them: that may be a thread of the engine's, or one that holds locks,
/// on which a channel must not be closed. Thread-safe.
class Graveyard {
 public:
  /// `event` tells that there is something to empty, and peers that they may send what they have held back.
  explicit Graveyard(EventCount& event) : event_(event) {}
  Graveyard(const Graveyard&) = delete;
  Graveyard& operator=(const Graveyard&) = delete;
  ~Graveyard() { empty(); }

  /// A peer that comes here in the end. The graveyard must be there longer. Throws `std::bad_alloc`.
  std::shared_ptr<Peer> make_peer(const DDS_GUID_t& address, std::unique_ptr<Channel> channel);
  /// Destroys the peers that are here, and closes their channels. Under no lock.
  void empty() DDS_EXCLUDES(mutex_);

 private:
  void bury(Peer* peer) noexcept DDS_EXCLUDES(mutex_);

  EventCount& event_;
  Mutex mutex_;
  Peer* first_ DDS_GUARDED_BY(mutex_) = nullptr;
};

}  // namespace dds::rtps
