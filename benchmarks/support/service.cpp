#include "support/service.hpp"

#include "processes/remote_echo.hpp"

namespace bench {
namespace {

std::unique_ptr<Answering> start_answering(Answer answer, DDS_DomainId_t domain, const Participant& participant,
                                           Placement placement) {
  if (answer == Answer::in_listener) { return std::make_unique<ListenerEcho>(participant); }
  if (answer == Answer::in_process) { return std::make_unique<RemoteEcho>(domain, placement); }
  return std::make_unique<ThreadEcho>(participant, placement);
}

}  // namespace

Service::Service(DDS_DomainId_t domain, Answer answer, std::size_t payload, Placement placement)
    : answer_(answer),
      participant_(domain, answer == Answer::in_process ? Transport::rtps : Transport::in_process),
      requester_(participant_, payload),
      answering_(start_answering(answer, domain, participant_, placement)) {
  if (answer == Answer::in_process) { requester_.wait_for_replier(); }
}

Service::~Service() {
  if (answer_ != Answer::in_listener) { requester_.send_stop(); }
}

void Service::run(long count) {
  if (answer_ == Answer::in_listener) {
    requester_.run_listener(count);
  } else {
    requester_.run_blocking(count);
  }
}

void Service::add_idle_requesters(long count) {
  const auto params = zemtra::RequesterParams(participant_.get()).service_name(echo_service);
  for (long i = 0; i < count; ++i) {
    idle_.push_back(std::make_unique<zemtra::details::RequesterUntypedImpl>(params, register_octets, register_octets,
                                                                            sizeof(DDS_Octets), false));
  }
  if (answer_ != Answer::in_process) { return; }
  for (const auto& requester : idle_) { wait_for_replier(*requester); }
}

// Requests are answered in order, so once the last one has its reply, the others have theirs.
void Service::add_unread_replies(long count) {
  requester_.leave_unread(count);
  run(1);
}

}  // namespace bench
