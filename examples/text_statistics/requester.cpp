#include "requester.hpp"

#include <stdexcept>
#include <zemtra/details/service_match.hpp>

namespace {

constexpr DDS_Duration_t max_wait{30, 0};

}  // namespace

Requester::Requester(const Participant& participant, const std::string& service)
    : requester_(zemtra::RequesterParams(participant.get()).service_name(service), register_string, register_string,
                 sizeof(char*), false) {}

void Requester::wait_for_replier() {
  using zemtra::details::ServiceMatch;
  const ServiceMatch match(ServiceMatch::Role::requester, *requester_.get_datawriter(), *requester_.get_datareader());
  if (!match.wait(max_wait)) { throw std::runtime_error(match.explain()); }
}

int Requester::request(const std::string& text, Statistics& sum) {
  const char* const sample = text.c_str();
  DDS_WriteParams_t params;
  requester_.send_sample(&sample, params);

  // Sending has left the request's identity in the parameters: it finds the replies to this request.
  if (!requester_.wait_for_replies(max_wait, replies_per_request, params.identity)) {
    throw std::runtime_error("a request was not answered");
  }
  Loan replies(requester_);
  requester_.get_reply_loaned(&replies.samples, &replies.count, replies.infos, replies_per_request, params.identity,
                              /*take=*/true);
  if (replies.count != replies_per_request) { throw std::runtime_error("a request was not answered completely"); }
  for (int i = 0; i < replies.count; ++i) { add_reply(sum, replies.text(i)); }
  return replies.count;
}
