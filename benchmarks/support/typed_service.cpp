#include <exception>
#include <optional>
#include <thread>
#include <zemtra/zemtra.hpp>

#include "support/typed.hpp"

namespace bench {
namespace {

using TypedRequester = zemtra::Requester<Message, Message>;
using TypedReplier = zemtra::Replier<Message, Message>;
using TypedHandler = zemtra::HandlerReplier<Message, Message>;

/// Sends messages that are numbered, and checks the replies.
class TypedCaller : public MessageService {
 public:
  explicit TypedCaller(DDS_DomainId_t domain) : participant_(domain), requester_(participant_, echo_service) {}

 protected:
  void call() {
    ++message_.tag;
    check_tag(requester_.call(message_, DDS_DURATION_INFINITE).tag, message_.tag);
  }
  /// For a reply that is there at once. Unlike a call this does no more than the untyped core would: replies that come
  /// later are not thrown away.
  void send_and_take() {
    ++message_.tag;
    const auto replies = requester_.take_replies(requester_.send_request(message_), 1);
    if (replies.length() != 1) { fail("no reply"); }
    check_tag(replies[0].data().tag, message_.tag);
  }
  DDSDomainParticipant* participant() { return participant_; }
  void send_stop() {
    message_.tag = stop_tag;
    requester_.send_request(message_);
  }

 private:
  const zemtra::Participant participant_;
  TypedRequester requester_;
  Message message_{};
};

class TypedThreadService final : public TypedCaller {
 public:
  TypedThreadService(DDS_DomainId_t domain, Placement placement)
      : TypedCaller(domain), replier_(participant(), echo_service), thread_([this, placement] { answer(placement); }) {}
  ~TypedThreadService() override {
    send_stop();
    thread_.join();
  }

  void run(long count) override {
    for (long i = 0; i < count; ++i) { call(); }
  }

 private:
  void answer(Placement placement) {
    try {
      place_this_thread(placement, Side::replier);
      while (true) {
        for (const auto& request : replier_.receive_requests(DDS_DURATION_INFINITE)) {
          if (request.data().tag == stop_tag) { return; }
          replier_.send_reply(request.data(), request);
        }
      }
    } catch (const std::exception& fault) { fail(fault.what()); }
  }

  TypedReplier replier_;
  std::thread thread_;
};

class TypedHandlerService final : public TypedCaller {
 public:
  explicit TypedHandlerService(DDS_DomainId_t domain)
      : TypedCaller(domain), replier_(participant(), echo_service, [](const Message& message) { return message; }) {}

  void run(long count) override {
    for (long i = 0; i < count; ++i) { send_and_take(); }
  }

 private:
  TypedHandler replier_;
};

}  // namespace

std::unique_ptr<MessageService> make_typed_service(DDS_DomainId_t domain, Answer answer, Placement placement) {
  if (answer == Answer::in_listener) { return std::make_unique<TypedHandlerService>(domain); }
  return std::make_unique<TypedThreadService>(domain, placement);
}

}  // namespace bench
