#include "support/echo.hpp"

#include <exception>
#include <zemtra/replier_params.hpp>

namespace bench {

Echo::Echo(const Participant& participant, DDSDataReaderListener* listener, bool one_requester)
    : one_requester_(one_requester) {
  replier_.initialize(zemtra::ReplierParams(participant.get()).service_name(echo_service), register_octets,
                      register_octets, sizeof(DDS_Octets), listener, false);
}

bool Echo::answer_next() {
  Loan loan(replier_);
  replier_.receive_sample_loaned(&loan.data, &loan.count, loan.infos, DDS_LENGTH_UNLIMITED, DDS_DURATION_INFINITE, 1);
  return answer(loan);
}

void Echo::answer_available() {
  Loan loan(replier_);
  replier_.get_sample_loaned(&loan.data, &loan.count, loan.infos, DDS_LENGTH_UNLIMITED, true, nullptr);
  answer(loan);
}

bool Echo::answer(const Loan& loan) {
  for (int i = 0; i < loan.count; ++i) {
    const DDS_Octets& request = loan.sample(i);
    const std::uint64_t tag = tag_of(request.value);
    if (tag == stop_tag) { return false; }
    if (one_requester_) { check_tag(tag, ++answered_); }
    replier_.send_sample(&request, zemtra::details::get_sample_identity_from_sample_info(loan.infos[i]), params_);
  }
  return true;
}

ThreadEcho::ThreadEcho(const Participant& participant, Placement placement)
    : echo_(participant, nullptr), thread_([this, placement] { run(placement); }) {}

ThreadEcho::~ThreadEcho() { thread_.join(); }

void ThreadEcho::run(Placement placement) {
  try {
    place_this_thread(placement, Side::replier);
    while (echo_.answer_next()) {}
  } catch (const std::exception& fault) { fail(fault.what()); }
}

ListenerEcho::ListenerEcho(const Participant& participant) : echo_(participant, this) {}

void ListenerEcho::on_data_available(DDSDataReader* /*reader*/) {
  try {
    echo_.answer_available();
  } catch (const std::exception& fault) { fail(fault.what()); }
}

}  // namespace bench
