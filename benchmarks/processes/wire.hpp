#pragma once

#include <cstddef>

namespace bench {

/// Counts the octets on the wire for a reply, its request and what the protocol needs for both included, when so many
/// processes use one replier, and prints them. Each requests so many times, one process after the other: at once each
/// would be slower, and slower traffic is acknowledged sample by sample, however many processes there are. To be called
/// in a network of its own (`enter_network_of_own`).
void measure_wire(long processes, std::size_t payload, long count);

}  // namespace bench
