#include "support/carrier.hpp"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <stdexcept>
#include <system_error>

namespace support {

namespace {

// There are more, but their ports are among those that the system gives to sockets that ask for none.
constexpr DDS_DomainId_t kDomains = 100;

/// Claims a domain by a name that only one process can have, and loses when it ends. The process id tells where to
/// begin.
DDS_DomainId_t claim_domain() {
  const int socket = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);  // stays open
  if (socket < 0) { throw std::system_error(errno, std::generic_category(), "socket"); }
  for (DDS_DomainId_t i = 0; i < kDomains; ++i) {
    const DDS_DomainId_t domain = (static_cast<DDS_DomainId_t>(getpid()) + i) % kDomains;
    const std::string name = "zemtra tests in domain " + std::to_string(domain);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    name.copy(&address.sun_path[1], name.size());  // behind the NUL of names that are no files
    const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + name.size());
    if (bind(socket, reinterpret_cast<const sockaddr*>(&address), size) == 0) { return domain; }
  }
  throw std::runtime_error("no domain is free");
}

}  // namespace

std::vector<Carrier> carriers() {
  return {{"InProcess", "in_process", Carrier::one_participant},
          {"InProcessBetweenParticipants", "in_process", Carrier::participant_each},
          {"RtpsWithinParticipant", "rtps", Carrier::one_participant},
          {"Rtps", "rtps", Carrier::participant_each},
          kAcrossProcesses};
}

std::vector<Carrier> carriers_of_one_process() {
  std::vector<Carrier> result = carriers();
  result.erase(
      std::remove_if(result.begin(), result.end(), [](const Carrier& carrier) { return carrier.across_processes(); }),
      result.end());
  return result;
}

DDS_DomainParticipantQos participant_qos(const Carrier& carrier) {
  DDS_DomainParticipantQos qos;
  EXPECT_EQ(DDSPropertyQosPolicyHelper::add_property(qos.property, "dds.transport", carrier.transport, false),
            DDS_RETCODE_OK);
  return qos;
}

DDS_DomainId_t own_domain() {
  static const DDS_DomainId_t domain = claim_domain();
  return domain;
}
DDS_DomainId_t own_second_domain() {
  static const DDS_DomainId_t domain = claim_domain();
  return domain;
}

}  // namespace support
