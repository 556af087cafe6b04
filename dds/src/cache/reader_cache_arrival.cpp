// How samples come into a reader's cache and what they do to the states of instances.

#include <new>

#include "cache/reader_cache.hpp"
#include "util/deadline.hpp"

namespace dds {

ReaderCache::ReaderCache(const DDS_TypePlugin& type, const Limits& limits, bool no_writers_sample)
    : limits_(limits), instances_(type, no_writers_sample) {}

ReaderCache::~ReaderCache() {
  instances_.for_each([](Instance* instance) {
    for (Entry* entry = instance->samples.front(); entry != nullptr;) {
      Entry* const next = SampleList::next(entry);
      delete entry;
      entry = next;
    }
  });
  while (idle_ != nullptr) {
    Entry* next = idle_->in_instance.next;
    delete idle_;
    idle_ = next;
  }
}

Entry* ReaderCache::make_entry() {
  if (idle_ == nullptr) { return new Entry; }
  Entry* entry = idle_;
  idle_ = entry->in_instance.next;
  --idle_count_;
  return entry;
}

void ReaderCache::recycle(Entry* entry) {
  entry->message = RefPtr<Message>();
  if (idle_count_ == kMostIdleEntries) {
    delete entry;
    return;
  }
  entry->in_instance.next = idle_;
  idle_ = entry;
  ++idle_count_;
}

// The end of an instance that the reader knows concerns it even if it does not want the sample that tells of it; then
// the entry takes no room, and only its effect is committed.
Entry* ReaderCache::reserve(RefPtr<Message>& message, RemoteWriter& writer, Refusal& why) {
  Entry* entry = nullptr;
  const bool discarded = is_discarded(*message);
  if (discarded && (message->kind == MessageKind::data || instances_.find(message->key) == nullptr)) {
    why = Refusal::discarded;
    return nullptr;
  }
  try {
    Instance* instance = find_or_add_instance(*message, why);
    if (instance == nullptr) { return nullptr; }
    try {
      entry = make_entry();
    } catch (const std::bad_alloc&) {
      instances_.remove_if_unused(instance);
      throw;
    }
    entry->message = std::move(message);
    entry->instance = instance;
    entry->writer = &writer;
    entry->bucket = nullptr;
    entry->registration = nullptr;
    entry->takes_slot = false;
    ++instance->reservations;
    why = discarded ? Refusal::none : claim_slot(*entry);
    if (why == Refusal::none) {
      if (indexed_) {
        entry->bucket = index_.acquire(CorrelationIndex::key(entry->message->related_identity.sequence_number));
      }
      prepare_registration(*entry);
      return entry;
    }
  } catch (const std::bad_alloc&) { why = Refusal::memory; }
  if (entry != nullptr) {
    message = std::move(entry->message);
    cancel(entry);
  }
  return nullptr;
}

Instance* ReaderCache::find_or_add_instance(const Message& message, Refusal& why) {
  Instance* instance = instances_.find(message.key);
  if (instance != nullptr) { return instance; }
  if (instances_.size() >= limits_.max_instances) {
    why = Refusal::instances;
    return nullptr;
  }
  return instances_.add(message);
}

// A keep-last history replaces its oldest sample once it is full, which takes no further slot; a sample without valid
// data takes none there, since only one of an instance is kept. The depth is never above the limit per instance.
ReaderCache::Refusal ReaderCache::claim_slot(Entry& entry) {
  Instance& instance = *entry.instance;
  const bool valid = entry.message->kind == MessageKind::data;
  const std::size_t valid_samples = instance.samples.size() - instance.invalid_count + instance.reserved_slots;
  entry.takes_slot = limits_.keep_all || (valid && valid_samples < limits_.depth);
  if (!entry.takes_slot) { return Refusal::none; }
  Refusal why = Refusal::none;
  const std::size_t slots = sample_count_ - (limits_.keep_all ? 0 : invalid_count_) + reserved_slots_;
  if (slots >= limits_.max_samples) {
    why = Refusal::samples;
  } else if (limits_.keep_all &&
             instance.samples.size() + instance.reserved_slots >= limits_.max_samples_per_instance) {
    why = Refusal::samples_per_instance;
  }
  entry.takes_slot = why == Refusal::none;
  if (entry.takes_slot) {
    ++instance.reserved_slots;
    ++reserved_slots_;
  }
  return why;
}

// Whoever writes or disposes an instance is one of its writers until it unregisters it or goes.
void ReaderCache::prepare_registration(Entry& entry) {
  if (entry.message->kind == MessageKind::unregister) { return; }
  Instance& instance = *entry.instance;
  RemoteWriter& writer = *entry.writer;
  if (!instances_.keyed()) {
    entry.registration = &writer.registration;
  } else if (instance.last_registration != nullptr && instance.last_registration->writer == &writer) {
    entry.registration = instance.last_registration;
  } else {
    entry.registration = instance.last_registration = &instance.writers[&writer];
    entry.registration->writer = &writer;
  }
  ++entry.registration->reservations;
}

// Several samples of a writer may be reserved and any of them be cancelled: the last one clears up.
void ReaderCache::forget_if_unused(Instance& instance, const Registration& registration) {
  if (!instances_.keyed() || registration.in_force || registration.reservations != 0) { return; }
  if (instance.last_registration == &registration) { instance.last_registration = nullptr; }
  instance.writers.erase(registration.writer);
}

void ReaderCache::drop_reservation(Entry& entry) {
  --entry.instance->reservations;
  if (entry.takes_slot) {
    --entry.instance->reserved_slots;
    --reserved_slots_;
  }
  if (entry.registration != nullptr) { --entry.registration->reservations; }
}

void ReaderCache::cancel(Entry* entry) {
  Instance* instance = entry->instance;
  drop_reservation(*entry);
  if (entry->registration != nullptr) { forget_if_unused(*instance, *entry->registration); }
  if (entry->bucket != nullptr) { index_.release(entry->bucket); }
  recycle(entry);
  instances_.remove_if_unused(instance);
}

// The key may have been discarded since the sample was reserved.
bool ReaderCache::commit(Entry* entry, Notifications& notifications) {
  const bool discarded = is_discarded(*entry->message);
  if (discarded && entry->message->kind == MessageKind::data) {
    cancel(entry);
    count_discarded();
    return false;
  }
  drop_reservation(*entry);
  Instance& instance = *entry->instance;
  const bool has_sample = take_effect(*entry);
  if (!has_sample || discarded) {
    if (has_sample) { count_discarded(); }
    if (entry->bucket != nullptr) { index_.release(entry->bucket); }
    recycle(entry);
    instances_.remove_if_unused(&instance);
    refresh_watches(notifications);
    return false;
  }
  if (indexed_ && entry->bucket == nullptr) { index_late(*entry); }
  entry->read = false;
  entry->reception_time = entry->message->arrival_time;
  entry->disposed_generation = instance.disposed_generation;
  entry->no_writers_generation = instance.no_writers_generation;
  make_room(instance, entry->valid, notifications);
  link(entry, notifications);
  refresh_watches(notifications);
  return true;
}

// For a sample that was reserved before the index was made. Exhausted memory costs it its place in the index, since it
// has been promised to arrive.
void ReaderCache::index_late(Entry& entry) {
  try {
    entry.bucket = index_.acquire(CorrelationIndex::key(entry.message->related_identity.sequence_number));
  } catch (const std::bad_alloc&) {}
}

// Changes the instance as the message says; true when the reader is to get a sample of it.
bool ReaderCache::take_effect(Entry& entry) {
  Instance& instance = *entry.instance;
  const MessageKind kind = entry.message->kind;
  if (entry.registration != nullptr && !entry.registration->in_force) {
    entry.registration->in_force = true;
    ++instance.writer_count;
  }
  entry.valid = kind == MessageKind::data;
  if (entry.valid) {
    if (instance.state == InstanceState::disposed) { ++instance.disposed_generation; }
    if (instance.state == InstanceState::no_writers) { ++instance.no_writers_generation; }
    if (instance.state != InstanceState::alive) { change_state(instance, InstanceState::alive, true); }
    return true;
  }
  bool changed = false;
  if (kind != MessageKind::unregister && instance.state != InstanceState::disposed) {
    change_state(instance, InstanceState::disposed, instance.is_new);
    changed = true;
  }
  if (kind != MessageKind::dispose) {
    changed = (end_registration(instance, *entry.writer) && instances_.with_key_holders()) || changed;
  }
  return changed;
}

// True when the instance was alive and this was its last writer.
bool ReaderCache::end_registration(Instance& instance, RemoteWriter& writer) {
  Registration* registration = &writer.registration;
  if (instances_.keyed()) {
    const auto found = instance.writers.find(&writer);
    if (found == instance.writers.end()) { return false; }
    registration = &found->second;
  }
  if (!registration->in_force) { return false; }
  registration->in_force = false;
  forget_if_unused(instance, *registration);
  if (--instance.writer_count != 0 || instance.state != InstanceState::alive) { return false; }
  change_state(instance, InstanceState::no_writers, instance.is_new);
  return true;
}

bool ReaderCache::remove_writer(RemoteWriter& writer, Notifications& notifications) {
  bool sample_added = false;
  instances_.for_each([&](Instance* instance) {
    if (end_registration(*instance, writer) && instances_.with_key_holders()) {
      sample_added = add_no_writers_sample(*instance, notifications) || sample_added;
    }
    instances_.remove_if_unused(instance);
  });
  refresh_watches(notifications);
  return sample_added;
}

// Nobody waits for room here, so the sample is kept beyond the limits. Exhausted memory costs the sample, not the
// change of state.
bool ReaderCache::add_no_writers_sample(Instance& instance, Notifications& notifications) {
  const std::uint64_t key = CorrelationIndex::key(DDS::SEQUENCE_NUMBER_UNKNOWN);
  if (discarded_.contains(key)) {
    count_discarded();
    return false;
  }
  Entry* entry = nullptr;
  try {
    entry = make_entry();
    entry->bucket = indexed_ ? index_.acquire(key) : nullptr;
  } catch (const std::bad_alloc&) {
    if (entry != nullptr) { recycle(entry); }
    return false;
  }
  entry->message = RefPtr<Message>(instance.key_holder.get());
  entry->instance = &instance;
  entry->read = entry->valid = false;
  entry->reception_time = current_time();
  entry->disposed_generation = instance.disposed_generation;
  entry->no_writers_generation = instance.no_writers_generation;
  make_room(instance, false, notifications);
  link(entry, notifications);
  return true;
}

// In a keep-last history, the oldest sample goes, and likewise the one without valid data when another comes.
void ReaderCache::make_room(Instance& instance, bool valid, Notifications& notifications) {
  if (limits_.keep_all) { return; }
  const std::size_t most = valid ? limits_.depth : 1;
  const std::size_t held = valid ? instance.samples.size() - instance.invalid_count : instance.invalid_count;
  if (held < most) { return; }
  Entry* oldest = instance.samples.front();
  while (oldest->valid != valid) { oldest = SampleList::next(oldest); }
  unlink(oldest, notifications);
  recycle(oldest);
}

void ReaderCache::link(Entry* entry, Notifications& notifications) {
  Instance& instance = *entry->instance;
  if (instance.samples.empty()) { filled_.push_back(&instance); }
  if (instance.unread.empty()) { unread_.push_back(&instance); }
  instance.samples.push_back(entry);
  instance.unread.push_back(entry);
  if (!entry->valid) {
    ++instance.invalid_count;
    ++invalid_count_;
  }
  ++sample_count_;
  count(instance.state_class(), 1);
  if (entry->bucket == nullptr) { return; }
  entry->bucket->samples.push_back(entry);
  entry->bucket->unread.push_back(entry);
  refresh_bucket(*entry->bucket, notifications);
}

void ReaderCache::unlink(Entry* entry, Notifications& notifications) {
  Instance& instance = *entry->instance;
  count(instance.state_class() + (entry->read ? 1 : 0), -1);
  --sample_count_;
  if (!entry->valid) {
    --instance.invalid_count;
    --invalid_count_;
  }
  instance.samples.erase(entry);
  if (instance.samples.empty()) { filled_.erase(&instance); }
  if (!entry->read) {
    instance.unread.erase(entry);
    if (instance.unread.empty()) { unread_.erase(&instance); }
  }
  IndexBucket* bucket = entry->bucket;
  if (bucket == nullptr) { return; }
  bucket->samples.erase(entry);
  if (!entry->read) { bucket->unread.erase(entry); }
  refresh_bucket(*bucket, notifications);
  index_.release(bucket);
}

void ReaderCache::mark_read(Entry* entry, Notifications& notifications) {
  Instance& instance = *entry->instance;
  count(instance.state_class(), -1);
  count(instance.state_class() + 1, 1);
  entry->read = true;
  instance.unread.erase(entry);
  if (instance.unread.empty()) { unread_.erase(&instance); }
  if (entry->bucket == nullptr) { return; }
  entry->bucket->unread.erase(entry);
  refresh_bucket(*entry->bucket, notifications);
}

// Moves the instance's samples to their new classes, all at once.
void ReaderCache::change_state(Instance& instance, InstanceState state, bool is_new) {
  const auto unread = static_cast<std::ptrdiff_t>(instance.unread.size());
  const auto read = static_cast<std::ptrdiff_t>(instance.samples.size()) - unread;
  count(instance.state_class(), -unread);
  count(instance.state_class() + 1, -read);
  instance.state = state;
  instance.is_new = is_new;
  count(instance.state_class(), unread);
  count(instance.state_class() + 1, read);
  states_changed_ = true;
}

void ReaderCache::count(unsigned state_class, std::ptrdiff_t change) {
  class_counts_[state_class] += static_cast<std::size_t>(change);
  const auto bit = static_cast<StateMask>(1u << state_class);
  present_ = static_cast<StateMask>(class_counts_[state_class] != 0 ? present_ | bit : present_ & ~bit);
}

}  // namespace dds
