#pragma once

#include <cstddef>

namespace fuzz {

/// Octets that the calling thread has allocated in all, by `operator new` or by `aligned_alloc`.
std::size_t allocated();

}  // namespace fuzz
