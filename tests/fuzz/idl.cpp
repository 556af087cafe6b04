// A class that is generated from IDL, with every kind of member. Five octets of it become at the most a union of 48, in
// a sequence that has grown to twice what it needs.

#include <inventory.h>

#include <zemtra/type_traits.hpp>

#include "round_trip.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* octets, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* octets, std::size_t size) {
  static const DDS_TypePlugin plugin = zemtra::details::plugin_of<inventory::Item>();
  fuzz::round_trip(plugin, octets, size, {48, 1024});
  return 0;
}
