#pragma once

#include <array>
#include <cstddef>

#include "util/mutex.hpp"

namespace dds::rtps {

/// Memory of packets. Blocks are kept for the next packet of about their size: the heap is slow with aligned ones, and
/// gives large ones back to the system, where a page fault for every 4 KiB costs more than all copying. Thread-safe.
class PacketMemory {
 public:
  static constexpr std::size_t kAlignment = 64;
  /// Smaller blocks have sizes that are powers of two, and are kept by size.
  static constexpr std::size_t kLeastLarge = std::size_t{16} * 1024;
  static constexpr std::size_t kMostSmallOctets = std::size_t{4} * 1024 * 1024;
  static constexpr std::size_t kMostLarge = 512;
  /// What a window admits, and what is received meanwhile.
  static constexpr std::size_t kMostLargeOctets = std::size_t{10} * 1024 * 1024;

  struct Block {
    void* memory = nullptr;
    std::size_t size = 0;
  };

  constexpr PacketMemory() = default;
  ~PacketMemory();
  PacketMemory(const PacketMemory&) = delete;
  PacketMemory& operator=(const PacketMemory&) = delete;

  /// A block of at least that size, of which nothing is initialized; its memory is null when there is none.
  Block acquire(std::size_t size) noexcept;
  void release(const Block& block) noexcept;

 private:
  struct Small {
    Small* next;
  };
  static constexpr std::size_t kSmallest = 256;
  static constexpr std::size_t kSmallSizes = 7;  // 256 octets to 16 KiB

  Block acquire_small(std::size_t size) noexcept DDS_EXCLUDES(mutex_);
  void release_small(const Block& block) noexcept DDS_EXCLUDES(mutex_);
  bool take_large(std::size_t size, Block& block) DDS_EXCLUDES(mutex_);

  Mutex mutex_;
  std::array<Small*, kSmallSizes> small_ DDS_GUARDED_BY(mutex_){};
  std::size_t small_octets_ DDS_GUARDED_BY(mutex_) = 0;
  // The longest unused comes first.
  std::array<Block, kMostLarge> large_ DDS_GUARDED_BY(mutex_);
  std::size_t large_count_ DDS_GUARDED_BY(mutex_) = 0;
  std::size_t large_octets_ DDS_GUARDED_BY(mutex_) = 0;
};

}  // namespace dds::rtps
