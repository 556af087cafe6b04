// What a round trip between a requester and a replier costs, against the least that handing over the same octets costs;
// and what it costs through the typed front ends, against the untyped core. With `--transport rtps`: between two
// processes, against what is written by hand with the API of the engine that carries the samples.

#include <algorithm>
#include <cstdlib>
#include <iostream>

#include "processes/network.hpp"
#include "processes/roles.hpp"
#include "processes/round_trips.hpp"
#include "support/arguments.hpp"
#include "support/compare.hpp"
#include "support/floor.hpp"
#include "support/json_line.hpp"
#include "support/service.hpp"
#include "support/typed.hpp"

namespace bench {
namespace {

constexpr long window = 32;
constexpr const char* usage =
    "usage: round_trip [--mode blocking,listener,pipelined,typed,typed_listener] [--payload 64,1024,...]\n"
    "                  [--pin same,split,free] [--transport in_process]\n"
    "                  [--rounds 15] [--count round trips in a turn, 0 for about 40 ms]\n"
    "       round_trip --transport rtps [--mode blocking,pipelined] [--payload 64,65536,...] [--rounds 31], the rest\n";

struct Case {
  std::string mode;
  std::string pin;
  std::size_t payload;
  long rounds;
  long count;
};

Comparison measure_blocking(const Case& c, Placement placement) {
  Service service(0, Answer::in_thread, c.payload, placement);
  service.requester().fill_pools();
  ThreadFloor floor(1, c.payload, placement);
  return compare([&](long count) { service.run(count); }, [&](long count) { floor.run(count); }, c.rounds, c.count);
}

Comparison measure_listener(const Case& c, Placement placement) {
  Service service(0, Answer::in_listener, c.payload, placement);
  CallFloor floor(c.payload);
  return compare([&](long count) { service.run(count); }, [&](long count) { floor.run(count); }, c.rounds, c.count);
}

Comparison measure_pipelined(const Case& c, Placement placement) {
  Service service(0, Answer::in_thread, c.payload, placement);
  service.requester().fill_pools();
  ThreadFloor floor(window, c.payload, placement);
  return compare([&](long count) { service.requester().run_pipelined(count, window); },
                 [&](long count) { floor.run(count); }, c.rounds, c.count);
}

/// The reference is the untyped core, not the floor.
Comparison measure_typed(const Case& c, Answer answer, Placement placement) {
  const auto typed = make_typed_service(0, answer, placement);
  const auto untyped = make_untyped_service(1, answer, placement);
  return compare([&](long count) { typed->run(count); }, [&](long count) { untyped->run(count); }, c.rounds, c.count);
}

Comparison measure(const Case& c, Placement placement) {
  if (c.mode == "typed") { return measure_typed(c, Answer::in_thread, placement); }
  if (c.mode == "typed_listener") { return measure_typed(c, Answer::in_listener, placement); }
  if (c.mode == "blocking") { return measure_blocking(c, placement); }
  if (c.mode == "listener") { return measure_listener(c, placement); }
  return measure_pipelined(c, placement);
}

void print(const Case& c, const Comparison& result) {
  JsonLine()
      .text("benchmark", "round_trip")
      .text("mode", c.mode)
      .count("payload", static_cast<long>(c.payload))
      .text("pin", c.pin)
      .count("rounds", c.rounds)
      .count("round_trips", result.round_trips)
      .figure("ns", result.subject_ns, 1)
      .figure("floor_ns", result.reference_ns, 1)
      .figure("requests_per_s", 1e9 / result.subject_ns, 0)
      .figure("floor_requests_per_s", 1e9 / result.reference_ns, 0)
      .figure("ratio", result.ratio)
      .figure("ratio_of_pairs", result.ratio_of_pairs)
      .figure("allocs_per_round_trip", result.allocations, 6)
      .print();
}

bool is_one_of(const std::string& mode, std::initializer_list<const char*> modes) {
  return std::find(modes.begin(), modes.end(), mode) != modes.end();
}

void run(const Case& c) {
  const Placement placement = placement_of(c.pin);
  // One thread cannot be on two processors.
  if (placement == Placement::split && is_one_of(c.mode, {"listener", "typed_listener"})) { return; }
  if (is_one_of(c.mode, {"typed", "typed_listener"}) && c.payload != sizeof(Message)) { return; }
  if (!is_possible(placement)) {
    std::cerr << "round_trip: too few processors for --pin " << c.pin << '\n';
    return;
  }
  place_this_thread(placement, Side::requester);
  print(c, measure(c, placement));
}

// More under way than the engine's receive buffers hold would measure what is sent again.
bool fits_buffers(const std::string& mode, long payload) { return mode != "pipelined" || payload * window <= 1L << 21; }

void run_all_between_processes(const Arguments& arguments) {
  const auto modes = arguments.choice("mode", "blocking,pipelined", {"blocking", "pipelined"});
  const auto pins = arguments.choice("pin", "same,split,free", {"same", "split", "free"});
  if (!enter_network_of_own()) { std::cerr << "round_trip: shares the loopback interface with others\n"; }
  for (const std::string& pin : pins) {
    for (const std::string& mode : modes) {
      for (const long payload : arguments.numbers("payload", "64,65536,1048576")) {
        if (!is_possible(placement_of(pin)) || !fits_buffers(mode, payload)) { continue; }
        compare_with_hand_written({mode, pin, static_cast<std::size_t>(payload),
                                   std::max(1L, arguments.number("rounds", 31)), arguments.number("count", 0)});
      }
    }
  }
}

void run_all(const Arguments& arguments) {
  if (arguments.choice("transport", "in_process", {"in_process", "rtps"}).front() == "rtps") {
    run_all_between_processes(arguments);
    return;
  }
  const auto modes = arguments.choice("mode", "blocking,listener,pipelined,typed,typed_listener",
                                      {"blocking", "listener", "pipelined", "typed", "typed_listener"});
  const auto pins = arguments.choice("pin", "same,split,free", {"same", "split", "free"});
  for (const std::string& pin : pins) {
    for (const std::string& mode : modes) {
      for (const long payload : arguments.numbers("payload", "64,1024,65536,1048576")) {
        run({mode, pin, static_cast<std::size_t>(payload), std::max(1L, arguments.number("rounds", 15)),
             arguments.number("count", 0)});
      }
    }
  }
}

}  // namespace
}  // namespace bench

int main(int argc, char** argv) {
  if (const auto code = bench::play_role(argc, argv)) { return *code; }
  try {
    bench::run_all(bench::Arguments(argc, argv, {"mode", "payload", "pin", "rounds", "count", "transport"}));
    return EXIT_SUCCESS;
  } catch (const std::invalid_argument& fault) {
    std::cerr << "round_trip: " << fault.what() << '\n' << bench::usage;
  } catch (const std::exception& fault) { std::cerr << "round_trip: " << fault.what() << '\n'; }
  return EXIT_FAILURE;
}
