#include "support/placement.hpp"

#include <sched.h>

#include <cerrno>
#include <stdexcept>
#include <system_error>
#include <vector>

namespace bench {
namespace {

cpu_set_t affinity() {
  cpu_set_t set;
  if (sched_getaffinity(0, sizeof set, &set) != 0) {
    throw std::system_error(errno, std::generic_category(), "sched_getaffinity");
  }
  return set;
}

// What the process was started with, whatever its threads have been moved to since.
const cpu_set_t& initial_affinity() {
  static const cpu_set_t initial = affinity();
  return initial;
}

std::vector<std::size_t> processors() {
  std::vector<std::size_t> found;
  for (std::size_t cpu = 0; cpu < CPU_SETSIZE; ++cpu) {
    if (CPU_ISSET(cpu, &initial_affinity())) { found.push_back(cpu); }
  }
  return found;
}

}  // namespace

Placement placement_of(const std::string& name) {
  if (name == "same") { return Placement::same; }
  if (name == "split") { return Placement::split; }
  if (name == "free") { return Placement::free; }
  throw std::invalid_argument("unknown placement \"" + name + "\"");
}

bool is_possible(Placement placement) { return placement != Placement::split || processors().size() >= 2; }

void place_this_thread(Placement placement, Side side) {
  cpu_set_t set = initial_affinity();
  if (placement != Placement::free) {
    const std::vector<std::size_t> available = processors();
    const bool first = placement == Placement::split && side == Side::requester;
    CPU_ZERO(&set);
    CPU_SET(first ? available.front() : available.back(), &set);
  }
  if (sched_setaffinity(0, sizeof set, &set) != 0) {
    throw std::system_error(errno, std::generic_category(), "sched_setaffinity");
  }
}

}  // namespace bench
