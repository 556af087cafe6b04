#include "util/futex.hpp"

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace dds {

void futex_wait(const std::atomic<std::uint32_t>& word, std::uint32_t seen, Deadline& deadline) {
  if (deadline.infinite()) {
    syscall(SYS_futex, &word, FUTEX_WAIT_PRIVATE, seen, nullptr, nullptr, 0);
    return;
  }
  const std::int64_t end = deadline.end();
  const timespec until{end / 1000000000, end % 1000000000};
  // The bit-set form takes an absolute time, which repeated waits do not stretch.
  syscall(SYS_futex, &word, FUTEX_WAIT_BITSET_PRIVATE, seen, &until, nullptr, FUTEX_BITSET_MATCH_ANY);
}

void futex_wake(const std::atomic<std::uint32_t>& word, int count) {
  syscall(SYS_futex, &word, FUTEX_WAKE_PRIVATE, count, nullptr, nullptr, 0);
}

}  // namespace dds
