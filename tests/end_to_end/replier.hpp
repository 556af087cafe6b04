#pragma once

#include <memory>
#include <string>
#include <vector>

#include <requestreply/requestreply.hpp>

#include "remote.hpp"

namespace end_to_end {

struct Request {
  std::string text;
  DDS_SampleIdentity_t identity;
  auto fields() { return std::tie(text, identity); }
};

/// How a replier differs from the usual one.
struct ReplierKind {
  bool echoes = false;                     // answers every request as `echo` does, from its listener
  int max_samples = DDS_LENGTH_UNLIMITED;  // that its reader has room for
};

/// What the tests ask of a replier, whichever process it lives in.
class Replier : public Object {
 public:
  /// Takes up to `max_count` requests, once `min_count` are there.
  virtual std::vector<Request> receive(int max_count = DDS_LENGTH_UNLIMITED, int min_count = 1) = 0;
  virtual void reply(const DDS_SampleIdentity_t& request, const std::string& text) = 0;
  /// Answers `count` requests, each with its own text after `prefix`.
  virtual void echo(int count, const std::string& prefix = "re: ") = 0;
  /// Waits until it has met exactly `count` requesters.
  virtual void await_requesters(int count) = 0;
};

/// A replier of the service "Calc" in a participant of this process, or in the one of the other process.
std::unique_ptr<Replier> create_replier(DDSDomainParticipant* participant, const ReplierKind& kind);
std::unique_ptr<Replier> create_replier(support::OtherProcess& process, const ReplierKind& kind);

}  // namespace end_to_end
