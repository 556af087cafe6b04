#pragma once

#include <dds/identity.hpp>
#include <dds/status.hpp>
#include <dds/write_params.hpp>
#include <memory>
#include <string>

#include "cache/message.hpp"
#include "util/deadline.hpp"

namespace dds {

class Filter;
class ReaderCore;
class WriterCore;

/// What both ends must have in common to meet.
struct TopicKey {
  DDS_DomainId_t domain;
  std::string topic_name;
  std::string type_name;
};

/// What the application writes, lent for the call.
struct WrittenSample {
  MessageKind kind;
  const void* data;  // the application's sample; of anything but data, the key counts alone
  const DDS_WriteParams_t& params;
};

/// A writer in a transport; destroying it withdraws it.
class TransportWriter {
 public:
  virtual ~TransportWriter() = default;
  /// Makes the writer known: it is matched with the readers that are there, and both ends are told. Once. Throws
  /// `std::bad_alloc`.
  virtual void announce() = 0;
  /// Gives the sample the next identity, with the GUID of the sink, and delivers it to every matched reader whose
  /// filter admits it, or to none: `DDS_RETCODE_TIMEOUT` when a reader had no room until the deadline,
  /// `DDS_RETCODE_OUT_OF_RESOURCES`, or what the sink says of data that cannot be carried. On success `assigned` has
  /// the identity before any reader has the sample; on failure it is automatic. Thread-safe.
  virtual DDS_ReturnCode_t write(const WrittenSample& sample, Deadline& deadline, DDS_SampleIdentity_t& assigned) = 0;
};

/// A reader in a transport; destroying it withdraws it, after which nothing is delivered to its sink.
class TransportReader {
 public:
  virtual ~TransportReader() = default;
  /// As for a writer.
  virtual void announce() = 0;
};

/// Carries samples between writers and the readers that match them. The sinks must outlive the endpoints. Creating
/// throws `std::bad_alloc`.
class Transport {
 public:
  virtual ~Transport() = default;
  virtual std::unique_ptr<TransportWriter> create_writer(const TopicKey& key, WriterCore& sink) = 0;
  /// `filter` may be null; it must outlive the endpoint.
  virtual std::unique_ptr<TransportReader> create_reader(const TopicKey& key, ReaderCore& sink,
                                                         const Filter* filter) = 0;
  virtual DDS_TransportStatistics statistics() const = 0;
};

}  // namespace dds
