#include "replier.hpp"

#include <zemtra/replier_params.hpp>

#include "statistics.hpp"

namespace {

// How often the thread looks whether it is to end.
constexpr DDS_Duration_t max_wait{0, 50000000};
constexpr int max_requests = 64;

}  // namespace

Replier::Replier(const Participant& participant, const std::string& service) {
  replier_.initialize(zemtra::ReplierParams(participant.get()).service_name(service), register_string, register_string,
                      sizeof(char*), /*reader_listener=*/nullptr, false);
  thread_ = std::async(std::launch::async, [this] { run(); });
}

Replier::~Replier() {
  stopping_ = true;
  if (thread_.valid()) { thread_.wait(); }
}

void Replier::stop() {
  stopping_ = true;
  thread_.get();
}

void Replier::run() {
  while (!stopping_) {
    Loan requests(replier_);
    replier_.receive_sample_loaned(&requests.samples, &requests.count, requests.infos, max_requests, max_wait, 1);
    for (int i = 0; i < requests.count; ++i) {
      answer(requests.text(i), zemtra::details::get_sample_identity_from_sample_info(requests.infos[i]));
    }
  }
}

void Replier::answer(const char* text, const DDS_SampleIdentity_t& request) {
  const Statistics statistics = count(text);
  for (const Kind kind : all_kinds) {
    const std::string reply = to_reply(statistics, kind);
    const char* const sample = reply.c_str();
    DDS_WriteParams_t params;
    replier_.send_sample(&sample, request, params);
  }
}
