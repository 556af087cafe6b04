#pragma once

#include <cstddef>

namespace dds {

/// Makes room in a vector for one element beyond `size`, so that adding it cannot fail; grows by doubling. Throws
/// `std::bad_alloc`.
template <class Vector>
void reserve_one(Vector& vector, std::size_t size) {
  if (vector.capacity() <= size) { vector.reserve(2 * size + 1); }
}

}  // namespace dds
