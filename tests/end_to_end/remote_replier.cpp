// Repliers in the other process, and what stands for them in this one.

#include "replier.hpp"
#include "side.hpp"
#include "support/carrier.hpp"

namespace end_to_end {

namespace {

using support::OtherProcess;
using support::Packet;

enum class Verb { join, create, receive, has_request, reply, echo, await_requesters, destroy };

/// In the other process.
class ReplierService : public support::Service {
 public:
  Packet obey(Packet command) override {
    const Verb verb = command.get<Verb>();
    if (verb == Verb::join) {
      side_ = std::make_unique<Side>(support::kAcrossProcesses, command.get<DDS_DomainId_t>());
      side_->expect_topics_of("Calc");
      return {};
    }
    if (verb == Verb::create) {
      return Packet::of(repliers_.add(create_replier(side_->get(), command.get<ReplierKind>())));
    }
    const int number = command.get<int>();
    if (verb == Verb::destroy) {
      repliers_.remove(number);
      return {};
    }
    return obey(verb, repliers_[number], command);
  }

 private:
  static Packet obey(Verb verb, Replier& replier, Packet& command) {
    if (verb == Verb::has_request) { return Packet::of(replier.has_request()); }
    if (verb == Verb::reply) {
      const auto request = command.get<DDS_SampleIdentity_t>();
      replier.reply(request, command.get<std::string>());
      return {};
    }
    const int count = command.get<int>();
    Packet answer;
    if (verb == Verb::receive) {
      for (const Request& request : replier.receive(count, command.get<int>())) {
        answer.put(request.identity);
        answer.put(request.text);
      }
    } else if (verb == Verb::echo) {
      replier.echo(count, command.get<std::string>());
    } else {
      replier.await_requesters(count);
    }
    return answer;
  }

  std::unique_ptr<Side> side_;
  support::Numbered<Replier> repliers_;
};
const support::Role role("replier",
                         []() -> std::unique_ptr<support::Service> { return std::make_unique<ReplierService>(); });

class RemoteReplier : public Replier {
 public:
  RemoteReplier(OtherProcess& process, const ReplierKind& kind)
      : process_(process), number_(process.call(Packet::of(Verb::create, kind)).get<int>()) {}
  ~RemoteReplier() override { call(Verb::destroy); }

  std::vector<Request> receive(int max_count, int min_count) override {
    Packet answer = call(Verb::receive, max_count, min_count);
    std::vector<Request> requests;
    while (!answer.empty()) {
      requests.emplace_back();
      requests.back().identity = answer.get<DDS_SampleIdentity_t>();
      requests.back().text = answer.get<std::string>();
    }
    return requests;
  }
  bool has_request() override { return call(Verb::has_request).get<bool>(); }
  void reply(const DDS_SampleIdentity_t& request, const std::string& text) override {
    call(Verb::reply, request, text);
  }
  void echo(int count, const std::string& prefix) override { call(Verb::echo, count, prefix); }
  void await_requesters(int count) override { call(Verb::await_requesters, count); }

 private:
  template <class... Values>
  Packet call(Verb verb, const Values&... values) {
    return process_.call(Packet::of(verb, number_, values...));
  }

  OtherProcess& process_;
  const int number_;
};

}  // namespace

std::unique_ptr<OtherProcess> start_replier_process(DDS_DomainId_t domain) {
  auto process = std::make_unique<OtherProcess>("replier");
  process->call(Packet::of(Verb::join, domain));
  return process;
}
std::unique_ptr<Replier> create_replier(OtherProcess& process, const ReplierKind& kind) {
  return std::make_unique<RemoteReplier>(process, kind);
}

}  // namespace end_to_end
