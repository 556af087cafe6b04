#include "processes.hpp"

#include <unistd.h>

#include <deque>
#include <iostream>
#include <sstream>

#include "process.hpp"
#include "replier.hpp"
#include "requester.hpp"

namespace {

constexpr std::chrono::seconds time_limit{120};

std::string answer_requests(const std::string& service) {
  hold_termination();
  const Participant participant("rtps");
  Replier replier(participant, service);
  wait_for_termination();
  replier.stop();
  return "";
}

/// Every n-th paragraph, from the given one on.
Result request_share(const std::string& service, const std::vector<std::string>& paragraphs, std::size_t first,
                     std::size_t n) {
  const Participant participant("rtps");
  Requester requester(participant, service);
  requester.wait_for_replier();
  Result share;
  for (std::size_t i = first; i < paragraphs.size(); i += n) {
    ++share.requests;
    share.replies += requester.request(paragraphs[i], share.statistics);
  }
  return share;
}

// A result as text, between processes: the two numbers and a line for each kind of statistics.

std::string to_text(const Result& result) {
  std::ostringstream text;
  text << result.requests << ' ' << result.replies << '\n';
  for (const Kind kind : all_kinds) { text << to_reply(result.statistics, kind) << '\n'; }
  return text.str();
}

Result to_result(const std::string& text) {
  std::istringstream in(text);
  Result result;
  std::string line;
  in >> result.requests >> result.replies >> std::ws;
  while (std::getline(in, line)) { add_reply(result.statistics, line); }
  return result;
}

}  // namespace

Result count_by_processes(const std::vector<std::string>& paragraphs, std::size_t requesters) {
  const std::string service = "TextStatistics " + std::to_string(getpid());  // others may count at the same time
  const auto begin = Process::Clock::now();
  const auto deadline = begin + time_limit;

  // In no particular order: requesters wait for their replier.
  std::deque<Process> processes;
  for (std::size_t i = 0; i < requesters; ++i) {
    processes.emplace_back([&, i] { return to_text(request_share(service, paragraphs, i, requesters)); });
  }
  Process replier([&] { return answer_requests(service); });

  Result sum;
  for (std::size_t i = 0; i < requesters; ++i) {
    const Result share = to_result(processes[i].result(deadline));
    std::cout << "  process " << i + 1 << " of " << requesters << ": " << share.requests << " requests answered\n";
    add(sum.statistics, share.statistics);
    sum.requests += share.requests;
    sum.replies += share.replies;
  }
  sum.seconds = std::chrono::duration<double>(Process::Clock::now() - begin).count();
  replier.terminate();
  replier.result(deadline);
  return sum;
}
