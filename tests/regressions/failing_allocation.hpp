#pragma once

namespace regressions {

/// How many allocations this thread makes before one fails; negative, as it is at first, for any number.
extern thread_local int allocations_left;

}  // namespace regressions
