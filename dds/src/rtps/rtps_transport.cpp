// The transport between processes and hosts, and how the layer gets at it.

#include <dds/export.hpp>
#include <new>
#include <system_error>

#include "log/log.hpp"
#include "rtps/hub.hpp"
#include "rtps/properties.hpp"
#include "transport/load_transport.hpp"

namespace dds::rtps {

namespace {

class RtpsTransport final : public Transport {
 public:
  explicit RtpsTransport(std::unique_ptr<Hub> hub) : hub_(std::move(hub)) {}
  std::unique_ptr<TransportWriter> create_writer(const TopicKey& key, WriterCore& sink) override {
    return std::make_unique<RtpsWriter>(*hub_, key, sink);
  }
  std::unique_ptr<TransportReader> create_reader(const TopicKey& key, ReaderCore& sink, const Filter* filter) override {
    return std::make_unique<RtpsReader>(*hub_, key, sink, filter);
  }
  DDS_TransportStatistics statistics() const override { return hub_->statistics(); }

 private:
  const std::unique_ptr<Hub> hub_;
};

void log_engine_line(const char* line) { ListenerThreads::log_somewhere("engine", line); }

}  // namespace

}  // namespace dds::rtps

extern "C" DDS_EXPORT dds::Transport* zemtra_dds_make_transport(DDS_DomainId_t domain,
                                                                const DDS_DomainParticipantQos& qos,
                                                                const char* context) {
  using namespace dds::rtps;
  std::string error;
  EngineConfig config;
  if (!read_properties(domain, qos.property, config, error)) {
    DDS_LOG_FAILURE(context, DDS_LOG_UNSUPPORTED_s, "%s", error.c_str());
    return nullptr;
  }
  set_engine_log(log_engine_line);
  try {
    std::unique_ptr<Hub> hub = Hub::open(config, error);
    if (hub != nullptr) { return new RtpsTransport(std::move(hub)); }
  } catch (const std::system_error& failure) { error = failure.what(); }
  DDS_LOG_FAILURE(context, QVX_LOG_CREATION_FAILURE_s, "transport \"rtps\": %s", error.c_str());
  return nullptr;
}
