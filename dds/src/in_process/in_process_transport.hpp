#pragma once

#include "transport/transport.hpp"

namespace dds {

/// Carries samples between the participants of one process. Starts no thread.
class InProcessTransport final : public Transport {
 public:
  std::unique_ptr<TransportWriter> create_writer(const TopicKey& key, WriterCore& sink) override;
  std::unique_ptr<TransportReader> create_reader(const TopicKey& key, ReaderCore& sink, const Filter* filter) override;
  DDS_TransportStatistics statistics() const override { return {}; }
};

}  // namespace dds
