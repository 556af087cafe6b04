#include <gtest/gtest.h>

#include "ends.hpp"
#include "support/await.hpp"

namespace typed {

namespace {

class TypedReplier : public OtherReplier {
 public:
  explicit TypedReplier(const zemtra::ReplierParams& params) : replier_(params) {}

  int matched_requesters() override { return replier_.matched_requesters(); }
  std::string explain() override { return replier_.explain(); }
  void reply_to_next(const Texts& texts) override {
    const auto question = replier_.receive_request(kLong);
    ASSERT_TRUE(question);
    for (const std::string& text : texts) { replier_.send_reply(answer(question->data(), text), *question); }
  }
  void serve(int count, const std::string& text) override {
    while (count > 0) {
      for (const auto& request : replier_.receive_requests(kLong)) {
        replier_.send_reply(answer(request.data(), text), request);
        --count;
      }
    }
  }

 private:
  zemtra::Replier<Question, Answer> replier_;
};

class UntypedReplier : public OtherReplier {
 public:
  explicit UntypedReplier(const zemtra::ReplierParams& params) {
    replier_.initialize(params, &zemtra::dds_type_traits<Question>::register_type,
                        &zemtra::dds_type_traits<Answer>::register_type, sizeof(Question), nullptr, false);
  }

 private:
  zemtra::details::ReplierUntypedImpl replier_;
};

class HandlingReplier : public OtherReplier {
 public:
  explicit HandlingReplier(const zemtra::ReplierParams& params)
      : replier_(params, [](const Question& question) { return answer(question, "handled"); }) {}

 private:
  zemtra::HandlerReplier<Question, Answer> replier_;
};

class TypedRequester : public OtherRequester {
 public:
  explicit TypedRequester(DDSDomainParticipant* participant) : requester_(participant, "Calc") {}

  void await_repliers(int count) override { AWAIT_EQ(requester_.matched_repliers(), count); }
  Answer call(const Question& question) override { return requester_.call(question, kLong); }
  int send(const Question& question, std::chrono::milliseconds max_wait) override {
    return pending_.add(std::make_unique<Pending>(requester_.send(question, max_wait)));
  }
  DDS_SampleIdentity_t identity(int pending) override { return pending_[pending].identity(); }
  std::optional<Answer> next(int pending) override {
    const auto reply = pending_[pending].next();
    return reply ? std::optional<Answer>(reply->data()) : std::nullopt;
  }

 private:
  using Pending = zemtra::PendingRequest<Answer>;

  zemtra::Requester<Question, Answer> requester_;
  support::Numbered<Pending> pending_;
};

}  // namespace

std::unique_ptr<OtherReplier> create_replier(DDSDomainParticipant* participant, const ReplierKind& kind) {
  DDS_DataReaderQos reader_qos;
  reader_qos.reliability.kind = kind.asked;
  DDS_DataWriterQos writer_qos;
  writer_qos.reliability.kind = kind.offered;
  auto params = zemtra::ReplierParams(participant).service_name("Calc");
  if (kind.own_qos) { params.datareader_qos(reader_qos).datawriter_qos(writer_qos); }
  switch (kind.front) {
    case ReplierKind::untyped:
      return std::make_unique<UntypedReplier>(params);
    case ReplierKind::handler:
      return std::make_unique<HandlingReplier>(params);
    default:
      return std::make_unique<TypedReplier>(params);
  }
}

std::unique_ptr<OtherRequester> create_requester(DDSDomainParticipant* participant) {
  return std::make_unique<TypedRequester>(participant);
}

}  // namespace typed
