#pragma once

#include <array>
#include <cstddef>

#include "util/mutex.hpp"

namespace dds::rtps {

/// Memory of packets. Large blocks are kept for the next packet of about their size: the heap gives them back to the
/// system, and a page fault for every 4 KiB of a packet costs more than all copying of it. Thread-safe.
class PacketMemory {
 public:
  static constexpr std::size_t kAlignment = 64;
  /// Smaller blocks the heap keeps itself.
  static constexpr std::size_t kLeastKept = std::size_t{16} * 1024;
  static constexpr std::size_t kMostBlocks = 512;
  /// What a window admits, and what is received meanwhile.
  static constexpr std::size_t kMostOctets = std::size_t{10} * 1024 * 1024;

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
  bool take(std::size_t size, Block& block) DDS_EXCLUDES(mutex_);

  Mutex mutex_;
  // The longest unused comes first.
  std::array<Block, kMostBlocks> kept_ DDS_GUARDED_BY(mutex_);
  std::size_t count_ DDS_GUARDED_BY(mutex_) = 0;
  std::size_t octets_ DDS_GUARDED_BY(mutex_) = 0;
};

}  // namespace dds::rtps
