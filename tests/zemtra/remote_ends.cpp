// What stands for ends in the other process.

#include "ends.hpp"

namespace typed {

namespace {

using end_to_end::OtherProcess;
using end_to_end::Remote;

constexpr std::unique_ptr<OtherReplier> (*kCreateReplier)(DDSDomainParticipant*, const ReplierKind&) = &create_replier;
constexpr std::unique_ptr<OtherRequester> (*kCreateRequester)(DDSDomainParticipant*) = &create_requester;

class RemoteReplier : public Remote<OtherReplier, kCreateReplier> {
 public:
  using Remote::Remote;

  int matched_requesters() override { return remotely<&OtherReplier::matched_requesters>(); }
  std::string explain() override { return remotely<&OtherReplier::explain>(); }
  void reply_to_next(const Texts& texts) override { remotely<&OtherReplier::reply_to_next>(texts); }
  void serve(int count, const std::string& text) override { remotely<&OtherReplier::serve>(count, text); }
};

class RemoteRequester : public Remote<OtherRequester, kCreateRequester> {
 public:
  using Remote::Remote;

  void await_repliers(int count) override { remotely<&OtherRequester::await_repliers>(count); }
  Answer call(const Question& question) override { return remotely<&OtherRequester::call>(question); }
  int send(const Question& question, std::chrono::milliseconds max_wait) override {
    return remotely<&OtherRequester::send>(question, max_wait);
  }
  DDS_SampleIdentity_t identity(int pending) override { return remotely<&OtherRequester::identity>(pending); }
  std::optional<Answer> next(int pending) override { return remotely<&OtherRequester::next>(pending); }
};

}  // namespace

std::unique_ptr<OtherReplier> create_replier(OtherProcess& process, const ReplierKind& kind) {
  return std::make_unique<RemoteReplier>(process, kind);
}
std::unique_ptr<OtherRequester> create_requester(OtherProcess& process) {
  return std::make_unique<RemoteRequester>(process);
}

}  // namespace typed
