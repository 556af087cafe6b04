#pragma once

#include <cstddef>

namespace bench {

/// Counts the octets on the wire for a reply, its request and what the protocol needs for both included, when so many
/// processes request at once, each so many times, and prints them. To be called in a network of its own
/// (`enter_network_of_own`).
void measure_wire(long processes, std::size_t payload, long count);

}  // namespace bench
