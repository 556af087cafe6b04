#include "support/compare.hpp"

#include <algorithm>
#include <chrono>

#include "support/heap.hpp"

namespace bench {
namespace {

constexpr double turn_ns = 40e6;

double elapsed_ns(const Workload& workload, long count) {
  const auto begin = std::chrono::steady_clock::now();
  workload(count);
  return std::chrono::duration<double, std::nano>(std::chrono::steady_clock::now() - begin).count();
}

// Doubles the count until a turn is long enough to be measured; that is also the warm-up.
long turn_length(const Workload& workload) {
  constexpr long most = 1L << 30;
  long count = 16;
  double elapsed = elapsed_ns(workload, count);
  while (elapsed < turn_ns / 2 && count < most) {
    count *= 2;
    elapsed = elapsed_ns(workload, count);
  }
  return std::max(1L, static_cast<long>(static_cast<double>(count) * turn_ns / elapsed));
}

long prepare(const Workload& workload, long count) {
  if (count == 0) { return turn_length(workload); }
  workload(count);
  return count;
}

}  // namespace

double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  const std::size_t middle = values.size() / 2;
  return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

Comparison compare(const Workload& subject, const Workload& reference, long rounds, long count) {
  const long subject_count = prepare(subject, count);
  const long reference_count = prepare(reference, count);
  std::vector<double> subject_ns;
  std::vector<double> reference_ns;
  std::vector<double> ratios;
  unsigned long allocated = 0;
  const auto run_subject = [&] {
    const unsigned long before = allocations();
    const double elapsed = elapsed_ns(subject, subject_count);
    allocated += allocations() - before;
    subject_ns.push_back(elapsed / static_cast<double>(subject_count));
  };
  const auto run_reference = [&] {
    reference_ns.push_back(elapsed_ns(reference, reference_count) / static_cast<double>(reference_count));
  };
  for (long round = 0; round < rounds; ++round) {
    if (round % 2 == 0) {
      run_subject();
      run_reference();
    } else {
      run_reference();
      run_subject();
    }
    ratios.push_back(subject_ns.back() / reference_ns.back());
  }
  Comparison result;
  result.round_trips = subject_count;
  result.subject_ns = median(subject_ns);
  result.reference_ns = median(reference_ns);
  result.ratio = result.subject_ns / result.reference_ns;
  result.ratio_of_pairs = median(ratios);
  result.allocations = static_cast<double>(allocated) / static_cast<double>(subject_count * rounds);
  return result;
}

}  // namespace bench
