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
  /// Smaller blocks have sizes of a few kinds, and are kept by size.
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
  /// Multiples of the alignment up to 1 KiB, then powers of two.
  static constexpr std::size_t kFineSizes = 16;
  static constexpr std::size_t kSmallSizes = kFineSizes + 4;

  /// Rounds a size up to one of those, and tells which.
  static std::size_t small_index(std::size_t& size);
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
