#pragma once

#include <memory>
#include <string>

#include "filter/filter.hpp"
#include "in_process/topic_bus.hpp"
#include "reader/reader_core.hpp"
#include "transport/route_table.hpp"
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
  DDS_ReturnCode_t write(const WrittenSample& sample, Deadline& deadline, DDS_SampleIdentity_t& assigned) override
      DDS_EXCLUDES(mutex_);

  // For the bus, under its lock.
  /// Throws `std::bad_alloc`; `disconnect` then undoes what was done.
  void connect(InProcessReader& reader, Notifications& notifications) DDS_EXCLUDES(mutex_);
  /// Does nothing for a reader that is not connected.
  void disconnect(InProcessReader& reader, Notifications& notifications) DDS_EXCLUDES(mutex_);

 private:
  const TopicKey key_;
  WriterCore& sink_;
  const DDS_GUID_t guid_;
  const std::shared_ptr<TopicBus> bus_;

  Mutex mutex_;
  std::uint64_t last_number_ DDS_GUARDED_BY(mutex_) = 0;
  RouteTable routes_ DDS_GUARDED_BY(mutex_);
};

}  // namespace dds
