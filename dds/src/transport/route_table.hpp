#pragma once

#include <dds/export.hpp>
#include <unordered_map>
#include <vector>

#include "cache/message.hpp"
#include "reader/reader_core.hpp"

namespace dds {

class Filter;

/// Hashes and compares GUIDs for unordered containers.
struct DDS_EXPORT GuidHash {
  std::size_t operator()(const DDS_GUID_t& guid) const;
};
struct GuidEqual {
  bool operator()(const DDS_GUID_t& a, const DDS_GUID_t& b) const { return DDS_GUID_equals(&a, &b); }
};

/// The readers of this process that take the samples of one writer. Not thread-safe: the writer's lock guards it.
class DDS_EXPORT RouteTable {
 public:
  /// A place that a reader has promised for a sample.
  struct Target {
    ReaderCore* reader;
    RemoteWriter* writer;  // as that reader sees it
    ReaderCore::Reservation reservation;
  };
  using Targets = std::vector<Target>;
  /// A reader that had no room, to be waited for without the lock.
  struct Blocked {
    ReaderCore* reader = nullptr;
    std::uint32_t ticket = 0;
  };

  /// Adds the writer to the reader and the reader to the table. `filter` may be null and must outlive the route. Throws
  /// `std::bad_alloc`, having changed nothing.
  void add(ReaderCore& reader, const Filter* filter, DDS_InstanceHandle_t writer, const PublicationData& data,
           bool reliable, Notifications& notifications);
  /// False when there is no such route; otherwise the writer is gone from the reader.
  bool remove(ReaderCore& reader, const Filter* filter, Notifications& notifications);
  void remove_all(Notifications& notifications);
  bool empty() const { return count_ == 0; }

  /// Delivers to every reader whose filter admits the message, or to none; may take over the caller's reference. After
  /// `full`, `blocked` has to be waited for.
  ReaderCore::Admission deliver(RefPtr<Message>& message, Blocked& blocked, Notifications& notifications);
  /// The same in two steps: `targets`, empty before, are to be committed or cancelled. Throws `std::bad_alloc`, having
  /// changed nothing.
  ReaderCore::Admission reserve(const Message& message, Targets& targets, Blocked& blocked) const;
  static void commit(Targets& targets, Notifications& notifications);
  static void cancel(Targets& targets);

 private:
  struct Route {
    ReaderCore* reader;
    RemoteWriter* self;    // the writer as the reader sees it; the reader's
    const Filter* filter;  // null: takes everything that it is offered
  };

  std::vector<Route>* find(const DDS_GUID_t* related_writer);
  void find_targets(const Message& message, Targets& targets) const;

  // Readers whose filter asks for replies to one writer are found by that writer's GUID: a reply costs the same with
  // one requester on the service as with ten thousand.
  std::unordered_map<DDS_GUID_t, std::vector<Route>, GuidHash, GuidEqual> by_related_writer_;
  std::vector<Route> others_;
  Targets scratch_;  // of one delivery; as large as there are routes
  std::size_t count_ = 0;
};

}  // namespace dds
