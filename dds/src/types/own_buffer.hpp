#pragma once

#include <cstddef>
#include <cstring>

#include <dds/basic_types.hpp>

#include "memory/aligned_memory.hpp"

namespace dds {

// Memory of own samples: it stays with the sample from one copy to the next, so that a copy allocates only while the
// samples still grow.

/// The capacity to allocate for `size` octets: a power of two while that wastes little, then as much as is needed.
constexpr std::size_t grown_capacity(std::size_t size) {
  constexpr std::size_t geometric_limit = std::size_t{64} * 1024;
  if (size > geometric_limit) { return size; }
  std::size_t capacity = buffer_alignment;
  while (capacity < size) { capacity *= 2; }
  return capacity;
}

/// Makes room for `size` octets; the content is lost when the buffer moves. False when memory is exhausted, the buffer
/// then being as before.
template <class Octet>
bool reserve(Octet*& buffer, std::size_t& capacity, std::size_t size) noexcept {
  if (size <= capacity) { return true; }
  const std::size_t grown = grown_capacity(size);
  void* fresh = allocate_aligned(grown);
  if (fresh == nullptr) { return false; }
  free_aligned(buffer);
  buffer = static_cast<Octet*>(fresh);
  capacity = grown;
  return true;
}

/// Puts `length` characters and a terminator into a string of an own sample.
inline bool assign_string(char*& string, std::size_t& capacity, const void* source, std::size_t length) noexcept {
  if (!reserve(string, capacity, length + 1)) { return false; }
  std::memcpy(string, source, length);
  string[length] = '\0';
  return true;
}

/// The same for a string with terminator; refuses null.
inline bool assign_string(char*& string, std::size_t& capacity, const char* source) noexcept {
  return source != nullptr && assign_string(string, capacity, source, std::strlen(source));
}

/// Whether this is a buffer with its length: null only when there are no octets.
inline bool are_octets(const DDS_Octet* octets, DDS_Long length) noexcept {
  return length == 0 || (length > 0 && octets != nullptr);
}

/// Puts octets into the buffer of an own sample; refuses a negative length, and null octets unless there are none.
inline bool assign_octets(DDS_Octet*& octets, DDS_Long& length, std::size_t& capacity, const DDS_Octet* source,
                          DDS_Long source_length) noexcept {
  if (!are_octets(source, source_length)) { return false; }
  const auto size = static_cast<std::size_t>(source_length);
  if (!reserve(octets, capacity, size)) { return false; }
  if (size > 0) { std::memcpy(octets, source, size); }
  length = source_length;
  return true;
}

}  // namespace dds
