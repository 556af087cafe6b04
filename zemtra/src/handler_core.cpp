#include <zemtra/details/handler_core.hpp>

#include <dds/data_reader.hpp>
#include <requestreply/exception.hpp>

#include "log.hpp"

namespace zemtra {
namespace details {

namespace {

constexpr const char* kContext = "HandlerReplier";
constexpr int kBatch = 16;  // most requests taken at a time

void log_current_exception(const char* what_failed) noexcept {
  try {
    throw;
  } catch (const std::exception& error) { log_failure(kContext, QVX_LOG_ANY_FAILURE_s, error.what()); } catch (...) {
    log_failure(kContext, QVX_LOG_ANY_FAILURE_s, what_failed);
  }
}

}  // namespace

HandlerCore::HandlerCore(const EntityParams& params, RegisterTypeFunction register_request_type,
                         RegisterTypeFunction register_reply_type, int samples_size)
    : replier_(params, register_request_type, register_reply_type, samples_size) {}

HandlerCore::~HandlerCore() = default;

void HandlerCore::start() {
  check_retcode(replier_.get_datareader()->set_listener(this, DDS_DATA_AVAILABLE_STATUS), kContext,
                QVX_LOG_ANY_FAILURE_s, "set listener", false);
  serve_in_turn();  // what came before there was a listener
  started_.store(true, std::memory_order_release);
}

void HandlerCore::stop() noexcept {
  stopping_ = true;
  if (replier_.get_datareader()->set_listener(nullptr, 0) != DDS_RETCODE_OK) {
    log_failure(kContext, QVX_LOG_ANY_FAILURE_s, "remove listener");
  }
}

void HandlerCore::on_data_available(DDSDataReader* /*reader*/) {
  if (started_.load(std::memory_order_acquire)) {
    serve();
  } else {
    serve_in_turn();
  }
}

// The thread in `start` and the one that calls the listener may meet here: the first serves for both, so that requests
// are handled one after the other.
void HandlerCore::serve_in_turn() {
  int seen = 1;
  if (news_.fetch_add(1) != 0) { return; }
  while (seen > 0) {
    serve();
    seen = news_.fetch_sub(seen) - seen;
  }
}

void HandlerCore::serve() {
  while (serve_some()) {}
}

UntypedLoan HandlerCore::lend(int most) noexcept {
  try {
    return replier_.lend(most, true);
  } catch (...) {
    log_current_exception("take requests");
    return {};
  }
}

bool HandlerCore::serve_some() {
  const int most = replier_.most_at_once(kBatch);
  UntypedLoan loan = lend(most);
  if (loan.data == nullptr) { return false; }
  for (int i = 0; i < loan.count && !stopping_; ++i) {
    if (loan.infos[i].valid_data) { serve_one(loan.data[i], loan.infos[i]); }
  }
  replier_.return_loan(loan.data, loan.infos);
  return loan.count == most && !stopping_;  // what has come meanwhile is told by another call of the listener
}

void HandlerCore::serve_one(void* request, const DDS_SampleInfo& info) noexcept {
  try {
    handle(request, info);
    return;
  } catch (...) {
    log_current_exception("the handler threw what is no std::exception");
    try {
      on_error(std::current_exception(), info.sample_identity);
    } catch (...) { log_current_exception("the error handler threw what is no std::exception"); }
  }
}

}  // namespace details
}  // namespace zemtra
