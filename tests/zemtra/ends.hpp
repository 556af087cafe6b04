#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

#include <zemtra/zemtra.hpp>

#include "end_to_end/remote.hpp"

namespace typed {

struct Question {
  int asker;
  int number;
};
struct Answer {
  int asker;
  int number;
  std::string text;
  auto fields() { return std::tie(asker, number, text); }
};
inline Answer answer(const Question& question, const std::string& text = "") {
  return {question.asker, question.number, text};
}

using Texts = std::vector<std::string>;

/// How long a test waits for what is to happen; the watchdog ends it before.
constexpr auto kLong = std::chrono::hours(1);

/// How a replier differs from the usual one.
struct ReplierKind {
  enum Front { typed, untyped, handler } front = typed;  // a handler answers everything with the text "handled"
  /// What its reader asks for and its writer offers; the QoS is then not that of request-reply.
  bool own_qos = false;
  DDS_ReliabilityQosPolicyKind asked = DDS_RELIABLE_RELIABILITY_QOS;
  DDS_ReliabilityQosPolicyKind offered = DDS_RELIABLE_RELIABILITY_QOS;
};

/// The replier where requesters are tested, whichever process it lives in. One that is not of the front `typed` is only
/// there, or serves by itself.
class OtherReplier : public end_to_end::Object {
 public:
  virtual int matched_requesters() { throw std::logic_error("not asked of this one"); }
  virtual std::string explain() { throw std::logic_error("not asked of this one"); }
  /// Sends replies with these texts to the next request that comes.
  virtual void reply_to_next(const Texts& /*texts*/) { throw std::logic_error("not asked of this one"); }
  /// Replies to `count` requests, with this text.
  virtual void serve(int /*count*/, const std::string& /*text*/) { throw std::logic_error("not asked of this one"); }
};

/// The requester where repliers are tested, whichever process it lives in. All functions wait as long as it takes.
class OtherRequester : public end_to_end::Object {
 public:
  /// Until it has met exactly so many repliers.
  virtual void await_repliers(int count) = 0;
  virtual Answer call(const Question& question) = 0;
  /// Makes a pending request, with a number by which the next two know it.
  virtual int send(const Question& question, std::chrono::milliseconds max_wait = kLong) = 0;
  virtual DDS_SampleIdentity_t identity(int pending) = 0;
  virtual std::optional<Answer> next(int pending) = 0;
};

// Of the service "Calc", in a participant of this process, or in the one of the other process.

std::unique_ptr<OtherReplier> create_replier(DDSDomainParticipant* participant, const ReplierKind& kind);
std::unique_ptr<OtherReplier> create_replier(support::OtherProcess& process, const ReplierKind& kind);
std::unique_ptr<OtherRequester> create_requester(DDSDomainParticipant* participant);
std::unique_ptr<OtherRequester> create_requester(support::OtherProcess& process);

}  // namespace typed
