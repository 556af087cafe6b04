#include "processes/remote_echo.hpp"

#include "processes/roles.hpp"

namespace bench {
namespace {

// The child inherits the replier's place from this thread.
std::unique_ptr<Child> start_replier(const std::vector<std::string>& role, Placement placement) {
  place_this_thread(placement, Side::replier);
  auto child = std::make_unique<Child>(role);
  place_this_thread(placement, Side::requester);
  return child;
}

void join(Child& child) {
  try {
    child.join();
  } catch (const std::exception& fault) { fail(fault.what()); }
}

}  // namespace

RemoteEcho::RemoteEcho(DDS_DomainId_t domain, Placement placement)
    : child_(start_replier({role::echo, std::to_string(domain), role::one_requester}, placement)) {}

RemoteEcho::~RemoteEcho() { join(*child_); }

HandWrittenService::HandWrittenService(DDS_DomainId_t domain, hand_written::Answer answer, std::size_t payload,
                                       Placement placement)
    : child_(start_replier({role::hand_written_echo, std::to_string(domain),
                            answer == hand_written::Answer::in_thread ? role::in_thread : role::in_listener},
                           placement)),
      requester_(domain, payload) {
  requester_.wait_for_replier();
}

HandWrittenService::~HandWrittenService() {
  requester_.send_stop();
  join(*child_);
}

}  // namespace bench
