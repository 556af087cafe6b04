#include "qos/topic_qos_map.hpp"

namespace dds {

bool matches_pattern(const char* pattern, const char* name) noexcept {
  // After a mismatch only the last * can take in more: whatever an earlier one could, the last one can as well.
  const char* after_star = nullptr;
  const char* star_end = nullptr;
  while (*name != '\0') {
    if (*pattern == '*') {
      after_star = ++pattern;
      star_end = name;
    } else if (*pattern == '?' || *pattern == *name) {
      ++pattern;
      ++name;
    } else if (after_star != nullptr) {
      pattern = after_star;
      name = ++star_end;
    } else {
      return false;
    }
  }
  while (*pattern == '*') { ++pattern; }
  return *pattern == '\0';
}

}  // namespace dds
