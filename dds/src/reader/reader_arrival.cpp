// A reader as the sink of its transport.

#include <algorithm>
#include <memory>
#include <utility>

#include "condition/status_counts.hpp"
#include "reader/reader_core.hpp"

namespace dds {

RemoteWriter* ReaderCore::add_writer(DDS_InstanceHandle_t handle, PublicationData data, bool reliable,
                                     Notifications& notifications) {
  auto writer = std::make_unique<RemoteWriter>();
  writer->handle = handle;
  writer->data = std::move(data);
  writer->reliable = reliable && qos_.reliability.kind == DDS_RELIABLE_RELIABILITY_QOS;
  const MutexLock lock(mutex_);
  writers_.push_back(writer.get());
  count_match(matched_, &DDS_SubscriptionMatchedStatus::last_publication_handle, handle);
  match_conditions_.raise(notifications);
  raise(DDS_SUBSCRIPTION_MATCHED_STATUS, notifications);
  return writer.release();
}

void ReaderCore::remove_writer(RemoteWriter* writer, Notifications& notifications) {
  const std::unique_ptr<RemoteWriter> owned(writer);
  const MutexLock lock(mutex_);
  writers_.erase(std::find(writers_.begin(), writers_.end(), writer));
  count_unmatch(matched_, &DDS_SubscriptionMatchedStatus::last_publication_handle, writer->handle);
  match_conditions_.raise(notifications);
  if (cache_.remove_writer(*writer, notifications)) { raise(DDS_DATA_AVAILABLE_STATUS, notifications); }
  raise(DDS_SUBSCRIPTION_MATCHED_STATUS, notifications);
  if (bounded_) { notify_space(); }  // its instances may have gone with it
}

ReaderCore::Admission ReaderCore::deliver(RefPtr<Message>& message, RemoteWriter& writer,
                                          Notifications& notifications) {
  Reservation reservation;
  const MutexLock lock(mutex_);
  const Admission admission = try_reserve(message, writer, reservation);
  if (admission == Admission::accepted || admission == Admission::dropped) { settle(reservation, notifications); }
  return admission;
}

ReaderCore::Admission ReaderCore::reserve(RefPtr<Message>& message, RemoteWriter& writer, Reservation& reservation) {
  const MutexLock lock(mutex_);
  return try_reserve(message, writer, reservation);
}

void ReaderCore::commit(const Reservation& reservation, Notifications& notifications) {
  const MutexLock lock(mutex_);
  settle(reservation, notifications);
}

void ReaderCore::cancel(const Reservation& reservation) {
  if (reservation.entry == nullptr) { return; }
  {
    const MutexLock lock(mutex_);
    cache_.cancel(reservation.entry);
  }
  notify_space();  // the place may be what another writer waits for
}

bool ReaderCore::knows(const Message& message) {
  const MutexLock lock(mutex_);
  return cache_.instances().find(message.key) != nullptr;
}

ReaderCore::Admission ReaderCore::try_reserve(RefPtr<Message>& message, RemoteWriter& writer,
                                              Reservation& reservation) {
  reservation.entry = cache_.reserve(message, writer, reservation.why);
  if (reservation.entry != nullptr) { return Admission::accepted; }
  if (reservation.why == ReaderCache::Refusal::memory) { return Admission::no_memory; }
  if (reservation.why == ReaderCache::Refusal::discarded) { return Admission::dropped; }
  if (!writer.reliable) {
    const Instance* known = cache_.instances().find(message->key);
    reservation.instance = known == nullptr ? DDS_HANDLE_NIL : known->handle;
    return Admission::dropped;
  }
  writer.space_ticket = space_.ticket();
  blocked_.fetch_add(1, std::memory_order_relaxed);
  return Admission::full;
}

void ReaderCore::settle(const Reservation& reservation, Notifications& notifications) {
  if (reservation.entry != nullptr) {
    if (cache_.commit(reservation.entry, notifications)) {
      raise(DDS_DATA_AVAILABLE_STATUS, notifications);
    } else if (bounded_) {
      notify_space();  // a slot was not needed after all, or an instance has gone
    }
    return;
  }
  if (reservation.why == ReaderCache::Refusal::discarded) {
    cache_.count_discarded();
    return;
  }
  count_one(lost_);
  count_one(rejected_);
  rejected_.last_reason = reservation.why == ReaderCache::Refusal::samples ? DDS_REJECTED_BY_SAMPLES_LIMIT
                          : reservation.why == ReaderCache::Refusal::instances
                              ? DDS_REJECTED_BY_INSTANCES_LIMIT
                              : DDS_REJECTED_BY_SAMPLES_PER_INSTANCE_LIMIT;
  rejected_.last_instance_handle = reservation.instance;
  raise(DDS_SAMPLE_LOST_STATUS, notifications);
  raise(DDS_SAMPLE_REJECTED_STATUS, notifications);
}

void ReaderCore::notify_space() {
  space_.notify();
  if (SpaceListener* listener = space_listener_.load(std::memory_order_acquire)) { listener->on_space(); }
}

void ReaderCore::wait_for_space(std::uint32_t ticket, Deadline& deadline) {
  space_.wait(ticket, deadline);
  // Whoever waits in `release_blocked_writers` may go on and destroy this as soon as the count is 0.
  if (blocked_.fetch_sub(1, std::memory_order_acq_rel) == 1) { futex_wake(blocked_, 0x7fffffff); }
}

void ReaderCore::release_blocked_writers() {
  Deadline never(DDS_DURATION_INFINITE);
  notify_space();
  while (const std::uint32_t blocked = blocked_.load(std::memory_order_acquire)) {
    futex_wait(blocked_, blocked, never);
  }
}

}  // namespace dds
