// A network of its own, and a wire between two of them.

#include <arpa/inet.h>
#include <linux/if_packet.h>
#include <net/ethernet.h>
#include <net/if.h>
#include <netinet/in.h>
#include <poll.h>
#include <sched.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <iostream>
#include <random>
#include <vector>

#include "peer.hpp"

namespace peer {

// Whoever is to be in the network enters that of this process; it is gone when all of them are.
void run_host() {
  say(unshare(CLONE_NEWNET) == 0 ? "host" : std::string("host ") + std::strerror(errno));
  for (std::string line; std::getline(std::cin, line);) {}
}

namespace {

// With the header, in which the kernel says which checksums are still to be made: they stay so.
int open_end(const std::string& name) {
  const int fd = socket(AF_PACKET, SOCK_RAW, htons(ETH_P_ALL));
  const int on = 1;
  const int room = 4 * 1024 * 1024;
  sockaddr_ll address{};
  address.sll_family = AF_PACKET;
  address.sll_protocol = htons(ETH_P_ALL);
  address.sll_ifindex = static_cast<int>(if_nametoindex(name.c_str()));
  if (fd < 0 || setsockopt(fd, SOL_PACKET, PACKET_VNET_HDR, &on, sizeof(on)) != 0 ||
      setsockopt(fd, SOL_PACKET, PACKET_IGNORE_OUTGOING, &on, sizeof(on)) != 0 ||
      setsockopt(fd, SOL_SOCKET, SO_RCVBUFFORCE, &room, sizeof(room)) != 0 ||
      bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) {
    fail("end of the wire " + name + ": " + std::strerror(errno));
  }
  return fd;
}

}  // namespace

void run_wire(const Options& options) {
  std::minstd_rand random(static_cast<unsigned>(options.number("seed", 1)));
  std::uniform_int_distribution<int> percent(0, 99);
  const int loss = options.number("loss", 0);
  const int ends[2] = {open_end("a"), open_end("b")};
  say("ready");
  std::vector<unsigned char> frame(80000);
  for (;;) {
    pollfd ready[3] = {{ends[0], POLLIN, 0}, {ends[1], POLLIN, 0}, {STDIN_FILENO, POLLIN, 0}};
    if (poll(ready, 3, -1) < 0) { fail("poll"); }
    if (ready[2].revents != 0) { return; }
    for (int i = 0; i < 2; ++i) {
      if ((ready[i].revents & POLLIN) == 0) { continue; }
      const ssize_t size = read(ends[i], frame.data(), frame.size());
      if (size < 0) { fail(std::string("read: ") + std::strerror(errno)); }
      if (percent(random) < loss) { continue; }
      // What the other end has no room for is lost, too.
      if (write(ends[1 - i], frame.data(), static_cast<std::size_t>(size)) < 0 && errno != ENOBUFS) {
        fail(std::string("write: ") + std::strerror(errno));
      }
    }
  }
}

// Says whether a packet to that port is refused, as it is when nobody is there, or vanishes.
void run_knock(const Options& options) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(options.number("port", 0)));
  address.sin_addr.s_addr = inet_addr("10.77.0.1");
  const int fd = socket(AF_INET, SOCK_DGRAM, 0);
  if (connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0 || send(fd, "?", 1, 0) != 1) {
    fail(std::string("send: ") + std::strerror(errno));
  }
  pollfd answered{fd, POLLIN, 0};
  say(poll(&answered, 1, 1000) == 1 && recv(fd, &address, 1, 0) < 0 && errno == ECONNREFUSED ? "knock refused"
                                                                                             : "knock open");
}

}  // namespace peer
