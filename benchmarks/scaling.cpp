// What a round trip costs when the service has many requesters, or the requester many unread replies, against a service
// that has one; and how much memory an idle participant takes. With `--transport rtps` the replier is another process;
// and how many octets a reply takes on the wire when many processes request.

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <iostream>

#include "processes/network.hpp"
#include "processes/roles.hpp"
#include "processes/wire.hpp"
#include "support/arguments.hpp"
#include "support/compare.hpp"
#include "support/heap.hpp"
#include "support/json_line.hpp"
#include "support/service.hpp"

namespace bench {
namespace {

constexpr const char* usage =
    "usage: scaling [--load memory,idle,unread] [--mode blocking,listener] [--payload 64] [--pin same]\n"
    "               [--idle 1,10,...] [--unread 1,1000,...] [--rounds 15]\n"
    "               [--count round trips in a turn, 0 for about 40 ms]\n"
    "       scaling --transport rtps [--load idle,wire] [--idle 1,1000] [--processes 1,8,32,64]\n"
    "               [--replies 500 for each process] [--payload 64] and the rest as above\n";

struct Case {
  std::string transport;
  std::string load;
  std::string mode;
  std::string pin;
  std::size_t payload;
  long size;
  long rounds;
  long count;
};

void add_load(Service& service, const std::string& load, long size) {
  if (load == "idle") {
    service.add_idle_requesters(size);
  } else {
    service.add_unread_replies(size);
  }
}

void measure(const Case& c) {
  const Placement placement = placement_of(c.pin);
  if (!is_possible(placement)) { throw std::invalid_argument("too few processors for --pin " + c.pin); }
  place_this_thread(placement, Side::requester);
  const Answer answer = c.transport == "rtps"  ? Answer::in_process
                        : c.mode == "listener" ? Answer::in_listener
                                               : Answer::in_thread;
  Service alone(0, answer, c.payload, placement);
  add_load(alone, c.load, 1);
  Service loaded(1, answer, c.payload, placement);
  const auto begin = std::chrono::steady_clock::now();
  add_load(loaded, c.load, c.size);
  const std::chrono::duration<double, std::milli> setup = std::chrono::steady_clock::now() - begin;
  const Comparison result =
      compare([&](long count) { loaded.run(count); }, [&](long count) { alone.run(count); }, c.rounds, c.count);
  JsonLine()
      .text("benchmark", "scaling")
      .text("transport", c.transport)
      .text("load", c.load)
      .count("size", c.size)
      .text("mode", c.mode)
      .count("payload", static_cast<long>(c.payload))
      .text("pin", c.pin)
      .count("rounds", c.rounds)
      .count("round_trips", result.round_trips)
      .figure("ns", result.subject_ns, 1)
      .figure("alone_ns", result.reference_ns, 1)
      .figure("ratio", result.ratio)
      .figure("ratio_of_pairs", result.ratio_of_pairs)
      .figure("allocs_per_round_trip", result.allocations, 6)
      .figure("setup_ms", setup.count(), 0)
      .print();
}

// After one round trip, so that what the entities make when they are first used is there.
void measure_memory(std::size_t payload) {
  const std::size_t heap_before = heap_in_use();
  const std::size_t resident_before = resident();
  Service service(0, Answer::in_listener, payload, Placement::free);
  service.run(1);
  JsonLine()
      .text("benchmark", "scaling")
      .text("load", "memory")
      .count("payload", static_cast<long>(payload))
      .count("idle_heap_bytes", static_cast<long>(heap_in_use() - heap_before))
      .count("idle_resident_bytes", static_cast<long>(resident() - resident_before))
      .print();
}

void run_all_between_processes(const Arguments& arguments) {
  constexpr unsigned long_enough = 600;  // seconds for a case: a reply that got lost would be waited for without end
  const auto loads = arguments.choice("load", "idle,wire", {"idle", "wire"});
  const auto pin = arguments.choice("pin", "same", {"same", "split", "free"}).front();
  const auto payload = static_cast<std::size_t>(arguments.number("payload", 64));
  const bool undisturbed = enter_network_of_own();
  for (const std::string& load : loads) {
    if (load == "idle") {
      for (const long size : arguments.numbers("idle", "1,1000")) {
        alarm(long_enough);
        measure({"rtps", load, "blocking", pin, payload, size, std::max(1L, arguments.number("rounds", 15)),
                 arguments.number("count", 0)});
      }
      continue;
    }
    if (!undisturbed) { throw std::runtime_error("what is on the wire needs a network of its own"); }
    for (const long processes : arguments.numbers("processes", "1,8,32,64")) {
      alarm(long_enough);
      measure_wire(processes, payload, std::max(1L, arguments.number("replies", 500)));
    }
  }
}

void run_all(const Arguments& arguments) {
  if (arguments.choice("transport", "in_process", {"in_process", "rtps"}).front() == "rtps") {
    run_all_between_processes(arguments);
    return;
  }
  const auto loads = arguments.choice("load", "memory,idle,unread", {"memory", "idle", "unread"});
  const auto modes = arguments.choice("mode", "blocking,listener", {"blocking", "listener"});
  const auto pin = arguments.choice("pin", "same", {"same", "split", "free"}).front();
  const auto payload = static_cast<std::size_t>(arguments.number("payload", 64));
  const auto sizes_of = [&](const std::string& load) {
    return arguments.numbers(load, load == "idle" ? "1,10,100,1000,10000" : "1,1000,100000,1000000");
  };
  for (const std::string& load : loads) {
    if (load == "memory") {
      measure_memory(payload);
      continue;
    }
    for (const std::string& mode : modes) {
      for (const long size : sizes_of(load)) {
        measure({"in_process", load, mode, pin, payload, size, std::max(1L, arguments.number("rounds", 15)),
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
    bench::run_all(bench::Arguments(
        argc, argv,
        {"load", "mode", "payload", "pin", "idle", "unread", "rounds", "count", "transport", "processes", "replies"}));
    return EXIT_SUCCESS;
  } catch (const std::invalid_argument& fault) {
    std::cerr << "scaling: " << fault.what() << '\n' << bench::usage;
  } catch (const std::exception& fault) { std::cerr << "scaling: " << fault.what() << '\n'; }
  return EXIT_FAILURE;
}
