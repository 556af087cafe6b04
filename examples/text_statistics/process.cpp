#include "process.hpp"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <stdexcept>
#include <system_error>

namespace {

[[noreturn]] void throw_errno(const char* what) { throw std::system_error(errno, std::generic_category(), what); }

void write_all(int file, const std::string& text) {
  for (std::size_t written = 0; written < text.size();) {
    const ssize_t count = write(file, text.data() + written, text.size() - written);
    if (count < 0) { throw_errno("cannot write the result"); }
    written += static_cast<std::size_t>(count);
  }
}

// The whole life of the new process. Nothing that belongs to the old one is destroyed or flushed a second time.
[[noreturn]] void run(const std::function<std::string()>& work, pid_t parent, int output) {
  prctl(PR_SET_PDEATHSIG, SIGTERM);
  if (getppid() != parent) { _exit(EXIT_FAILURE); }
  try {
    write_all(output, work());
    _exit(EXIT_SUCCESS);
  } catch (const std::exception& fault) { std::cerr << "process " << getpid() << ": " << fault.what() << std::endl; }
  _exit(EXIT_FAILURE);
}

bool is_readable(int file, Process::Clock::time_point deadline) {
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Process::Clock::now()).count();
  pollfd waited{file, POLLIN, 0};
  return poll(&waited, 1, static_cast<int>(std::max(0L, left))) > 0;
}

sigset_t termination() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGTERM);
  return signals;
}

}  // namespace

Process::Process(const std::function<std::string()>& work) {
  if (pipe2(output_, O_CLOEXEC) != 0) { throw_errno("pipe2"); }
  const pid_t parent = getpid();
  pid_ = fork();
  if (pid_ == 0) { run(work, parent, output_[1]); }
  const int error = errno;
  close(output_[1]);
  if (pid_ < 0) {
    close(output_[0]);
    errno = error;
    throw_errno("fork");
  }
}

Process::~Process() {
  close(output_[0]);
  if (pid_ == 0) { return; }
  kill(pid_, SIGKILL);
  waitpid(pid_, nullptr, 0);
}

void Process::terminate() const { kill(pid_, SIGTERM); }

std::string Process::result(Clock::time_point deadline) {
  std::string text;
  char part[4096];
  for (ssize_t count = 1; count > 0;) {
    if (!is_readable(output_[0], deadline)) { throw std::runtime_error("a process takes too long"); }
    count = read(output_[0], part, sizeof part);
    if (count > 0) { text.append(part, static_cast<std::size_t>(count)); }
  }
  int status = 0;
  waitpid(pid_, &status, 0);
  pid_ = 0;
  if (status != 0) { throw std::runtime_error("a process has failed"); }
  return text;
}

void hold_termination() {
  const sigset_t signals = termination();
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

void wait_for_termination() {
  const sigset_t signals = termination();
  int signal = 0;
  sigwait(&signals, &signal);
}
