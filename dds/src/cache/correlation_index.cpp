#include "cache/correlation_index.hpp"

namespace dds {

CorrelationIndex::~CorrelationIndex() {
  buckets_.for_each([](IndexBucket* bucket) { delete bucket; });
  while (idle_ != nullptr) {
    IndexBucket* next = idle_->next;
    delete idle_;
    idle_ = next;
  }
}

IndexBucket* CorrelationIndex::acquire(std::uint64_t key) {
  IndexBucket* bucket = buckets_.find(key);
  if (bucket == nullptr) {
    buckets_.reserve_one();
    bucket = idle_;
    if (bucket != nullptr) {
      idle_ = bucket->next;
      --idle_count_;
    } else {
      bucket = new IndexBucket;
    }
    bucket->key = key;
    buckets_.insert(bucket);
  }
  ++bucket->users;
  return bucket;
}

void CorrelationIndex::release(IndexBucket* bucket) {
  if (--bucket->users != 0) { return; }
  buckets_.erase(bucket);
  if (idle_count_ == kMostIdle) {
    delete bucket;
    return;
  }
  bucket->next = idle_;
  idle_ = bucket;
  ++idle_count_;
}

}  // namespace dds
