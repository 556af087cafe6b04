// An aggregate with every kind of member. An octet of it becomes at the most an empty optional string, in a vector that
// has grown to twice what it needs.

#include <zemtra/type_traits.hpp>

#include "round_trip.hpp"
#include "types/rich_aggregate.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* octets, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* octets, std::size_t size) {
  static const DDS_TypePlugin plugin = zemtra::details::plugin_of<rich::Everything>();
  fuzz::round_trip(plugin, octets, size, {4 * sizeof(std::optional<std::string>), 1024});
  return 0;
}
