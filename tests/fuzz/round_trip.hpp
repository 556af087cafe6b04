#pragma once

#include <cstddef>
#include <cstdint>

#include <dds/type_plugin.hpp>

namespace fuzz {

/// How much decoding may allocate in all, freed or not: so many octets for each octet of input, and a little more.
struct Limit {
  std::size_t per_octet;
  std::size_t constant;
};

/// Decodes any octets. Aborts when that allocates too much, or when a sample that came of it is not the same after it
/// has been encoded and decoded again.
void round_trip(const DDS_TypePlugin& plugin, const std::uint8_t* octets, std::size_t size, Limit limit);

}  // namespace fuzz
