#include "processes/child.hpp"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <system_error>
#include <thread>

namespace bench {
namespace {

constexpr const char* role_option = "--role";

[[noreturn]] void throw_error(int error, const char* what) {
  throw std::system_error(error, std::generic_category(), what);
}

/// A pipe whose two ends no child inherits, other than under another number.
struct Pipe {
  Pipe() {
    if (pipe2(ends, O_CLOEXEC) != 0) { throw_error(errno, "pipe2"); }
  }
  ~Pipe() {
    for (const int end : ends) {
      if (end >= 0) { close(end); }
    }
  }
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;

  std::FILE* open(int end, const char* mode) {
    std::FILE* const file = fdopen(ends[end], mode);
    if (file == nullptr) { throw_error(errno, "fdopen"); }
    ends[end] = -1;
    return file;
  }

  int ends[2] = {-1, -1};  // to read from, to write to
};

pid_t spawn(const std::vector<std::string>& arguments, int input, int output) {
  std::string program = "/proc/self/exe";
  std::string option = role_option;
  std::vector<std::string> texts = arguments;
  std::vector<char*> argv = {program.data(), option.data()};
  for (std::string& text : texts) { argv.push_back(text.data()); }
  argv.push_back(nullptr);

  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
  pid_t pid = 0;
  const int error = posix_spawn(&pid, program.c_str(), &actions, nullptr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (error != 0) { throw_error(error, "posix_spawn"); }
  return pid;
}

}  // namespace

Child::Child(const std::vector<std::string>& arguments) {
  // Who writes to a child that has gone is to be told so.
  std::signal(SIGPIPE, SIG_IGN);
  Pipe input;
  Pipe output;
  input_.reset(input.open(1, "w"));
  output_.reset(output.open(0, "r"));
  pid_ = spawn(arguments, input.ends[0], output.ends[1]);
}

Child::~Child() {
  input_.reset();
  if (pid_ != 0) { waitpid(pid_, nullptr, 0); }
}

void Child::tell(const std::string& line) {
  if (std::fputs((line + '\n').c_str(), input_.get()) < 0 || std::fflush(input_.get()) != 0) {
    throw_error(errno, "cannot write to a child");
  }
}

std::string Child::hear() {
  std::string line;
  for (int c = std::fgetc(output_.get()); c != '\n'; c = std::fgetc(output_.get())) {
    if (c == EOF) { throw std::runtime_error("a child has ended too early"); }
    line += static_cast<char>(c);
  }
  return line;
}

void Child::join() {
  int status = 0;
  const pid_t ended = waitpid(pid_, &status, 0);
  pid_ = 0;
  if (ended < 0) { throw_error(errno, "waitpid"); }
  if (status != 0) { throw std::runtime_error("a child has failed"); }
}

void end_with_parent() {
  std::thread([] {
    // Nothing but the end of the other side ends this, whatever there is to read.
    pollfd input{STDIN_FILENO, 0, 0};
    while (poll(&input, 1, -1) < 0 && errno == EINTR) {}
    std::_Exit(EXIT_FAILURE);
  }).detach();
}

std::optional<std::vector<std::string>> role_of(int argc, char** argv) {
  if (argc < 3 || std::string(argv[1]) != role_option) { return std::nullopt; }
  return std::vector<std::string>(argv + 2, argv + argc);
}

}  // namespace bench
