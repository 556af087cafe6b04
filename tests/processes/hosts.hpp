#pragma once

#include <memory>
#include <set>
#include <string>

#include "processes.hpp"

namespace processes {

/// A host that exists as long as the object: a network namespace, which a process holds. Nothing is left of it when
/// that process has ended, however.
class Host {
 public:
  /// Refused where the system does not let us.
  Host() : holder_({PROCESSES_PEER, "host"}), refusal_(holder_.await("host")) {
    if (usable()) { ip("link set lo up"); }
  }
  bool usable() const { return refusal_.empty(); }
  const std::string& refusal() const { return refusal_; }

  /// What goes before a command to be run in it.
  Words prefix() const { return {"nsenter", "--net=/proc/" + std::to_string(holder_.pid()) + "/ns/net"}; }
  /// Does what `ip` is to do in it, once it can.
  void ip(const std::string& arguments) const;
  pid_t pid() const { return holder_.pid(); }
  /// Packets that have been sent through an interface.
  int sent(const std::string& interface) const;
  /// Of all its UDP sockets.
  std::set<int> udp_ports() const;

 private:
  Child holder_;
  std::string refusal_;
};

/// Two hosts whose interfaces "net" are joined, with the addresses 10.77.0.1 and 10.77.0.2.
class Network {
 public:
  /// So many percent of what is sent is lost, in either direction.
  explicit Network(int loss, int mtu = 1500);
  bool usable() const { return a.usable() && b.usable() && between_.usable(); }

  Host a, b;

 private:
  Host between_;
  std::unique_ptr<Child> wire_;
};

}  // namespace processes
