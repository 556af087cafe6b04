#include "rtps/packet_memory.hpp"

#include <algorithm>
#include <new>

namespace dds::rtps {

namespace {

constexpr std::align_val_t kAligned{PacketMemory::kAlignment};

void give_back(void* memory) noexcept { ::operator delete(memory, kAligned); }

}  // namespace

PacketMemory::~PacketMemory() {
  for (std::size_t i = 0; i < count_; ++i) { give_back(kept_[i].memory); }
}

PacketMemory::Block PacketMemory::acquire(std::size_t size) noexcept {
  Block block;
  if (size >= kLeastKept && take(size, block)) { return block; }
  return {::operator new(size, kAligned, std::nothrow), size};
}

bool PacketMemory::take(std::size_t size, Block& block) {
  constexpr std::size_t looked_at = 16;  // whoever sends packets of many sizes is not to pay for the search
  const MutexLock lock(mutex_);
  for (std::size_t i = count_; i > 0 && count_ - i < looked_at; --i) {
    Block* const found = &kept_[i - 1];
    if (found->size < size || found->size / 2 > size) { continue; }
    block = *found;
    std::move(found + 1, kept_.data() + count_, found);
    --count_;
    octets_ -= block.size;
    return true;
  }
  return false;
}

void PacketMemory::release(const Block& block) noexcept {
  if (block.size < kLeastKept || block.size > kMostOctets) { return give_back(block.memory); }
  const MutexLock lock(mutex_);
  std::size_t dropped = 0;
  for (; count_ - dropped == kMostBlocks || octets_ + block.size > kMostOctets; ++dropped) {
    octets_ -= kept_[dropped].size;
    give_back(kept_[dropped].memory);
  }
  if (dropped > 0) { std::move(kept_.data() + dropped, kept_.data() + count_, kept_.data()); }
  count_ -= dropped;
  kept_[count_++] = block;
  octets_ += block.size;
}

}  // namespace dds::rtps
