#pragma once

#include <array>
#include <dds/sample_info.hpp>
#include <dds/status.hpp>
#include <memory>

#include "cache/correlation_index.hpp"
#include "cache/discarded_keys.hpp"
#include "cache/entry.hpp"
#include "cache/instance_map.hpp"
#include "cache/loan_table.hpp"
#include "condition/notifications.hpp"

namespace dds {

/// What a reader holds: its samples in order of reception, by instance and by index key; the states of samples and
/// instances; and what conditions wait for. Knows nothing of locks: the reader's lock guards all of it.
///
/// Samples arrive in two steps, so that a sample for several readers reaches all of them or none: `reserve` does
/// everything that can fail, `commit` cannot.
class ReaderCache {
 public:
  struct Limits {
    bool keep_all;
    std::size_t depth;        // of a keep-last history
    std::size_t max_samples;  // the limits are SIZE_MAX when there is none
    std::size_t max_instances;
    std::size_t max_samples_per_instance;
  };
  /// Why a sample was refused.
  enum class Refusal { none, samples, instances, samples_per_instance, memory, discarded };

  /// Throws `std::bad_alloc`.
  ReaderCache(const DDS_TypePlugin& type, const Limits& limits, bool no_writers_sample);
  ReaderCache(const ReaderCache&) = delete;
  ReaderCache& operator=(const ReaderCache&) = delete;
  ~ReaderCache();

  /// Holds a place for a message, whose reference it takes over; null, and the reason, when there is none.
  Entry* reserve(RefPtr<Message>& message, RemoteWriter& writer, Refusal& why);
  void cancel(Entry* entry);
  /// Lets the reserved message take effect; true when the reader has a new sample.
  bool commit(Entry* entry, Notifications& notifications);
  /// Ends what a writer that is gone was writing; true when the reader has a new sample.
  bool remove_writer(RemoteWriter& writer, Notifications& notifications);

  /// Which samples a read or take is about.
  struct Selection {
    StateMask states;
    IndexBucket* bucket;  // null for all
  };
  /// Reads or takes at most `max_samples` into a fresh loan; null when nothing matches. Throws `std::bad_alloc`, having
  /// changed nothing.
  Loan* get(const Selection& selection, std::size_t max_samples, bool take, Notifications& notifications);
  LoanTable& loans() { return loans_; }

  /// From now on samples with that index key are refused as `discarded`, and not taken in when they have been reserved
  /// already. Removes at most `most` of those that are held, and hands over the references to their messages; the
  /// number of these. Throws `std::bad_alloc`, having changed nothing.
  std::size_t discard(std::uint64_t key, Message** messages, std::size_t most, Notifications& notifications);
  /// A sample that was refused as discarded is given up for good.
  void count_discarded() { ++discarded_count_; }
  DDS_LongLong discarded_count() const { return discarded_count_; }

  /// Indexes the samples from now on, those held already included. Throws `std::bad_alloc`, having changed nothing.
  void enable_index();
  bool indexed() const { return indexed_; }
  /// Watches for samples of the states, of all samples or of those with an index key. Throws `std::bad_alloc`.
  void add_watch(Watch& watch, StateMask states, const std::uint64_t* key, Notifications& notifications);
  void remove_watch(Watch& watch);

  const InstanceMap& instances() const { return instances_; }

 private:
  static constexpr std::size_t kMostIdleEntries = 1024;

  Entry* make_entry();
  void recycle(Entry* entry);
  Instance* find_or_add_instance(const Message& message, Refusal& why);
  Refusal claim_slot(Entry& entry);
  void prepare_registration(Entry& entry);
  void forget_if_unused(Instance& instance, const Registration& registration);
  void drop_reservation(Entry& entry);
  bool is_discarded(const Message& message) const {
    return discarded_.contains(CorrelationIndex::key(message.related_identity.sequence_number));
  }

  void index_late(Entry& entry);
  bool take_effect(Entry& entry);
  bool end_registration(Instance& instance, RemoteWriter& writer);
  bool add_no_writers_sample(Instance& instance, Notifications& notifications);
  void make_room(Instance& instance, bool valid, Notifications& notifications);
  void link(Entry* entry, Notifications& notifications);
  void unlink(Entry* entry, Notifications& notifications);
  void mark_read(Entry* entry, Notifications& notifications);
  void change_state(Instance& instance, InstanceState state, bool is_new);
  void count(unsigned state_class, std::ptrdiff_t change);

  std::size_t upper_bound(const Selection& selection) const;
  void select(const Selection& selection, std::size_t most);
  void describe(const Entry& entry, DDS_SampleInfo& info);
  void refresh_bucket(const IndexBucket& bucket, Notifications& notifications);
  void refresh_watches(Notifications& notifications);

  const Limits limits_;
  InstanceMap instances_;
  CorrelationIndex index_;
  LoanTable loans_;
  bool indexed_ = false;
  DiscardedKeys discarded_;
  DDS_LongLong discarded_count_ = 0;  // samples

  std::size_t sample_count_ = 0;
  std::size_t invalid_count_ = 0;  // samples without valid data, of all instances
  std::size_t reserved_slots_ = 0;
  IntrusiveList<Instance, &Instance::in_filled> filled_;  // instances with samples
  IntrusiveList<Instance, &Instance::in_unread> unread_;  // instances with unread samples
  std::array<std::size_t, 12> class_counts_{};            // samples of each class
  StateMask present_ = 0;                                 // classes that have samples
  StateMask announced_ = 0;                               // present_ as the watches know it
  bool states_changed_ = false;                           // since the stateful watches were refreshed
  WatchList watches_;                                     // of all samples
  StatefulWatchList stateful_watches_;

  std::vector<Entry*> selected_;  // scratch of one read or take
  std::uint64_t visit_ = 0;
  Entry* idle_ = nullptr;  // chained through in_instance.next
  std::size_t idle_count_ = 0;
};

}  // namespace dds
