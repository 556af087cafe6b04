// Ends in the other process, and what stands for them in this one.

#include "end_to_end/side.hpp"
#include "ends.hpp"

namespace typed {

namespace {

using support::OtherProcess;
using support::Packet;

enum class Verb {
  join,
  create_replier,
  destroy_replier,
  matched_requesters,
  explain,
  reply_to_next,
  serve,
  create_requester,
  destroy_requester,
  await_repliers,
  call,
  send,
  identity,
  next
};

Packet packed(const Answer& answer) { return Packet::of(answer.asker, answer.number, answer.text); }
Answer unpacked(Packet packet) {
  const int asker = packet.get<int>();
  const int number = packet.get<int>();
  return {asker, number, packet.get<std::string>()};
}

/// In the other process.
class EndService : public support::Service {
 public:
  Packet obey(Packet command) override {
    const Verb verb = command.get<Verb>();
    switch (verb) {
      case Verb::join:
        side_ = std::make_unique<end_to_end::Side>(support::kAcrossProcesses, command.get<DDS_DomainId_t>());
        side_->expect_topics_of("Calc");
        return {};
      case Verb::create_replier:
        return Packet::of(repliers_.add(create_replier(side_->get(), command.get<ReplierKind>())));
      case Verb::create_requester:
        return Packet::of(requesters_.add(create_requester(side_->get())));
      case Verb::destroy_replier:
        repliers_.remove(command.get<int>());
        return {};
      case Verb::destroy_requester:
        requesters_.remove(command.get<int>());
        return {};
      default:
        break;
    }
    const int number = command.get<int>();
    return verb < Verb::create_requester ? obey(verb, repliers_[number], command)
                                         : obey(verb, requesters_[number], command);
  }

 private:
  static Packet obey(Verb verb, OtherReplier& replier, Packet& command) {
    if (verb == Verb::matched_requesters) { return Packet::of(replier.matched_requesters()); }
    if (verb == Verb::explain) { return Packet::of(replier.explain()); }
    if (verb == Verb::reply_to_next) {
      replier.reply_to_next(command.get<Texts>());
    } else {
      const int count = command.get<int>();
      replier.serve(count, command.get<std::string>());
    }
    return {};
  }
  static Packet obey(Verb verb, OtherRequester& requester, Packet& command) {
    if (verb == Verb::call) { return packed(requester.call(command.get<Question>())); }
    if (verb == Verb::send) {
      const auto question = command.get<Question>();
      return Packet::of(requester.send(question, command.get<std::chrono::milliseconds>()));
    }
    if (verb == Verb::identity) { return Packet::of(requester.identity(command.get<int>())); }
    if (verb == Verb::next) {
      const std::optional<Answer> reply = requester.next(command.get<int>());
      return reply ? packed(*reply) : Packet();
    }
    requester.await_repliers(command.get<int>());
    return {};
  }

  std::unique_ptr<end_to_end::Side> side_;
  support::Numbered<OtherReplier> repliers_;
  support::Numbered<OtherRequester> requesters_;
};
const support::Role role("ends", []() -> std::unique_ptr<support::Service> { return std::make_unique<EndService>(); });

class RemoteReplier : public OtherReplier {
 public:
  RemoteReplier(OtherProcess& process, const ReplierKind& kind)
      : process_(process), number_(process.call(Packet::of(Verb::create_replier, kind)).get<int>()) {}
  ~RemoteReplier() override { process_.call(Packet::of(Verb::destroy_replier, number_)); }

  int matched_requesters() override { return process_.call(Packet::of(Verb::matched_requesters, number_)).get<int>(); }
  std::string explain() override { return process_.call(Packet::of(Verb::explain, number_)).get<std::string>(); }
  void reply_to_next(const Texts& texts) override { process_.call(Packet::of(Verb::reply_to_next, number_, texts)); }
  void serve(int count, const std::string& text) override {
    process_.call(Packet::of(Verb::serve, number_, count, text));
  }

 private:
  OtherProcess& process_;
  const int number_;
};

class RemoteRequester : public OtherRequester {
 public:
  explicit RemoteRequester(OtherProcess& process)
      : process_(process), number_(process.call(Packet::of(Verb::create_requester)).get<int>()) {}
  ~RemoteRequester() override { process_.call(Packet::of(Verb::destroy_requester, number_)); }

  void await_repliers(int count) override { process_.call(Packet::of(Verb::await_repliers, number_, count)); }
  Answer call(const Question& question) override {
    return unpacked(process_.call(Packet::of(Verb::call, number_, question)));
  }
  int send(const Question& question, std::chrono::milliseconds max_wait) override {
    return process_.call(Packet::of(Verb::send, number_, question, max_wait)).get<int>();
  }
  DDS_SampleIdentity_t identity(int pending) override {
    return process_.call(Packet::of(Verb::identity, number_, pending)).get<DDS_SampleIdentity_t>();
  }
  std::optional<Answer> next(int pending) override {
    Packet reply = process_.call(Packet::of(Verb::next, number_, pending));
    return reply.empty() ? std::nullopt : std::optional<Answer>(unpacked(std::move(reply)));
  }

 private:
  OtherProcess& process_;
  const int number_;
};

}  // namespace

std::unique_ptr<OtherProcess> start_other_end(DDS_DomainId_t domain) {
  auto process = std::make_unique<OtherProcess>("ends");
  process->call(Packet::of(Verb::join, domain));
  return process;
}
std::unique_ptr<OtherReplier> create_replier(OtherProcess& process, const ReplierKind& kind) {
  return std::make_unique<RemoteReplier>(process, kind);
}
std::unique_ptr<OtherRequester> create_requester(OtherProcess& process) {
  return std::make_unique<RemoteRequester>(process);
}

}  // namespace typed
