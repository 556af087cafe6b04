// The built-in types. The first octet chooses one.

#include "round_trip.hpp"
#include "types/builtin_plugins.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* octets, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* octets, std::size_t size) {
  static const DDS_TypePlugin* const plugins[] = {&dds::string_plugin, &dds::keyed_string_plugin, &dds::octets_plugin,
                                                  &dds::keyed_octets_plugin};
  if (size == 0) { return 0; }
  fuzz::round_trip(*plugins[octets[0] % 4], octets + 1, size - 1, {4, 1024});
  return 0;
}
