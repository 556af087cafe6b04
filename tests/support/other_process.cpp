#include "support/other_process.hpp"

#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <map>
#include <system_error>

#include "support/thread.hpp"

namespace support {

namespace {

constexpr const char* kArgument = "--other-process";  // then the role and the sockets

std::map<std::string, std::unique_ptr<Service> (*)()>& roles() {
  static std::map<std::string, std::unique_ptr<Service> (*)()> roles;
  return roles;
}

[[noreturn]] void fail(const char* what) { throw std::system_error(errno, std::generic_category(), what); }

void send_octets(int socket, const char* octets, std::size_t size) {
  while (size > 0) {
    const ssize_t sent = send(socket, octets, size, MSG_NOSIGNAL);
    if (sent < 0 && errno == EINTR) { continue; }
    if (sent < 0) { fail("send to the other process"); }
    octets += sent;
    size -= static_cast<std::size_t>(sent);
  }
}
void send_packet(int socket, const Packet& packet) {
  const std::size_t size = packet.octets().size();
  send_octets(socket, reinterpret_cast<const char*>(&size), sizeof size);
  send_octets(socket, packet.octets().data(), size);
}

/// False at the end of the stream.
bool receive_octets(int socket, char* octets, std::size_t size) {
  while (size > 0) {
    const ssize_t received = recv(socket, octets, size, MSG_WAITALL);
    if (received < 0 && errno == EINTR) { continue; }
    if (received <= 0) { return false; }
    octets += received;
    size -= static_cast<std::size_t>(received);
  }
  return true;
}
bool receive_packet(int socket, Packet& packet) {
  std::size_t size = 0;
  if (!receive_octets(socket, reinterpret_cast<char*>(&size), sizeof size)) { return false; }
  std::string octets(size, '\0');
  if (!receive_octets(socket, octets.data(), size)) { return false; }
  packet = Packet(std::move(octets));
  return true;
}

// One command follows another, also on another thread, because the parent has it so. Sanitizers, which see one process
// only, see it by this lock.
std::mutex order;

/// Obeys what comes through one socket, until nothing can come any more.
void serve(Service& service, int socket) {
  Packet packet;
  while (receive_packet(socket, packet)) {
    { const std::lock_guard<std::mutex> lock(order); }
    Packet answer;
    try {
      answer = Packet::of(true, service.obey(std::move(packet)).octets());
    } catch (const std::exception& error) { answer = Packet::of(false, std::string(error.what())); }
    { const std::lock_guard<std::mutex> lock(order); }
    send_packet(socket, answer);
  }
}

}  // namespace

Role::Role(const char* name, std::unique_ptr<Service> (*create)()) { roles()[name] = create; }

OtherProcess::OtherProcess(const char* role) {
  std::vector<std::string> arguments = {"/proc/self/exe", kArgument, role};
  std::vector<int> theirs;
  for (int i = 0; i < kThreads; ++i) {
    std::array<int, 2> ends{};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) { fail("socketpair"); }
    all_.push_back(ends[0]);
    theirs.push_back(dup(ends[1]));  // which the child inherits
    close(ends[1]);
    arguments.push_back(std::to_string(theirs.back()));
  }
  free_ = all_;
  std::vector<char*> argv;
  for (std::string& argument : arguments) { argv.push_back(argument.data()); }
  argv.push_back(nullptr);
  errno = posix_spawn(&child_, argv[0], nullptr, nullptr, argv.data(), environ);
  if (errno != 0) { fail("starting the other process"); }
  for (const int socket : theirs) { close(socket); }
}

OtherProcess::~OtherProcess() {
  for (const int socket : all_) { close(socket); }
  int status = -1;
  while (waitpid(child_, &status, 0) < 0 && errno == EINTR) {}
  EXPECT_EQ(status, 0) << "of the other process";
}

Packet OtherProcess::call(const Packet& command) {
  int socket = -1;
  {
    std::unique_lock<std::mutex> lock(mutex_);
    freed_.wait(lock, [this] { return !free_.empty(); });
    socket = free_.back();
    free_.pop_back();
  }
  send_packet(socket, command);
  Packet answer;
  if (!receive_packet(socket, answer)) { throw std::runtime_error("the other process has ended"); }
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    free_.push_back(socket);
    freed_.notify_one();
  }
  const bool obeyed = answer.get<bool>();
  std::string result = answer.get<std::string>();
  if (!obeyed) { throw std::runtime_error("the other process: " + result); }
  return Packet(std::move(result));
}

bool is_other_process(int argc, char** argv) { return argc > 2 && std::string(argv[1]) == kArgument; }

int run_other_process(int argc, char** argv) {
  // Whatever becomes of the parent, nothing stays behind.
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  const auto create = roles().at(argv[2]);
  {
    const std::unique_ptr<Service> service = create();
    std::vector<Thread> threads;
    for (int i = 3; i < argc; ++i) {
      threads.emplace_back([&service, socket = std::atoi(argv[i])] { serve(*service, socket); });
    }
  }
  return ::testing::UnitTest::GetInstance()->ad_hoc_test_result().Failed() ? 1 : 0;
}

}  // namespace support
