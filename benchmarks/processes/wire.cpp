#include "processes/wire.hpp"

#include <chrono>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "processes/child.hpp"
#include "processes/network.hpp"
#include "processes/roles.hpp"
#include "support/json_line.hpp"

namespace bench {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using Callers = std::vector<std::unique_ptr<Child>>;

constexpr const char* domain = "10";

void expect(Child& caller, const char* line) {
  if (caller.hear() != line) { throw std::runtime_error("a caller does not do its part"); }
}

// One after the other, too: dozens of processes that find each other at the same moment take a minute of processor
// time.
Callers start_callers(long processes, std::size_t payload, long count) {
  Callers callers;
  for (long i = 0; i < processes; ++i) {
    callers.push_back(std::make_unique<Child>(
        std::vector<std::string>{role::caller, domain, std::to_string(payload), std::to_string(count)}));
    expect(*callers.back(), role::matched);
  }
  return callers;
}

struct Traffic {
  double octets;
  double seconds;
};

template <class During>
Traffic traffic(During during) {
  const auto begin = Clock::now();
  const std::uint64_t before = octets_on_loopback();
  during();
  const std::uint64_t after = octets_on_loopback();
  return {static_cast<double>(after - before), std::chrono::duration<double>(Clock::now() - begin).count()};
}

}  // namespace

void measure_wire(long processes, std::size_t payload, long count) {
  const Child replier({role::echo, domain, role::many_requesters});
  const Callers callers = start_callers(processes, payload, count);
  std::this_thread::sleep_for(2s);  // until everybody knows everybody
  const Traffic idle = traffic([] { std::this_thread::sleep_for(4s); });
  const Traffic busy = traffic([&] {
    for (const auto& caller : callers) {
      caller->tell("go");
      expect(*caller, role::done);
    }
    std::this_thread::sleep_for(100ms);  // what is still to be acknowledged
  });
  const double idle_rate = idle.octets / idle.seconds;
  const long replies = processes * count;
  JsonLine()
      .text("benchmark", "scaling")
      .text("transport", "rtps")
      .text("load", "wire")
      .count("size", processes)
      .count("payload", static_cast<long>(payload))
      .count("replies", replies)
      .figure("octets_per_reply", (busy.octets - idle_rate * busy.seconds) / static_cast<double>(replies), 1)
      .figure("idle_octets_per_s", idle_rate, 0)
      .figure("seconds", busy.seconds)
      .print();
}

}  // namespace bench
