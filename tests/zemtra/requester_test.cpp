// What an application gets out of a typed requester.

#include <atomic>
#include <vector>

#include "typed_service.hpp"

namespace typed {
namespace {

class TypedRequester : public TypedService {
 protected:
  void SetUp() override { ASSERT_TRUE(requester.wait_for_service(kLong)); }
  template <class Replies>
  static Texts texts(Replies&& replies) {
    Texts result;
    for (const auto& reply : replies) { result.push_back(reply.data().text); }
    return result;
  }

  Requester requester = make_requester();
  const std::unique_ptr<OtherReplier> replier = make_other_replier();
};

TEST_P(TypedRequester, CallReturnsTheFirstReplyAndThrowsTheOthersAway) {
  Thread answering([&] {
    replier->reply_to_next({"first", "second"});
    replier->reply_to_next({"last"});
  });
  const Answer reply = requester.call({1, 2}, kLong);
  EXPECT_EQ(reply.asker, 1);
  EXPECT_EQ(reply.number, 2);
  EXPECT_EQ(reply.text, "first");
  EXPECT_EQ(requester.call({1, 3}, kLong).text, "last");
  answering.join();
  EXPECT_EQ(requester.discarded_replies(), 1);
  EXPECT_FALSE(requester.take_reply());
}

TEST_P(TypedRequester, CallThatTimesOutSaysSoAndLateRepliesAreCountedAndGone) {
  EXPECT_THROW(requester.call({1, 2}, 1ms), zemtra::TimeoutException);
  EXPECT_THROW(requester.call({1, 3}, DDS_DURATION_ZERO), zemtra::TimeoutException);
  replier->reply_to_next({"too late", "later still"});
  AWAIT_EQ(requester.discarded_replies(), 2);
  EXPECT_FALSE(requester.wait_for_replies(1ms));
}

TEST_P(TypedRequester, PendingRequestHandsOutRepliesAsTheyComeUntilACountAPredicateOrTheDeadline) {
  auto pending = requester.send({1, 1}, kLong);
  replier->reply_to_next({"a", "b", "c", "d", "stop", "e"});
  EXPECT_EQ(texts(pending.replies(0)), Texts{});
  EXPECT_EQ(texts(pending.replies(2)), (Texts{"a", "b"}));
  EXPECT_EQ(pending.next()->data().text, "c");
  EXPECT_EQ(texts(pending.until([](const auto& reply) { return reply.data().text == "stop"; })), (Texts{"d", "stop"}));

  auto brief = requester.send({1, 2}, GetParam().in_process() ? 20ms : 500ms);
  replier->reply_to_next({"x", "y"});
  EXPECT_EQ(texts(brief), (Texts{"x", "y"})) << "what came in time, then the deadline";
  EXPECT_FALSE(brief.next());
  EXPECT_EQ(pending.next()->data().text, "e") << "the other request is still pending";

  auto many = requester.send({1, 3}, kLong);
  Thread answering([&] { replier->reply_to_next(Texts(200, "many")); });
  EXPECT_EQ(texts(many.replies(200)).size(), 200u);
}

TEST_P(TypedRequester, DroppedPendingRequestTakesItsRepliesWithItAndAMovedOneDoesNot) {
  std::vector<zemtra::PendingRequest<Answer>> pending;
  for (int i = 0; i < 3; ++i) { pending.push_back(requester.send({1, i}, kLong)); }
  replier->reply_to_next({"0a", "0b"});
  EXPECT_EQ(pending[0].next()->data().text, "0a") << "moved while the vector grew";
  pending[0] = std::move(pending[2]);
  EXPECT_FALSE(pending[2].next()) << "moved from";  // NOLINT(bugprone-use-after-move)
  replier->reply_to_next({"1"});
  replier->reply_to_next({"2"});
  EXPECT_EQ(pending[0].next()->data().text, "2");
  pending.clear();
  EXPECT_EQ(requester.discarded_replies(), 2) << "\"0b\" and \"1\"";
  EXPECT_FALSE(requester.take_reply());
}

TEST_P(TypedRequester, RepliesAreReceivedTakenAndReadForAnyRequestAndForOne) {
  const DDS_SampleIdentity_t first = requester.send_request({1, 1});
  zemtra::WriteSample<Question> sample(Question{1, 2});
  const DDS_SampleIdentity_t second = requester.send_request(sample);
  EXPECT_EQ(second.sequence_number, sample.info().identity.sequence_number);
  EXPECT_FALSE(requester.take_reply(first));
  EXPECT_TRUE(requester.receive_replies(first, 1ms).empty());
  EXPECT_THROW(requester.receive_replies(first, 0ms), zemtra::BadParameterException);
  EXPECT_THROW(make_requester().take_reply(first), zemtra::BadParameterException) << "another requester's";
  replier->reply_to_next({"1a", "1b", "1c"});
  replier->reply_to_next({"2a", "2b", "2c", "2d"});

  EXPECT_TRUE(requester.wait_for_replies(kLong, 7));
  EXPECT_TRUE(requester.wait_for_replies(second, kLong, 4));
  EXPECT_EQ(texts(requester.read_replies()).size(), 7u);
  EXPECT_EQ(requester.read_reply()->data().text, "1a");
  EXPECT_EQ(texts(requester.read_replies(second)), (Texts{"2a", "2b", "2c", "2d"}));
  EXPECT_EQ(requester.read_reply(second)->data().text, "2a");
  EXPECT_EQ(requester.take_reply(second)->data().text, "2a");
  EXPECT_EQ(requester.receive_reply(second, kLong)->data().text, "2b");
  EXPECT_EQ(texts(requester.receive_replies(second, kLong, 1, 1)), Texts{"2c"});
  EXPECT_EQ(texts(requester.take_replies(first, 1)), Texts{"1a"});
  EXPECT_EQ(requester.receive_reply(kLong)->data().text, "1b");
  EXPECT_EQ(requester.take_reply()->data().text, "1c");
  const auto last = requester.receive_replies(kLong);
  ASSERT_EQ(last.size(), 1);
  EXPECT_EQ(last[0].related_identity().sequence_number, second.sequence_number);
  EXPECT_EQ(requester.discarded_replies(), 0);
}

TEST_P(TypedRequester, IsNotKeptWaitingByOneWhoReadsItsReply) {
  for (int i = 0; i < scaled(200); ++i) {
    std::atomic<bool> over{false};
    Thread reading([&] {
      while (!over) { requester.read_replies(); }
    });
    Thread answering([&] { replier->reply_to_next({"seen"}); });
    EXPECT_EQ(requester.call({1, i}, kLong).text, "seen");
    over = true;
  }
}

TEST_P(TypedRequester, RefusesTopicsOfAnotherType) {
  const auto other_types = [&] { zemtra::Requester<Answer, Question>(participant(), "Calc"); };
  EXPECT_THROW(other_types(), zemtra::PreconditionNotMetException);
  const auto builtin_type = [&] { zemtra::Replier<Question, std::string>(participant(), "Calc"); };
  EXPECT_THROW(builtin_type(), zemtra::PreconditionNotMetException);
}

TEST_P(TypedRequester, AbandonsItsOwnRequestsOnly) {
  Requester other = make_requester();
  ASSERT_TRUE(other.wait_for_service(kLong));
  const DDS_SampleIdentity_t own = requester.send_request({1, 1});
  replier->reply_to_next({"own"});
  const DDS_SampleIdentity_t others = other.send_request({2, 1});
  EXPECT_EQ(own.sequence_number, others.sequence_number);
  requester.abandon(others);
  ASSERT_TRUE(requester.wait_for_replies(own, kLong));
  EXPECT_EQ(requester.read_reply(own)->data().text, "own");
  requester.abandon(own);
  EXPECT_FALSE(requester.read_reply(own));
  EXPECT_EQ(requester.discarded_replies(), 1);
}

RUN_OVER_EVERY_CARRIER(TypedRequester);

}  // namespace
}  // namespace typed
