#pragma once

#include <thread>
#include <utility>

namespace support {

/// Joins its thread at the end of the scope.
class Thread {
 public:
  template <class Function>
  explicit Thread(Function function) : thread_(std::move(function)) {}
  Thread(Thread&&) = default;
  Thread& operator=(Thread&&) = delete;
  ~Thread() { join(); }
  void join() {
    if (thread_.joinable()) { thread_.join(); }
  }

 private:
  std::thread thread_;
};

}  // namespace support
