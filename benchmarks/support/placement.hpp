#pragma once

#include <string>

namespace bench {

/// Where the two threads of a round trip run. It decides more than the code under test: waking a thread on another
/// processor costs about ten times as much as switching to one on the same processor.
enum class Placement { same, split, free };

/// The side of a round trip that a thread serves.
enum class Side { requester, replier };

/// For "same", "split" and "free"; throws `std::invalid_argument` for another name.
Placement placement_of(const std::string& name);

/// Whether the process may use enough processors; every placement but `split` needs one.
bool is_possible(Placement placement);

/// Moves the calling thread to its processor: the last one that the process may use for `same`, the first for the
/// requester and the last for the replier with `split`, any with `free`. Threads that it starts later inherit this.
void place_this_thread(Placement placement, Side side);

}  // namespace bench
