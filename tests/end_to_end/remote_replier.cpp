// Stands for a replier in the other process.

#include "replier.hpp"

namespace end_to_end {

namespace {

constexpr std::unique_ptr<Replier> (*kCreate)(DDSDomainParticipant*, const ReplierKind&) = &create_replier;

class RemoteReplier : public Remote<Replier, kCreate> {
 public:
  using Remote::Remote;

  std::vector<Request> receive(int max_count, int min_count) override {
    return remotely<&Replier::receive>(max_count, min_count);
  }
  void reply(const DDS_SampleIdentity_t& request, const std::string& text) override {
    remotely<&Replier::reply>(request, text);
  }
  void echo(int count, const std::string& prefix) override { remotely<&Replier::echo>(count, prefix); }
  void await_requesters(int count) override { remotely<&Replier::await_requesters>(count); }
};

}  // namespace

std::unique_ptr<Replier> create_replier(OtherProcess& process, const ReplierKind& kind) {
  return std::make_unique<RemoteReplier>(process, kind);
}

}  // namespace end_to_end
