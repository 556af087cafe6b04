#include "in_process/in_process_transport.hpp"

#include "in_process/in_process_endpoints.hpp"

namespace dds {

std::unique_ptr<TransportWriter> InProcessTransport::create_writer(const TopicKey& key, WriterCore& sink) {
  return std::make_unique<InProcessWriter>(key, sink);
}

std::unique_ptr<TransportReader> InProcessTransport::create_reader(const TopicKey& key, ReaderCore& sink,
                                                                   const Filter* filter) {
  return std::make_unique<InProcessReader>(key, sink, filter);
}

}  // namespace dds
