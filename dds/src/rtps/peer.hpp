#pragma once

#include <memory>
#include <unordered_map>

#include "rtps/frame.hpp"
#include "rtps/inbound.hpp"
#include "rtps/window.hpp"

namespace dds::rtps {

class Peer;

/// Takes frames to one participant, in order.
class Channel {
 public:
  virtual ~Channel() = default;
  /// Never waits; thread-safe.
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
  Peer(const DDS_GUID_t& address, std::unique_ptr<Channel> channel) : address_(address), channel_(std::move(channel)) {}

  const DDS_GUID_t& address() const { return address_; }
  void send(Packet packet) { channel_->send(std::move(packet)); }
  const RefPtr<Window>& window() const { return window_; }
  Inbound& inbound() { return inbound_; }

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
  const DDS_GUID_t address_;
  const std::unique_ptr<Channel> channel_;
  const RefPtr<Window> window_ = RefPtr<Window>::adopt(new Window);
  Inbound inbound_;
  Peer* next_ = nullptr;  // in the graveyard
};

/// Where peers go whose last owner has let go of them: that may be a thread of the engine's, or one that holds locks,
/// on which a channel must not be closed. Thread-safe.
class Graveyard {
 public:
  /// `buried` tells that there is something to empty.
  explicit Graveyard(EventCount& buried) : buried_(buried) {}
  Graveyard(const Graveyard&) = delete;
  Graveyard& operator=(const Graveyard&) = delete;
  ~Graveyard() { empty(); }

  /// A peer that comes here in the end. The graveyard must be there longer. Throws `std::bad_alloc`.
  std::shared_ptr<Peer> make_peer(const DDS_GUID_t& address, std::unique_ptr<Channel> channel);
  /// Destroys the peers that are here, and closes their channels. Under no lock.
  void empty() DDS_EXCLUDES(mutex_);

 private:
  void bury(Peer* peer) noexcept DDS_EXCLUDES(mutex_);

  EventCount& buried_;
  Mutex mutex_;
  Peer* first_ DDS_GUARDED_BY(mutex_) = nullptr;
};

}  // namespace dds::rtps
