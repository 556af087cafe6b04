#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>

namespace dds::rtps {

/// Whether the process may open so many files more at this moment.
bool can_open(std::size_t files);

/// The largest receive buffer, up to `wanted` octets, that the system gives a socket.
std::uint32_t possible_receive_buffer(std::uint32_t wanted);

/// Finds the sockets that the engine opens, which binds them to no interface and keeps their numbers to itself: those
/// that come into being during its lifetime and have the receive buffer that the engine was told to ask for. That size
/// is one that nobody else asks for.
class SocketWatch {
 public:
  SocketWatch();
  /// Keeps them from programs that the process starts, and lets them receive from that device alone, unless it is null.
  /// False, and the reason in `error`, when that fails or none is found.
  bool adopt(const char* device, std::uint32_t receive_buffer, std::string& error) const;

 private:
  std::map<int, ino_t> before_;  // a number that has been closed meanwhile may name another file
};

}  // namespace dds::rtps
