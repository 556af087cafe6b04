// Sends each line of the standard input to a service that sends it back, several requests at a time, and prints the
// replies, which are read where they lie.

#include <deque>
#include <iostream>
#include <string>
#include <zemtra/zemtra.hpp>

namespace {

using namespace std::chrono_literals;
using EchoReplier = zemtra::HandlerReplier<std::string, std::string>;
using EchoRequester = zemtra::Requester<std::string, std::string>;
using PendingEcho = zemtra::PendingRequest<std::string>;

constexpr std::size_t kMostPending = 8;

bool print_reply(PendingEcho pending) {
  const auto reply = pending.next();
  if (reply) { std::cout << reply->data().view() << '\n'; }
  return reply.has_value();
}

}  // namespace

int main() {
  const zemtra::Participant participant;
  const EchoReplier replier(participant, "StringEcho", [](const std::string& text) { return text; });
  EchoRequester requester(participant, "StringEcho");

  std::deque<PendingEcho> pending;
  bool complete = true;
  for (std::string line; std::getline(std::cin, line);) {
    pending.push_back(requester.send(line, 10s));
    if (pending.size() < kMostPending) { continue; }
    complete = print_reply(std::move(pending.front())) && complete;
    pending.pop_front();
  }
  for (PendingEcho& rest : pending) { complete = print_reply(std::move(rest)) && complete; }
  return complete ? 0 : 1;
}
