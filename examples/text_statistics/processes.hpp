#pragma once

#include <string>
#include <vector>

#include "work.hpp"

/// As `count_by_messaging`, but with a replier and `requesters` requesters that are processes of their own. Throws
/// `std::runtime_error` when one of them fails or takes too long. To be called while there is a single thread.
Result count_by_processes(const std::vector<std::string>& paragraphs, std::size_t requesters);
