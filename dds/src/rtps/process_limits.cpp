#include "rtps/process_limits.hpp"

#include <sys/eventfd.h>
#include <unistd.h>

#include <future>
#include <system_error>
#include <thread>
#include <vector>

namespace dds::rtps {

bool can_open_files(std::size_t count) {
  std::vector<int> files(count);
  for (int& file : files) { file = eventfd(0, EFD_CLOEXEC); }
  bool all = true;
  for (const int file : files) { all = file >= 0 && close(file) == 0 && all; }
  return all;
}

bool can_start_threads(std::size_t count) {
  std::promise<void> ended;
  const std::shared_future<void> end = ended.get_future().share();
  std::vector<std::thread> threads;
  threads.reserve(count);
  try {
    while (threads.size() < count) {
      threads.emplace_back([end] { end.wait(); });
    }
  } catch (const std::system_error&) {}
  ended.set_value();
  const bool all = threads.size() == count;
  for (std::thread& thread : threads) { thread.join(); }
  return all;
}

}  // namespace dds::rtps
