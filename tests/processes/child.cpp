#include "child.hpp"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace processes {

namespace {

// Less than a test may take, so that one that hangs says for what it waits.
constexpr int kPatience = 100 * 1000;

}  // namespace

Child::Child(const Words& command) {
  for (const std::string& word : command) { name_ += (name_.empty() ? "" : " ") + word; }
  std::signal(SIGPIPE, SIG_IGN);
  int in[2];
  int out[2];
  if (pipe2(in, O_CLOEXEC) != 0 || pipe2(out, O_CLOEXEC) != 0) { throw std::runtime_error("pipe2"); }
  in_ = in[1];
  out_ = out[0];
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, in[0], STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, out[1], STDOUT_FILENO);
  std::vector<char*> arguments;
  for (const std::string& word : command) { arguments.push_back(const_cast<char*>(word.c_str())); }
  arguments.push_back(nullptr);
  const int error = posix_spawnp(&pid_, arguments[0], &actions, nullptr, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  close(in[0]);
  close(out[1]);
  if (error != 0) {
    pid_ = -1;
    throw std::runtime_error(name_ + ": " + std::strerror(error));
  }
}

Child::Child(Child&& other) noexcept
    : pid_(other.pid_),
      in_(other.in_),
      out_(other.out_),
      name_(std::move(other.name_)),
      unfinished_(std::move(other.unfinished_)),
      lines_(std::move(other.lines_)) {
  other.pid_ = other.in_ = other.out_ = -1;
}

Child::~Child() {
  if (pid_ > 0) {
    ::kill(pid_, SIGKILL);
    reap();
  }
  if (in_ >= 0) { close(in_); }
  if (out_ >= 0) { close(out_); }
}

int Child::reap() {
  int status = 0;
  waitpid(pid_, &status, 0);
  pid_ = -1;
  return status;
}

void Child::say(const std::string& line) {
  const std::string whole = line + '\n';
  if (write(in_, whole.data(), whole.size()) != static_cast<ssize_t>(whole.size())) {
    throw std::runtime_error(name_ + ": does not listen to \"" + line + '"');
  }
}

bool Child::read_some(int milliseconds) {
  pollfd ready{out_, POLLIN, 0};
  if (poll(&ready, 1, milliseconds) <= 0) { throw std::runtime_error(name_ + ": says nothing"); }
  char buffer[4096];
  const ssize_t size = read(out_, buffer, sizeof(buffer));
  if (size <= 0) { return false; }
  unfinished_.append(buffer, static_cast<std::size_t>(size));
  std::size_t begin = 0;
  for (std::size_t end; (end = unfinished_.find('\n', begin)) != std::string::npos; begin = end + 1) {
    lines_.push_back(unfinished_.substr(begin, end - begin));
  }
  unfinished_.erase(0, begin);
  return true;
}

std::string Child::await(const std::string& word) {
  for (std::size_t i = 0;; ++i) {
    while (i == lines_.size()) {
      if (!read_some(kPatience)) { throw std::runtime_error(name_ + ": has ended without \"" + word + '"'); }
    }
    const std::string line = lines_[i];
    if (line.compare(0, word.size(), word) != 0) { continue; }
    if (line.size() != word.size() && line[word.size()] != ' ') { continue; }
    lines_.erase(lines_.begin() + static_cast<std::ptrdiff_t>(i));
    return line.size() == word.size() ? "" : line.substr(word.size() + 1);
  }
}

std::string Child::ask(const std::string& question) {
  say(question);
  return await(question.substr(0, question.find(' ')));
}

Words Child::take(const std::string& word) {
  Words taken;
  std::deque<std::string> others;
  for (std::string& line : lines_) {
    if (line.compare(0, word.size() + 1, word + ' ') == 0) {
      taken.push_back(line.substr(word.size() + 1));
    } else {
      others.push_back(std::move(line));
    }
  }
  lines_ = std::move(others);
  return taken;
}

void Child::signal(int number) const {
  if (::kill(pid_, number) != 0) { throw std::runtime_error(name_ + ": kill"); }
}

void Child::kill() {
  signal(SIGKILL);
  while (read_some(kPatience)) {}
  reap();
}

void Child::finish() {
  close(in_);
  in_ = -1;
  while (read_some(kPatience)) {}
  const int status = reap();
  if (status != 0) { throw std::runtime_error(name_ + ": ends with status " + std::to_string(status)); }
}

std::string contents(const std::string& path) {
  std::ifstream file(path);
  return {std::istreambuf_iterator<char>(file), {}};
}

std::string Child::proc(const std::string& file) const {
  return contents("/proc/" + std::to_string(pid_) + '/' + file);
}

namespace {

int entries(pid_t pid, const char* folder) {
  const std::filesystem::directory_iterator begin("/proc/" + std::to_string(pid) + '/' + folder);
  return static_cast<int>(std::distance(begin, {}));
}

}  // namespace

int Child::descriptors() const { return entries(pid_, "fd"); }

int Child::threads() const { return entries(pid_, "task"); }

int Child::resident_kib() const {
  const std::string status = proc("status");
  return std::stoi(status.substr(status.find("VmRSS:") + 6));
}

// The engine names its threads.
int Child::sleeps() const {
  int sum = 0;
  for (const auto& task : std::filesystem::directory_iterator("/proc/" + std::to_string(pid_) + "/task")) {
    if (contents(task.path() / "comm") != proc("comm")) { continue; }
    const std::string status = contents(task.path() / "status");
    sum += std::stoi(status.substr(status.find("\nvoluntary_ctxt_switches:") + 25));
  }
  return sum;
}

void run(const Words& command) { Child(command).finish(); }

}  // namespace processes
