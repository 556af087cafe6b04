#include "rtps/sockets.hpp"

#include <dirent.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <system_error>
#include <vector>

namespace dds::rtps {

namespace {

bool get_option(int socket, int option, int& value) {
  socklen_t size = sizeof(value);
  return getsockopt(socket, SOL_SOCKET, option, &value, &size) == 0;
}

// Each with what it is.
std::map<int, ino_t> open_files() {
  std::map<int, ino_t> files;
  const std::unique_ptr<DIR, int (*)(DIR*)> folder(opendir("/proc/self/fd"), &closedir);
  if (folder == nullptr) { return files; }
  // NOLINTNEXTLINE(concurrency-mt-unsafe): nobody else reads this stream
  while (const dirent* entry = readdir(folder.get())) {
    if (entry->d_name[0] == '.') { continue; }
    const int file = static_cast<int>(std::strtol(entry->d_name, nullptr, 10));
    struct stat status {};
    if (fstat(file, &status) == 0) { files.emplace(file, status.st_ino); }
  }
  files.erase(dirfd(folder.get()));
  return files;
}

// The kernel doubles what is asked for, for its own bookkeeping.
bool is_of_engine(int file, std::uint32_t receive_buffer) {
  int protocol = 0;
  int buffer = 0;
  return get_option(file, SO_PROTOCOL, protocol) && protocol == IPPROTO_UDP && get_option(file, SO_RCVBUF, buffer) &&
         buffer >= 0 && static_cast<std::uint32_t>(buffer) == 2 * receive_buffer;
}

}  // namespace

bool can_open(std::size_t files) {
  std::vector<int> opened(files);
  for (int& file : opened) { file = eventfd(0, EFD_CLOEXEC); }
  bool all = true;
  for (const int file : opened) { all = file >= 0 && close(file) == 0 && all; }
  return all;
}

std::uint32_t possible_receive_buffer(std::uint32_t wanted) {
  const int probe = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  if (probe < 0) { return wanted; }
  const int asked = static_cast<int>(wanted);
  int given = 0;
  const bool known =
      setsockopt(probe, SOL_SOCKET, SO_RCVBUF, &asked, sizeof(asked)) == 0 && get_option(probe, SO_RCVBUF, given);
  close(probe);
  return known ? std::min(wanted, static_cast<std::uint32_t>(given) / 2) : wanted;
}

SocketWatch::SocketWatch() : before_(open_files()) {}

bool SocketWatch::adopt(const char* device, std::uint32_t receive_buffer, std::string& error) const {
  int found = 0;
  for (const auto& [file, inode] : open_files()) {
    const auto known = before_.find(file);
    if ((known != before_.end() && known->second == inode) || !is_of_engine(file, receive_buffer)) { continue; }
    ++found;
    if (fcntl(file, F_SETFD, FD_CLOEXEC) != 0 ||
        (device != nullptr &&
         setsockopt(file, SOL_SOCKET, SO_BINDTODEVICE, device, static_cast<socklen_t>(std::strlen(device))) != 0)) {
      error = "a socket cannot be confined: " + std::system_category().message(errno);
      return false;
    }
  }
  if (found == 0) { error = "the engine's sockets are not found"; }
  return found != 0;
}

}  // namespace dds::rtps
