#pragma once

#include <functional>
#include <vector>

namespace bench {

/// Makes the given number of round trips and returns when the last is complete.
using Workload = std::function<void(long)>;

struct Comparison {
  long round_trips = 0;       ///< of the subject in one round
  double subject_ns = 0;      ///< of one round trip: the median of the rounds
  double reference_ns = 0;    ///< the same of the reference
  double ratio = 0;           ///< of the two medians
  double ratio_of_pairs = 0;  ///< the median of each round's own ratio
  double allocations = 0;     ///< heap allocations in a round trip of the subject, over all rounds
};

/// Runs subject and reference by turns, so that both meet the same moods of the machine: each once to warm up, then
/// each once in every round. `count` is the number of round trips of one turn; 0 finds, for each of the two, the number
/// that takes about 40 ms.
Comparison compare(const Workload& subject, const Workload& reference, long rounds, long count);

/// Of at least one value.
double median(std::vector<double> values);

}  // namespace bench
