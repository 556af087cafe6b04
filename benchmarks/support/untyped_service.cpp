#include <exception>
#include <thread>
#include <zemtra/replier_params.hpp>
#include <zemtra/type_traits.hpp>

#include "support/typed.hpp"

namespace bench {
namespace {

using zemtra::details::get_sample_identity_from_sample_info;
constexpr auto register_message = &zemtra::dds_type_traits<Message>::register_type;

class UntypedCaller : public MessageService {
 public:
  UntypedCaller(DDS_DomainId_t domain, Answer answer)
      : participant_(domain),
        replier_is_listener_(answer == Answer::in_listener),
        requester_(zemtra::RequesterParams(participant_.get()).service_name(echo_service), register_message,
                   register_message, sizeof(Message), false) {}

  void run(long count) override {
    for (long i = 0; i < count; ++i) {
      ++message_.tag;
      check_tag(call().tag, message_.tag);
    }
  }

 protected:
  const Participant& participant() const { return participant_; }
  void send_stop() {
    message_.tag = stop_tag;
    requester_.send_sample(&message_, params_);
  }

 private:
  Message call() {
    requester_.send_sample(&message_, params_);
    // With a listener the reply is there, and nobody who has nothing but the core would wait for it.
    if (!replier_is_listener_ && !requester_.wait_for_replies(DDS_DURATION_INFINITE, 1, params_.identity)) {
      fail("no reply");
    }
    Loan loan(requester_);
    requester_.get_reply_loaned(&loan.data, &loan.count, loan.infos, 1, params_.identity, true);
    if (loan.count != 1) { fail("no reply"); }
    return *static_cast<const Message*>(loan.data[0]);
  }

  const Participant participant_;
  const bool replier_is_listener_;
  zemtra::details::RequesterUntypedImpl requester_;
  Message message_{};
  DDS_WriteParams_t params_;
};

/// Sends messages back; false once one of them carried the stop tag.
bool send_back(zemtra::details::ReplierUntypedImpl& replier, const Loan& loan) {
  for (int i = 0; i < loan.count; ++i) {
    const auto* message = static_cast<const Message*>(loan.data[i]);
    if (message->tag == stop_tag) { return false; }
    DDS_WriteParams_t params;
    replier.send_sample(message, get_sample_identity_from_sample_info(loan.infos[i]), params);
  }
  return true;
}

class UntypedThreadService final : public UntypedCaller {
 public:
  UntypedThreadService(DDS_DomainId_t domain, Placement placement) : UntypedCaller(domain, Answer::in_thread) {
    replier_.initialize(zemtra::ReplierParams(participant().get()).service_name(echo_service), register_message,
                        register_message, sizeof(Message), nullptr, false);
    thread_ = std::thread([this, placement] { answer(placement); });
  }
  ~UntypedThreadService() override {
    send_stop();
    thread_.join();
  }

 private:
  void answer(Placement placement) {
    try {
      place_this_thread(placement, Side::replier);
      for (bool going_on = true; going_on;) {
        Loan loan(replier_);
        replier_.receive_sample_loaned(&loan.data, &loan.count, loan.infos, DDS_LENGTH_UNLIMITED, DDS_DURATION_INFINITE,
                                       1);
        going_on = send_back(replier_, loan);
      }
    } catch (const std::exception& fault) { fail(fault.what()); }
  }

  zemtra::details::ReplierUntypedImpl replier_;
  std::thread thread_;
};

class UntypedListenerService final : public UntypedCaller, private DDSDataReaderListener {
 public:
  explicit UntypedListenerService(DDS_DomainId_t domain) : UntypedCaller(domain, Answer::in_listener) {
    replier_.initialize(zemtra::ReplierParams(participant().get()).service_name(echo_service), register_message,
                        register_message, sizeof(Message), this, false);
  }

 private:
  void on_data_available(DDSDataReader* /*reader*/) override {
    try {
      Loan loan(replier_);
      replier_.get_sample_loaned(&loan.data, &loan.count, loan.infos, DDS_LENGTH_UNLIMITED, true, nullptr);
      send_back(replier_, loan);
    } catch (const std::exception& fault) { fail(fault.what()); }
  }

  zemtra::details::ReplierUntypedImpl replier_;
};

}  // namespace

std::unique_ptr<MessageService> make_untyped_service(DDS_DomainId_t domain, Answer answer, Placement placement) {
  if (answer == Answer::in_listener) { return std::make_unique<UntypedListenerService>(domain); }
  return std::make_unique<UntypedThreadService>(domain, placement);
}

}  // namespace bench
