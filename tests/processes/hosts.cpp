#include "hosts.hpp"

#include <sstream>

namespace processes {

void Host::ip(const std::string& arguments) const {
  Words command = prefix();
  command.emplace_back("ip");
  std::istringstream words(arguments);
  command.insert(command.end(), std::istream_iterator<std::string>(words), {});
  run(command);
}

int Host::sent(const std::string& interface) const {
  const std::string devices = holder_.proc("net/dev");
  const std::size_t line = devices.find(interface + ':');
  if (line == std::string::npos) { throw std::runtime_error("no interface " + interface); }
  // Eight numbers of what has been received, then octets and packets.
  return numbers(devices.substr(line + interface.size() + 1)).at(9);
}

// "  12: 0100007F:1D08 ..." each, after a line of headings.
std::set<int> Host::udp_ports() const {
  std::set<int> ports;
  for (const char* table : {"net/udp", "net/udp6"}) {
    std::istringstream lines(holder_.proc(table));
    std::string line;
    for (std::getline(lines, line); std::getline(lines, line);) {
      const std::string port = line.substr(line.find(':', line.find(':') + 1) + 1);
      ports.insert(std::stoi(port, nullptr, 16));
    }
  }
  return ports;
}

namespace {

// Without IPv6, whose announcements nobody has asked for.
void set_up(const Host& host, const std::string& interface, const std::string& address, int mtu) {
  host.ip("link set dev " + interface + " addrgenmode none");
  host.ip("link set dev " + interface + " mtu " + std::to_string(mtu));
  if (!address.empty()) { host.ip("address add " + address + "/24 dev " + interface); }
  host.ip("link set dev " + interface + " up");
}

void join(const Host& host, const std::string& interface, const Host& other, const std::string& other_interface) {
  host.ip("link add " + interface + " type veth peer name " + other_interface + " netns " +
          std::to_string(other.pid()));
}

}  // namespace

Network::Network(int loss, int mtu) {
  if (!usable()) { return; }
  if (loss == 0) {
    join(a, "net", b, "net");
  } else {
    join(a, "net", between_, "a");
    join(b, "net", between_, "b");
    set_up(between_, "a", "", mtu);
    set_up(between_, "b", "", mtu);
    Words command = between_.prefix();
    command.insert(command.end(), {PROCESSES_PEER, "wire", "loss=" + std::to_string(loss)});
    wire_ = std::make_unique<Child>(command);
    wire_->await("ready");
  }
  set_up(a, "net", "10.77.0.1", mtu);
  set_up(b, "net", "10.77.0.2", mtu);
}

}  // namespace processes
