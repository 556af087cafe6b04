#pragma once

#include "cache/entry.hpp"
#include "util/intrusive_hash.hpp"

namespace dds {

/// Finds a reader's samples by the sequence number of their related identity. All named indexes of a reader have that
/// same key and so are this one structure. The reader's lock guards it.
class CorrelationIndex {
 public:
  CorrelationIndex() = default;
  CorrelationIndex(const CorrelationIndex&) = delete;
  CorrelationIndex& operator=(const CorrelationIndex&) = delete;
  ~CorrelationIndex();

  static std::uint64_t key(const DDS_SequenceNumber_t& number) {
    return static_cast<std::uint64_t>(static_cast<std::uint32_t>(number.high)) << 32 | number.low;
  }
  /// The bucket of a key; null when it has no user.
  IndexBucket* find(std::uint64_t key) const { return buckets_.find(key); }
  /// The bucket of a key, made if need be, with one more user. Throws `std::bad_alloc`.
  IndexBucket* acquire(std::uint64_t key);
  /// One user less; the last one's bucket must be empty.
  void release(IndexBucket* bucket);

 private:
  static constexpr std::size_t kMostIdle = 1024;

  IntrusiveHash<IndexBucket, &IndexBucket::key, &IndexBucket::next> buckets_;
  IndexBucket* idle_ = nullptr;
  std::size_t idle_count_ = 0;
};

}  // namespace dds
