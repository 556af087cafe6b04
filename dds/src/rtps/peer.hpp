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
  virtual void send(Packet packet) noexcept = 0;
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
  /// `due` happens when packets may be sent that nobody is about to send.
  Peer(const DDS_GUID_t& address, std::unique_ptr<Channel> channel, EventCount& due)
      : address_(address), channel_(std::move(channel)), window_(RefPtr<Window>::adopt(new Window(due))), due_(due) {}

  const DDS_GUID_t& address() const { return address_; }
  const RefPtr<Window>& window() const { return window_; }

  // A packet is put in line under the locks that give it its place there, and leaves in `flush`, under none: the engine
  // returns only when all of a packet is on the wire, which nobody should have to wait for. Thread-safe.

  /// Puts a packet in line that gives back to the window the room that it has there.
  void push_admitted(Packet packet) DDS_EXCLUDES(line_mutex_);
  /// Puts a packet in line whether there is room in the window or not.
  void push(Packet packet) DDS_EXCLUDES(line_mutex_);
  /// Sends what is in line, unless another thread does so. What comes too thick for the engine, as only that can which
  /// is pushed beyond the window, stays until `due`, and so does what others have added meanwhile beyond a fair share.
  void flush() DDS_EXCLUDES(line_mutex_);
  bool has_line() DDS_EXCLUDES(line_mutex_);
  /// Waits until everything has been acknowledged, or for the deadline.
  void drain(Deadline& deadline) DDS_EXCLUDES(line_mutex_);

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
  Packet begin_flush(std::size_t& share) DDS_EXCLUDES(line_mutex_);
  Packet go_on(std::size_t& share) DDS_EXCLUDES(line_mutex_);
  Packet pop_or_end(std::size_t& share) DDS_REQUIRES(line_mutex_);

  const DDS_GUID_t address_;
  const std::unique_ptr<Channel> channel_;
  const RefPtr<Window> window_;
  Inbound inbound_;
  EventCount& due_;
  Mutex line_mutex_;
  PacketQueue line_ DDS_GUARDED_BY(line_mutex_);
  std::size_t line_cost_ DDS_GUARDED_BY(line_mutex_) = 0;
  bool flushing_ DDS_GUARDED_BY(line_mutex_) = false;  // a thread is about to send, and will look again
  Peer* next_ = nullptr;                               // in the graveyard
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
