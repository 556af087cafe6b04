#pragma once

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "filter/filter.hpp"
#include "in_process/topic_bus.hpp"
#include "reader/reader_core.hpp"
#include "writer/writer_core.hpp"

namespace dds {

/// A reader in the in-process transport.
class InProcessReader final : public TransportReader {
 public:
  InProcessReader(const TopicKey& key, ReaderCore& sink, const Filter* filter);
  ~InProcessReader() override;
  void announce() override { bus_->add(*this); }

  ReaderCore& sink() const { return sink_; }
  const Filter* filter() const { return filter_; }
  const std::string& topic_name() const { return key_.topic_name; }
  const std::string& type_name() const { return key_.type_name; }

 private:
  const TopicKey key_;
  ReaderCore& sink_;
  const Filter* const filter_;
  const std::shared_ptr<TopicBus> bus_;
};

/// A writer in the in-process transport: numbers the samples and knows which readers take them. The writing thread
/// delivers.
///
/// The numbering and the delivery of a sample are one step under the writer's lock, which is what puts the samples of
/// several threads into the same order everywhere.
class InProcessWriter final : public TransportWriter {
 public:
  InProcessWriter(const TopicKey& key, WriterCore& sink);
  ~InProcessWriter() override;

  WriterCore& sink() const { return sink_; }
  const std::string& topic_name() const { return key_.topic_name; }
  const std::string& type_name() const { return key_.type_name; }

  void announce() override { bus_->add(*this); }
  DDS_ReturnCode_t write(RefPtr<Message> message, Deadline& deadline, DDS_SampleIdentity_t& assigned) override
      DDS_EXCLUDES(mutex_);

  // For the bus, under its lock.
  /// Throws `std::bad_alloc`; `disconnect` then undoes what was done.
  void connect(InProcessReader& reader, Notifications& notifications) DDS_EXCLUDES(mutex_);
  /// Does nothing for a reader that is not connected.
  void disconnect(InProcessReader& reader, Notifications& notifications) DDS_EXCLUDES(mutex_);

 private:
  /// The way to one matched reader.
  struct Route {
    ReaderCore* reader;
    RemoteWriter* self;    // this writer as the reader sees it; the reader's
    const Filter* filter;  // null: takes everything that it is offered
  };
  struct Target {
    const Route* route;
    ReaderCore::Reservation reservation;
  };
  struct GuidHash {
    std::size_t operator()(const DDS_GUID_t& guid) const;
  };
  struct GuidEqual {
    bool operator()(const DDS_GUID_t& a, const DDS_GUID_t& b) const { return DDS_GUID_equals(&a, &b); }
  };
  /// A reader that had no room, to be waited for without the lock.
  struct Blocked {
    ReaderCore* reader = nullptr;
    std::uint32_t ticket = 0;
  };

  RemoteWriter* remove_route(const InProcessReader& reader) DDS_REQUIRES(mutex_);
  void find_targets(const Message& message) DDS_REQUIRES(mutex_);
  ReaderCore::Admission deliver(RefPtr<Message>& message, Blocked& blocked, Notifications& notifications)
      DDS_REQUIRES(mutex_);
  ReaderCore::Admission deliver_to_all(const RefPtr<Message>& message, Blocked& blocked, Notifications& notifications)
      DDS_REQUIRES(mutex_);

  const TopicKey key_;
  WriterCore& sink_;
  const DDS_GUID_t guid_;
  const std::shared_ptr<TopicBus> bus_;

  Mutex mutex_;
  std::uint64_t last_number_ DDS_GUARDED_BY(mutex_) = 0;
  // Readers whose filter asks for replies to one writer are found by that writer's GUID: a reply costs the same with
  // one requester on the service as with ten thousand.
  std::unordered_map<DDS_GUID_t, std::vector<Route>, GuidHash, GuidEqual> routes_by_related_writer_
      DDS_GUARDED_BY(mutex_);
  std::vector<Route> other_routes_ DDS_GUARDED_BY(mutex_);
  std::vector<Target> targets_ DDS_GUARDED_BY(mutex_);  // scratch of one write; as large as there are routes
  std::size_t route_count_ DDS_GUARDED_BY(mutex_) = 0;
};

}  // namespace dds
