#include "processes/round_trips.hpp"

#include <unistd.h>

#include "processes/remote_echo.hpp"
#include "support/compare.hpp"
#include "support/json_line.hpp"
#include "support/service.hpp"

namespace bench {
namespace {

constexpr long window = 32;
constexpr DDS_DomainId_t first_domain = 10;

template <class Requester>
Workload workload(Requester& requester, const std::string& mode) {
  if (mode == "pipelined") {
    return [&requester](long count) { requester.run_pipelined(count, window); };
  }
  return [&requester](long count) { requester.run_blocking(count); };
}

void print(const ProcessesCase& c, const char* reference, const Comparison& result) {
  JsonLine()
      .text("benchmark", "round_trip")
      .text("transport", "rtps")
      .text("mode", c.mode)
      .text("reference", reference)
      .count("payload", static_cast<long>(c.payload))
      .text("pin", c.pin)
      .count("rounds", c.rounds)
      .count("round_trips", result.round_trips)
      .figure("ns", result.subject_ns, 1)
      .figure("reference_ns", result.reference_ns, 1)
      .figure("requests_per_s", 1e9 / result.subject_ns, 0)
      .figure("reference_requests_per_s", 1e9 / result.reference_ns, 0)
      .figure("ratio", result.ratio)
      .figure("ratio_of_pairs", result.ratio_of_pairs)
      .figure("allocs_per_round_trip", result.allocations, 6)
      .print();
}

}  // namespace

void compare_with_hand_written(const ProcessesCase& c) {
  constexpr unsigned long_enough = 600;  // seconds
  alarm(long_enough);                    // a reply that got lost would be waited for without end
  const Placement placement = placement_of(c.pin);
  place_this_thread(placement, Side::requester);
  Service ours(first_domain, Answer::in_process, c.payload, placement);
  HandWrittenService in_thread(first_domain + 1, hand_written::Answer::in_thread, c.payload, placement);
  HandWrittenService in_listener(first_domain + 2, hand_written::Answer::in_listener, c.payload, placement);
  const Workload subject = workload(ours.requester(), c.mode);
  print(c, "by_hand", compare(subject, workload(in_thread.requester(), c.mode), c.rounds, c.count));
  print(c, "by_hand_in_listener", compare(subject, workload(in_listener.requester(), c.mode), c.rounds, c.count));
  alarm(0);
}

}  // namespace bench
