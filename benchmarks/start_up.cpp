// What it costs a fresh process to have a participant, a requester and a replier: time, resident memory and threads.
// Does not link the engine, so that the time includes loading it.

#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <sstream>
#include <zemtra/zemtra.hpp>

#include "processes/child.hpp"
#include "processes/network.hpp"
#include "support/arguments.hpp"
#include "support/compare.hpp"
#include "support/heap.hpp"
#include "support/json_line.hpp"

namespace bench {
namespace {

using Clock = std::chrono::steady_clock;

constexpr const char* usage = "usage: start_up [--transport in_process,rtps] [--processes 50]\n";

double milliseconds_since(Clock::time_point begin) {
  return std::chrono::duration<double, std::milli>(Clock::now() - begin).count();
}

long threads() {
  const std::filesystem::directory_iterator tasks("/proc/self/task");
  return std::distance(begin(tasks), end(tasks));
}

DDS_DomainParticipantQos qos_of(const std::string& transport) {
  DDS_DomainParticipantQos qos = DDS_PARTICIPANT_QOS_DEFAULT;
  DDSPropertyQosPolicyHelper::add_property(qos.property, "dds.transport", transport.c_str(), false);
  return qos;
}

/// The child: says what it cost, and ends.
int start(const std::string& transport) {
  end_with_parent();
  const long threads_before = threads();
  const auto begin = Clock::now();
  const zemtra::Participant participant(0, qos_of(transport));
  const zemtra::Requester<std::string, std::string> requester(participant, "StartUp");
  const zemtra::Replier<std::string, std::string> replier(participant, "StartUp");
  const double elapsed = milliseconds_since(begin);
  std::cout << elapsed << ' ' << resident() << ' ' << threads() - threads_before << std::endl;
  return EXIT_SUCCESS;
}

void measure(const std::string& transport, long processes) {
  constexpr unsigned long_enough = 600;  // seconds, for all of them
  alarm(long_enough);
  std::vector<double> creation;
  std::vector<double> process;
  std::vector<double> memory;
  std::vector<double> started;
  for (long i = 0; i < processes; ++i) {
    const auto begin = Clock::now();
    Child child({transport});
    std::istringstream said(child.hear());
    process.push_back(milliseconds_since(begin));
    said >> creation.emplace_back() >> memory.emplace_back() >> started.emplace_back();
    if (!said) { throw std::runtime_error("a process did not start up"); }
    child.join();
  }
  JsonLine()
      .text("benchmark", "start_up")
      .text("transport", transport)
      .count("processes", processes)
      .figure("creation_ms", median(creation), 2)
      .figure("process_ms", median(process), 2)
      .figure("resident_bytes", median(memory), 0)
      .figure("threads", median(started), 0)
      .print();
}

void run_all(const Arguments& arguments) {
  if (!enter_network_of_own()) { std::cerr << "start_up: shares the loopback interface with others\n"; }
  for (const std::string& transport : arguments.choice("transport", "in_process,rtps", {"in_process", "rtps"})) {
    measure(transport, std::max(1L, arguments.number("processes", 50)));
  }
}

}  // namespace
}  // namespace bench

int main(int argc, char** argv) {
  try {
    if (const auto role = bench::role_of(argc, argv)) { return bench::start(role->front()); }
    bench::run_all(bench::Arguments(argc, argv, {"transport", "processes"}));
    return EXIT_SUCCESS;
  } catch (const std::invalid_argument& fault) {
    std::cerr << "start_up: " << fault.what() << '\n' << bench::usage;
  } catch (const std::exception& fault) { std::cerr << "start_up: " << fault.what() << '\n'; }
  return EXIT_FAILURE;
}
