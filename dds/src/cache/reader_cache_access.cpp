// How samples are read and taken from a reader's cache, and how conditions learn of them.

#include <algorithm>

#include "cache/reader_cache.hpp"
#include "condition/condition_core.hpp"

namespace dds {

StateMask state_mask(DDS_SampleStateMask sample_states, DDS_ViewStateMask view_states,
                     DDS_InstanceStateMask instance_states) {
  const bool any_instance = (instance_states & 7) == 7;
  if ((view_states & 3) == 3 && any_instance) {
    const unsigned read = (sample_states & DDS_READ_SAMPLE_STATE) != 0 ? kReadStates : 0;
    const unsigned unread = (sample_states & DDS_NOT_READ_SAMPLE_STATE) != 0 ? kNotReadStates : 0;
    return static_cast<StateMask>(read | unread);
  }
  unsigned mask = 0;
  for (unsigned state_class = 0; state_class < 12; ++state_class) {
    const DDS_SampleStateMask sample = (state_class & 1) != 0 ? DDS_READ_SAMPLE_STATE : DDS_NOT_READ_SAMPLE_STATE;
    const DDS_ViewStateMask view = (state_class & 2) != 0 ? DDS_NOT_NEW_VIEW_STATE : DDS_NEW_VIEW_STATE;
    const DDS_InstanceStateMask instance = 1u << (state_class >> 2);
    if ((sample_states & sample) != 0 && (view_states & view) != 0 && (instance_states & instance) != 0) {
      mask |= 1u << state_class;
    }
  }
  return static_cast<StateMask>(mask);
}

namespace {

bool selects(StateMask states, unsigned state_class) { return (states >> state_class & 1) != 0; }

bool selects(StateMask states, const Entry& entry) {
  return selects(states, entry.instance->state_class() + (entry.read ? 1 : 0));
}

/// Whether the states leave view and instance states open, so that counting tells what is selected.
bool depends_on_reading_alone(StateMask states) {
  const unsigned read = states & kReadStates;
  const unsigned unread = states & kNotReadStates;
  return (read == 0 || read == kReadStates) && (unread == 0 || unread == kNotReadStates);
}

bool any_selected(StateMask states, const IndexBucket& bucket) {
  if (depends_on_reading_alone(states)) {
    const bool unread = (states & kNotReadStates) != 0 && !bucket.unread.empty();
    return unread || ((states & kReadStates) != 0 && bucket.samples.size() > bucket.unread.size());
  }
  for (const Entry* entry = bucket.samples.front(); entry != nullptr; entry = BucketList::next(entry)) {
    if (selects(states, *entry)) { return true; }
  }
  return false;
}

}  // namespace

std::size_t ReaderCache::upper_bound(const Selection& selection) const {
  if (selection.bucket != nullptr) {
    return (selection.states & kReadStates) == 0 ? selection.bucket->unread.size() : selection.bucket->samples.size();
  }
  std::size_t total = 0;
  for (unsigned present = present_ & selection.states; present != 0; present &= present - 1) {
    total += class_counts_[static_cast<unsigned>(__builtin_ctz(present))];
  }
  return total;
}

// Unread samples are found through lists of their own, whatever else the reader holds.
void ReaderCache::select(const Selection& selection, std::size_t most) {
  const StateMask states = selection.states;
  const auto collect = [&](Entry* first, auto next) {
    for (Entry* entry = first; entry != nullptr && selected_.size() < most; entry = next(entry)) {
      if (selects(states, *entry)) { selected_.push_back(entry); }
    }
  };
  const bool unread_only = (states & kReadStates) == 0;
  if (const IndexBucket* bucket = selection.bucket) {
    unread_only ? collect(bucket->unread.front(), BucketUnreadList::next)
                : collect(bucket->samples.front(), BucketList::next);
    return;
  }
  if (unread_only) {
    for (Instance* i = unread_.front(); i != nullptr && selected_.size() < most; i = unread_.next(i)) {
      if (selects(states, i->state_class())) { collect(i->unread.front(), UnreadList::next); }
    }
    return;
  }
  for (Instance* i = filled_.front(); i != nullptr && selected_.size() < most; i = filled_.next(i)) {
    if ((states >> i->state_class() & 3) != 0) { collect(i->samples.front(), SampleList::next); }
  }
}

Loan* ReaderCache::get(const Selection& selection, std::size_t max_samples, bool take, Notifications& notifications) {
  const std::size_t most = std::min(max_samples, upper_bound(selection));
  if (most == 0) { return nullptr; }
  selected_.clear();
  selected_.reserve(most);
  select(selection, most);
  if (selected_.empty()) { return nullptr; }
  Loan* loan = loans_.prepare(selected_.size());

  // Backwards, because a sample's ranks count what follows it.
  ++visit_;
  for (std::size_t i = selected_.size(); i-- > 0;) { describe(*selected_[i], loan->infos[i]); }

  for (Entry* entry : selected_) {
    Instance& instance = *entry->instance;
    if (instance.is_new) { change_state(instance, instance.state, false); }
    loan->add(entry->message->sample(), entry->message.get());
    if (take) {
      unlink(entry, notifications);
      entry->message.release();  // the loan has it now
      recycle(entry);
      instances_.remove_if_unused(&instance);
    } else {
      entry->message->ref();
      if (!entry->read) { mark_read(entry, notifications); }
    }
  }
  refresh_watches(notifications);
  loans_.lend(loan);
  return loan;
}

std::size_t ReaderCache::discard(std::uint64_t key, Message** messages, std::size_t most,
                                 Notifications& notifications) {
  discarded_.add(key);
  std::size_t count = 0;
  for (; count < most; ++count) {
    const IndexBucket* bucket = index_.find(key);
    Entry* entry = bucket == nullptr ? nullptr : bucket->samples.front();
    if (entry == nullptr) { break; }
    Instance& instance = *entry->instance;
    unlink(entry, notifications);
    messages[count] = entry->message.release();
    recycle(entry);
    instances_.remove_if_unused(&instance);
    count_discarded();
  }
  refresh_watches(notifications);
  return count;
}

void ReaderCache::describe(const Entry& entry, DDS_SampleInfo& info) {
  Instance& instance = *entry.instance;
  const Message& message = *entry.message;
  const DDS_Long generation = entry.disposed_generation + entry.no_writers_generation;
  if (instance.visit != visit_) {
    instance.visit = visit_;
    instance.later_samples = 0;
    instance.newest_generation = generation;
  }
  info.sample_state = entry.read ? DDS_READ_SAMPLE_STATE : DDS_NOT_READ_SAMPLE_STATE;
  info.view_state = instance.is_new ? DDS_NEW_VIEW_STATE : DDS_NOT_NEW_VIEW_STATE;
  info.instance_state = 1u << static_cast<unsigned>(instance.state);
  info.source_timestamp = message.source_time;
  info.reception_timestamp = entry.reception_time;
  info.instance_handle = instance.handle;
  info.publication_handle = message.publication_handle;
  info.disposed_generation_count = entry.disposed_generation;
  info.no_writers_generation_count = entry.no_writers_generation;
  info.sample_rank = instance.later_samples++;
  info.generation_rank = instance.newest_generation - generation;
  info.absolute_generation_rank = instance.generation() - generation;
  info.valid_data = entry.valid;
  info.sample_identity = message.identity;
  info.related_sample_identity = message.related_identity;
}

void ReaderCache::enable_index() {
  if (indexed_) { return; }
  std::vector<IndexBucket*> buckets;
  const auto for_each_sample = [this](auto function) {
    for (Instance* i = filled_.front(); i != nullptr; i = filled_.next(i)) {
      for (Entry* entry = i->samples.front(); entry != nullptr; entry = SampleList::next(entry)) { function(entry); }
    }
  };
  buckets.reserve(sample_count_);
  try {
    for_each_sample([&](const Entry* entry) {
      buckets.push_back(index_.acquire(CorrelationIndex::key(entry->message->related_identity.sequence_number)));
    });
  } catch (const std::bad_alloc&) {
    for (IndexBucket* bucket : buckets) { index_.release(bucket); }
    throw;
  }
  auto bucket = buckets.begin();
  for_each_sample([&](Entry* entry) {
    entry->bucket = *bucket++;
    entry->bucket->samples.push_back(entry);
    if (!entry->read) { entry->bucket->unread.push_back(entry); }
  });
  indexed_ = true;
}

void ReaderCache::add_watch(Watch& watch, StateMask states, const std::uint64_t* key, Notifications& notifications) {
  watch.states = states;
  watch.bucket = nullptr;
  if (key == nullptr) {
    watches_.push_back(&watch);
    watch.condition->set((present_ & states) != 0, notifications);
    return;
  }
  watch.bucket = index_.acquire(*key);
  watch.bucket->watches.push_back(&watch);
  if (!depends_on_reading_alone(states)) { stateful_watches_.push_back(&watch); }
  watch.condition->set(any_selected(states, *watch.bucket), notifications);
}

void ReaderCache::remove_watch(Watch& watch) {
  if (watch.bucket == nullptr) {
    watches_.erase(&watch);
    return;
  }
  if (!depends_on_reading_alone(watch.states)) { stateful_watches_.erase(&watch); }
  watch.bucket->watches.erase(&watch);
  index_.release(watch.bucket);
}

void ReaderCache::refresh_bucket(const IndexBucket& bucket, Notifications& notifications) {
  for (Watch* watch = bucket.watches.front(); watch != nullptr; watch = WatchList::next(watch)) {
    watch->condition->set(any_selected(watch->states, bucket), notifications);
  }
}

// Conditions on all samples change only when a class of samples appears or vanishes.
void ReaderCache::refresh_watches(Notifications& notifications) {
  if (announced_ != present_) {
    announced_ = present_;
    for (Watch* watch = watches_.front(); watch != nullptr; watch = WatchList::next(watch)) {
      watch->condition->set((present_ & watch->states) != 0, notifications);
    }
  }
  if (!states_changed_) { return; }
  states_changed_ = false;
  for (Watch* watch = stateful_watches_.front(); watch != nullptr; watch = StatefulWatchList::next(watch)) {
    watch->condition->set(any_selected(watch->states, *watch->bucket), notifications);
  }
}

}  // namespace dds
