#pragma once

#include <cstddef>

namespace dds::rtps {

// Whether the process may have so much more at this moment. Takes it, and gives it back.

bool can_open_files(std::size_t count);
bool can_start_threads(std::size_t count);

}  // namespace dds::rtps
