#include "rtps/packet_memory.hpp"

#include <algorithm>
#include <new>

namespace dds::rtps {

namespace {

constexpr std::align_val_t kAligned{PacketMemory::kAlignment};

PacketMemory::Block allocate(std::size_t size) noexcept { return {::operator new(size, kAligned, std::nothrow), size}; }
void give_back(void* memory) noexcept { ::operator delete(memory, kAligned); }

}  // namespace

PacketMemory::~PacketMemory() {
  for (Small* first : small_) {
    while (first != nullptr) {
      Small* const next = first->next;
      give_back(first);
      first = next;
    }
  }
  for (std::size_t i = 0; i < large_count_; ++i) { give_back(large_[i].memory); }
}

PacketMemory::Block PacketMemory::acquire(std::size_t size) noexcept {
  if (size <= kLeastLarge) { return acquire_small(size); }
  Block block;
  return take_large(size, block) ? block : allocate(size);
}

std::size_t PacketMemory::small_index(std::size_t& size) {
  std::size_t index = (size + kAlignment - 1) / kAlignment;
  if (index <= kFineSizes) {
    size = index * kAlignment;
    return index - 1;
  }
  std::size_t rounded = 2 * kFineSizes * kAlignment;
  for (index = kFineSizes; rounded < size; rounded *= 2) { ++index; }
  size = rounded;
  return index;
}

PacketMemory::Block PacketMemory::acquire_small(std::size_t size) noexcept {
  const std::size_t index = small_index(size);
  {
    const MutexLock lock(mutex_);
    if (Small* const found = small_[index]) {
      small_[index] = found->next;
      small_octets_ -= size;
      // Thousands of packets may have been on their way since it was last touched.
      __builtin_prefetch(found->next, 1);
      return {found, size};
    }
  }
  return allocate(size);
}

void PacketMemory::release_small(const Block& block) noexcept {
  std::size_t size = block.size;
  const std::size_t index = small_index(size);
  {
    const MutexLock lock(mutex_);
    if (small_octets_ + block.size <= kMostSmallOctets) {
      small_[index] = new (block.memory) Small{small_[index]};
      small_octets_ += block.size;
      return;
    }
  }
  give_back(block.memory);
}

bool PacketMemory::take_large(std::size_t size, Block& block) {
  constexpr std::size_t looked_at = 16;  // whoever sends packets of many sizes is not to pay for the search
  const MutexLock lock(mutex_);
  for (std::size_t i = large_count_; i > 0 && large_count_ - i < looked_at; --i) {
    Block* const found = &large_[i - 1];
    if (found->size < size || found->size / 2 > size) { continue; }
    block = *found;
    std::move(found + 1, large_.data() + large_count_, found);
    --large_count_;
    large_octets_ -= block.size;
    return true;
  }
  return false;
}

void PacketMemory::release(const Block& block) noexcept {
  if (block.size <= kLeastLarge) { return release_small(block); }
  if (block.size > kMostLargeOctets) { return give_back(block.memory); }
  const MutexLock lock(mutex_);
  std::size_t dropped = 0;
  for (; large_count_ - dropped == kMostLarge || large_octets_ + block.size > kMostLargeOctets; ++dropped) {
    large_octets_ -= large_[dropped].size;
    give_back(large_[dropped].memory);
  }
  if (dropped > 0) { std::move(large_.data() + dropped, large_.data() + large_count_, large_.data()); }
  large_count_ -= dropped;
  large_[large_count_++] = block;
  large_octets_ += block.size;
}

}  // namespace dds::rtps
