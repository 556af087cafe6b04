#pragma once

#include <sys/types.h>

#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace bench {

/// This program, started once more to play a role of its own (`Role`). It runs where the calling thread may run, ends
/// at the latest when this object goes, or the process that holds it, and is waited for. What fails throws
/// `std::system_error`, or `std::runtime_error` when it is the child's fault.
class Child {
 public:
  /// `arguments` are those of the role, its name first.
  explicit Child(const std::vector<std::string>& arguments);
  /// Makes it end, whatever it does.
  ~Child();
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;

  /// Writes a line to its standard input.
  void tell(const std::string& line);
  /// The next line of its standard output.
  std::string hear();
  /// Waits until it has ended of its own accord, which must be with the exit code 0.
  void join();

 private:
  struct Close {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };
  using File = std::unique_ptr<std::FILE, Close>;

  pid_t pid_ = 0;  // 0 once it has been waited for
  File input_;     // its standard input: what keeps it alive
  File output_;
};

/// For a child: ends this process as soon as the one that started it has closed the pipe, or is gone.
void end_with_parent();

/// The arguments of the role that this process is to play, when it was started by a `Child`.
std::optional<std::vector<std::string>> role_of(int argc, char** argv);

}  // namespace bench
