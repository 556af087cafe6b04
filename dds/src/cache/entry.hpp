#pragma once

#include <cstddef>
#include <cstdint>
#include <dds/basic_types.hpp>
#include <dds/time.hpp>
#include <string>
#include <unordered_map>

#include "cache/message.hpp"
#include "transport/endpoint_data.hpp"
#include "util/intrusive_list.hpp"

namespace dds {

class ConditionCore;
struct IndexBucket;
struct Instance;

/// A set of the twelve classes of samples: read or not, of a new instance or not, of an instance in one of three
/// states.
using StateMask = std::uint16_t;
constexpr StateMask kAnyState = 0xfff;
constexpr StateMask kReadStates = 0xaaa;     // the odd classes
constexpr StateMask kNotReadStates = 0x555;  // the even classes

/// The classes that the three masks of the API select.
StateMask state_mask(DDS_SampleStateMask sample_states, DDS_ViewStateMask view_states,
                     DDS_InstanceStateMask instance_states);

struct RemoteWriter;

/// Whether a writer is one of an instance's. Made with the first reservation, since that may fail; in force from the
/// first commit on.
struct Registration {
  RemoteWriter* writer = nullptr;
  std::size_t reservations = 0;  // that refer to it
  bool in_force = false;
};

/// A matched writer as one reader sees it.
struct RemoteWriter {
  DDS_InstanceHandle_t handle = DDS_HANDLE_NIL;
  PublicationData data;
  bool reliable = false;           // both ends are
  Registration registration;       // with the only instance of a type without key
  std::uint32_t space_ticket = 0;  // for the wait after this writer found the reader full
};

/// A sample in a reader's cache. Its owner is the cache.
struct Entry {
  ListHook<Entry> in_instance;
  ListHook<Entry> in_unread;
  ListHook<Entry> in_bucket;
  ListHook<Entry> in_bucket_unread;
  RefPtr<Message> message;
  Instance* instance = nullptr;
  IndexBucket* bucket = nullptr;         // null while the reader has no index
  RemoteWriter* writer = nullptr;        // only while reserved
  Registration* registration = nullptr;  // the same; null for a sample that makes its writer none of the instance's
  DDS_Time_t reception_time;
  DDS_Long disposed_generation = 0;
  DDS_Long no_writers_generation = 0;
  bool read = false;
  bool valid = true;
  bool takes_slot = false;  // while reserved: counts towards the limits
};

using SampleList = IntrusiveList<Entry, &Entry::in_instance>;
using UnreadList = IntrusiveList<Entry, &Entry::in_unread>;
using BucketList = IntrusiveList<Entry, &Entry::in_bucket>;
using BucketUnreadList = IntrusiveList<Entry, &Entry::in_bucket_unread>;

enum class InstanceState : unsigned { alive = 0, disposed = 1, no_writers = 2 };

/// What a reader knows of one instance.
struct Instance {
  std::string key;
  DDS_InstanceHandle_t handle = DDS_HANDLE_NIL;
  InstanceState state = InstanceState::alive;
  bool is_new = true;
  DDS_Long disposed_generation = 0;
  DDS_Long no_writers_generation = 0;
  SampleList samples;  // in order of reception, as every list of samples
  UnreadList unread;
  std::size_t invalid_count = 0;  // samples without valid data
  std::size_t reserved_slots = 0;
  std::size_t reservations = 0;
  std::unordered_map<RemoteWriter*, Registration> writers;  // of a keyed instance
  Registration* last_registration = nullptr;                // one of them that need not be looked up
  std::size_t writer_count = 0;                             // whose registration is in force
  RefPtr<Message>
      key_holder;  // the data of a sample that tells of a vanished writer; null when no such sample is wanted
  ListHook<Instance> in_filled;
  ListHook<Instance> in_unread;

  // Scratch of one read or take.
  std::uint64_t visit = 0;
  DDS_Long later_samples = 0;
  DDS_Long newest_generation = 0;

  DDS_Long generation() const { return disposed_generation + no_writers_generation; }
  /// Class of the instance's samples that have not been read; those that have are one class above.
  unsigned state_class() const { return (is_new ? 0u : 2u) + 4u * static_cast<unsigned>(state); }
};

/// What makes a read condition true: a sample of the states, among those of a bucket or among all of the reader.
/// Belongs to the condition.
struct Watch {
  StateMask states = 0;
  IndexBucket* bucket = nullptr;
  ConditionCore* condition = nullptr;
  ListHook<Watch> in_owner;     // the bucket's or the cache's list
  ListHook<Watch> in_stateful;  // those of a bucket that depend on the state of instances
};
using WatchList = IntrusiveList<Watch, &Watch::in_owner>;
using StatefulWatchList = IntrusiveList<Watch, &Watch::in_stateful>;

/// The samples with one key of the index, and the conditions on that key. Lives as long as it has users.
struct IndexBucket {
  std::uint64_t key = 0;
  IndexBucket* next = nullptr;  // hash chain or idle list
  std::size_t users = 0;        // entries, reservations and watches
  BucketList samples;
  BucketUnreadList unread;
  WatchList watches;
};

}  // namespace dds
