// Typed repliers: requests taken by the application, and handlers that are called.

#include <future>
#include <stdexcept>
#include <vector>

#include "typed_service.hpp"

namespace typed {
namespace {

class TypedReplier : public TypedService {
 protected:
  const std::unique_ptr<OtherRequester> requester = make_other_requester();
};

TEST_P(TypedReplier, AnswersARequestInEveryWayAlsoLaterAndFromAnotherThread) {
  Replier replier = make_replier();
  ASSERT_TRUE(replier.wait_for_requesters(kLong));
  requester->await_repliers(1);
  EXPECT_FALSE(replier.receive_request(1ms));
  const int pending = requester->send({1, 1});
  ASSERT_TRUE(replier.wait_for_requests(kLong));
  EXPECT_EQ(replier.read_request()->data().number, 1);
  EXPECT_EQ(replier.read_requests()[0].data().number, 1);
  const auto request = replier.take_request();
  ASSERT_TRUE(request);
  EXPECT_TRUE(replier.take_requests().empty());

  replier.send_reply(answer(request->data(), "copy"), *request);
  zemtra::WriteSample<Answer> written(answer(request->data(), "sample"));
  replier.send_reply(written, *request);
  EXPECT_EQ(written.info().related_sample_identity.sequence_number, requester->identity(pending).sequence_number);
  Thread([&, identity = request->identity()] { replier.send_reply({1, 1, "thread"}, identity); }).join();
  for (const char* text : {"copy", "sample", "thread"}) { EXPECT_EQ(requester->next(pending)->text, text); }

  const int in_loan = requester->send({1, 2});
  const auto requests = replier.receive_requests(kLong);
  ASSERT_EQ(requests.size(), 1);
  replier.send_reply(answer(requests[0].data(), "loan"), requests[0]);
  EXPECT_EQ(requester->next(in_loan)->number, 2);
  EXPECT_THROW(replier.send_reply({}, DDS_UNKNOWN_SAMPLE_IDENTITY), zemtra::BadParameterException);
}

TEST_P(TypedReplier, HandlerReturnsTheReplyOrSendsSeveralAlsoLater) {
  {
    const auto returning = make_handler_replier([](const Question& question) { return answer(question, "returned"); });
    requester->await_repliers(1);
    EXPECT_EQ(requester->call({1, 1}).text, "returned");
  }
  requester->await_repliers(0);
  std::promise<zemtra::ReplySink<Answer>> later;
  const auto sending = make_handler_replier([&later](const Question& question, const zemtra::ReplySink<Answer>& sink) {
    sink.send(answer(question, "at once"));
    later.set_value(sink);
  });
  requester->await_repliers(1);
  const int pending = requester->send({1, 2});
  EXPECT_EQ(requester->next(pending)->text, "at once");
  Thread([&] { later.get_future().get().send({1, 2, "later"}); }).join();
  EXPECT_EQ(requester->next(pending)->text, "later");
}

TEST_P(TypedReplier, ExceptionOfAHandlerIsLoggedAndMayStillBeAnswered) {
  support::LogRecorder log;
  const auto handler = [](const Question& question) -> Answer {
    if (question.number == 1) { throw std::runtime_error("no idea"); }
    if (question.number == 2) { throw question.number; }  // no std::exception
    return answer(question, "fine");
  };
  const auto on_error = [](const std::exception_ptr& error, const zemtra::ReplySink<Answer>& sink) {
    try {
      std::rethrow_exception(error);
    } catch (const std::runtime_error& known) {
      sink.send({0, 0, std::string("sorry: ") + known.what()});
    }  // and what it does not know leaves it
  };
  const auto replier = make_handler_replier(handler, HandlerReplier::ErrorHandler(on_error));
  requester->await_repliers(1);
  EXPECT_EQ(requester->call({1, 1}).text, "sorry: no idea");
  EXPECT_EQ(log.other_lines().back().text, support::filled(QVX_LOG_ANY_FAILURE_s, "no idea"));
  const int unanswered = requester->send({1, 2}, 1ms);
  EXPECT_FALSE(requester->next(unanswered));
  AWAIT_EQ(log.other_lines().back().text,
           support::filled(QVX_LOG_ANY_FAILURE_s, "the error handler threw what is no std::exception"));
  EXPECT_EQ(requester->call({1, 3}).text, "fine") << "the handler goes on";
}

TEST_P(TypedReplier, HandlerGetsAllRequestsThatWaitHoweverFewOneReadGives) {
  DDS_DataReaderQos qos = zemtra::request_reply_datareader_qos(participant(), "CalcRequest");
  EXPECT_EQ(qos.subscription_name.role_name, nullptr);
  qos.reader_resource_limits.max_samples_per_read = 3;
  std::promise<std::vector<int>> sent;
  const HandlerReplier replier(zemtra::ReplierParams(participant()).service_name("Calc").datareader_qos(qos),
                               [&](const Question& question) {
                                 // While the first is handled, ten more arrive.
                                 if (question.number == 0) {
                                   std::vector<int> pending;
                                   for (int i = 1; i <= 10; ++i) { pending.push_back(requester->send({1, i})); }
                                   sent.set_value(pending);
                                 }
                                 return answer(question);
                               });
  requester->await_repliers(1);
  EXPECT_EQ(requester->call({1, 0}).number, 0);
  int number = 0;
  for (const int pending : sent.get_future().get()) { EXPECT_EQ(requester->next(pending)->number, ++number); }
}

TEST_P(TypedReplier, HandlersThatCallOtherServicesAnswer) {
  // Between participants, the thread that calls listeners is one for all of a participant: the inner service needs
  // another.
  const std::unique_ptr<end_to_end::Side> inner_side = make_side("Inner");
  expect_topics("Inner");
  zemtra::Requester<std::string, std::string> inner(participant(), "Inner");
  const zemtra::HandlerReplier<std::string, std::string> echo(
      (GetParam().in_process() ? participant() : inner_side->get()), "Inner",
      [](const std::string& text) { return "inner " + text; });
  const auto replier = make_handler_replier(
      [&](const Question& question) { return answer(question, inner.call(std::to_string(question.number), kLong)); });
  ASSERT_TRUE(inner.wait_for_service(kLong));
  requester->await_repliers(1);
  EXPECT_EQ(requester->call({1, 5}).text, "inner 5");
}

using BuiltInTypes = TypedService;

TEST_P(BuiltInTypes, TravelThroughTheFrontEnds) {
  const DDS_KeyedString request{const_cast<char*>("key"), const_cast<char*>("value")};
  zemtra::Requester<DDS_KeyedString, DDS_Octets> requester(others_participant(), "Calc");
  const zemtra::HandlerReplier<DDS_KeyedString, DDS_Octets> replier(
      participant(), "Calc", [](const DDS_KeyedString& keyed, const zemtra::ReplySink<DDS_Octets>& sink) {
        std::string text = std::string(keyed.key) + '=' + keyed.value;
        sink.send({static_cast<DDS_Long>(text.size()), reinterpret_cast<DDS_Octet*>(text.data())});
      });
  ASSERT_TRUE(requester.wait_for_service(kLong));
  const zemtra::Sample<DDS_Octets> reply = requester.call(request, kLong);
  EXPECT_EQ(std::string(reply.data().value, reply.data().value + reply.data().length), "key=value");
}

RUN_OVER_EVERY_CARRIER(TypedReplier);
RUN_OVER_EVERY_CARRIER(BuiltInTypes);

}  // namespace
}  // namespace typed
