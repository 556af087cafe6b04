#pragma once

#include <sys/types.h>

#include <deque>
#include <string>
#include <vector>

namespace processes {

using Words = std::vector<std::string>;

/// A process that a test has started, and its standard input and output, a line at a time. Ends with the object, and is
/// then killed if need be. Throws `std::runtime_error`, which fails the test, when the process does not do as it
/// should.
class Child {
 public:
  explicit Child(const Words& command);
  ~Child();
  Child(Child&& other) noexcept;
  Child& operator=(Child&&) = delete;

  pid_t pid() const { return pid_; }
  void say(const std::string& line);
  /// The rest of the next line that begins with that word. Lines with another beginning stay for later.
  std::string await(const std::string& word);
  /// Says the question; the answer begins with its first word.
  std::string ask(const std::string& question);
  int ask_number(const std::string& question) { return std::stoi(ask(question)); }
  /// Takes the lines with that beginning that have come.
  Words take(const std::string& word);
  void signal(int number) const;
  /// Kills it, and reads what it has said until then.
  void kill();
  /// Ends its standard input, waits for its end and expects success.
  void finish();

  // What the kernel says of it.

  int descriptors() const;
  int threads() const;
  int resident_kib() const;
  /// How often the threads that this system has made, not its engine, have gone to sleep.
  int sleeps() const;
  std::string proc(const std::string& file) const;

 private:
  bool read_some(int milliseconds);
  int reap();

  pid_t pid_ = -1;
  int in_ = -1;
  int out_ = -1;
  std::string name_;
  std::string unfinished_;
  std::deque<std::string> lines_;
};

/// Starts a process, and waits for its successful end.
void run(const Words& command);
/// A file as a whole.
std::string contents(const std::string& path);

}  // namespace processes
