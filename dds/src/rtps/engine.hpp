#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace dds::rtps {

/// The engine makes a thread that writes wait, without a deadline, while more octets than that are not acknowledged. It
/// asks for acknowledgements with every packet as soon as half of them are not.
constexpr std::size_t kMostUnacknowledged = std::size_t{2} * 1024 * 1024;
/// What the engine counts for a packet besides its octets, at the most; version 0.10 counts 80.
constexpr std::size_t kPacketOverhead = 128;

/// What an engine instance is configured with; nothing else configures it.
struct EngineConfig {
  std::uint32_t domain = 0;
  std::string interface_name;      // empty: the loopback interface
  std::vector<std::string> peers;  // asked for participants by unicast as well
  bool multicast = true;           // discovery by multicast
  std::int64_t lease_milliseconds = 2000;
  std::uint32_t max_message_size = 65500;
  std::uint32_t receive_buffer_size = 4 * 1024 * 1024;
  std::uint32_t send_buffer_size = 1024 * 1024;
  std::vector<std::pair<std::string, std::string>> security;  // the engine's properties of these names
};

/// Is told when the other end has acknowledged a packet, or is gone.
class PacketListener {
 public:
  /// On any thread, under locks of the engine: do little, and call nothing of the engine. The packet does not refer to
  /// the listener any more.
  virtual void on_released(std::size_t octets) noexcept = 0;

 protected:
  ~PacketListener() = default;
};

/// Octets on their way into the engine, 64-byte aligned, of a size that is a multiple of four; the first four belong to
/// the wire protocol. Move-only.
class Packet {
 public:
  Packet() = default;
  explicit Packet(void* data) : data_(data) {}
  Packet(Packet&& other) noexcept : data_(std::exchange(other.data_, nullptr)) {}
  Packet& operator=(Packet&& other) noexcept {
    std::swap(data_, other.data_);
    return *this;
  }
  ~Packet();

  explicit operator bool() const { return data_ != nullptr; }
  unsigned char* octets() const;
  std::size_t size() const;
  /// `listener` learns once when the engine has done with the packet, or when it goes without having been written.
  void notify_release(PacketListener& listener);
  /// The engine's own object, with the reference that the packet had.
  void* release() { return std::exchange(data_, nullptr); }

 private:
  void* data_ = nullptr;
};

/// Packets in order. Takes no memory of its own. Move-only.
class PacketQueue {
 public:
  PacketQueue() = default;
  PacketQueue(PacketQueue&& other) noexcept
      : first_(std::exchange(other.first_, nullptr)), last_(std::exchange(other.last_, nullptr)) {}
  PacketQueue& operator=(PacketQueue&&) = delete;
  ~PacketQueue();

  bool empty() const { return first_ == nullptr; }
  void push_back(Packet packet);
  void push_front(Packet packet);
  void append(PacketQueue packets);
  /// There is one.
  Packet pop_front();

 private:
  void* first_ = nullptr;
  void* last_ = nullptr;
};

/// Told by the engine's threads what comes in and who comes and goes.
class EngineEvents {
 public:
  virtual ~EngineEvents() = default;
  /// Octets that `writer` sent to this instance alone, in order and once; lent for the call. On the engine's receiving
  /// thread, and never twice at a time.
  virtual void on_packet(std::uint64_t writer, const unsigned char* octets, std::size_t size) noexcept = 0;
  /// What somebody says of itself to all.
  virtual void on_presence(std::uint64_t writer, const unsigned char* octets, std::size_t size) noexcept = 0;
  /// That writer has gone, or come anew: what comes from it now need not follow what came before.
  virtual void on_writer_lost(std::uint64_t writer) noexcept = 0;
  /// Somebody who is sent to, or who sends, has come or gone.
  virtual void on_matches_changed() noexcept = 0;
};

/// Sends packets to one other instance, reliably and in order. Deleting it waits until they are acknowledged, at most a
/// second.
class EngineWriter {
 public:
  explicit EngineWriter(std::int32_t writer) : writer_(writer) {}
  ~EngineWriter();
  EngineWriter(const EngineWriter&) = delete;
  EngineWriter& operator=(const EngineWriter&) = delete;

  /// Does not wait for the other end as long as at most `kMostUnacknowledged` octets, overhead included, are on their
  /// way. False, having sent nothing, when the engine refuses. Thread-safe.
  bool write(Packet packet);

 private:
  const std::int32_t writer_;
};

/// An instance of the engine with its own sockets and threads: announces a presence to all others of the domain, has an
/// address under which the others send to it, and makes writers to the addresses of others. All of the engine's API is
/// used in the file of this class alone.
class Engine {
 public:
  /// Null, and the reason in `error`, when there can be none. Events come from then on, before this returns. Throws
  /// `std::bad_alloc`.
  static std::unique_ptr<Engine> open(const EngineConfig& config, const std::string& address, EngineEvents& events,
                                      std::string& error);
  /// The writers are gone by then. No event comes afterwards.
  ~Engine();
  Engine(const Engine&) = delete;
  Engine& operator=(const Engine&) = delete;

  /// No packet and no presence comes afterwards.
  void stop_receiving();
  /// An empty packet when memory is exhausted. Thread-safe.
  Packet make_packet(std::size_t size) const;
  /// Replaces what all others are told, also those that come later.
  bool publish_presence(Packet packet);
  /// Null when the engine refuses.
  std::unique_ptr<EngineWriter> connect(const std::string& address);

 private:
  struct State;
  explicit Engine(std::unique_ptr<State> state);

  const std::unique_ptr<State> state_;
};

/// Where lines of the engine's log go, for the whole process.
void set_engine_log(void (*log)(const char* line));

}  // namespace dds::rtps
