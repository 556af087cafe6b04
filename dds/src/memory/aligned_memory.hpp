#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace dds {

/// The alignment of every buffer that holds payload.
constexpr std::size_t buffer_alignment = 32;

/// At least `size` octets, uninitialised and aligned to `buffer_alignment`; null when memory is exhausted. Released
/// with `free_aligned`.
inline void* allocate_aligned(std::size_t size) noexcept {
  if (size > SIZE_MAX - buffer_alignment) { return nullptr; }
  const std::size_t blocks = size == 0 ? 1 : (size + buffer_alignment - 1) / buffer_alignment;
  return std::aligned_alloc(buffer_alignment, blocks * buffer_alignment);
}

inline void free_aligned(void* buffer) noexcept { std::free(buffer); }

}  // namespace dds
