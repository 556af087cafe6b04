#pragma once

#include <cstdint>

namespace bench {

/// Gives this process, and those that it starts later, a network of their own with nothing but a loopback interface: so
/// they meet nobody else's traffic. False when the system does not allow that. To be called before there are threads.
bool enter_network_of_own();

/// Octets that the loopback interface of this process's network has carried.
std::uint64_t octets_on_loopback();

}  // namespace bench
