// Waiting for replies and requests, and what a wait leaves behind.

#include <future>

#include "service.hpp"

namespace end_to_end {
namespace {

class Waiting : public ServiceTest {
 protected:
  /// A request whose `count` replies have arrived.
  DDS_SampleIdentity_t answered_request(int count) {
    const DDS_SampleIdentity_t id = requester.send("question");
    const std::vector<Request> received = replier->receive();
    for (int i = 0; i < count; ++i) { replier->reply(received.at(0).identity, std::to_string(i)); }
    // A further request's reply is the last thing that the replier sent: once it is here, all others are.
    const DDS_SampleIdentity_t end = requester.send("end");
    replier->echo(1);
    EXPECT_EQ(requester.await(end).size(), 1u);
    return id;
  }
  void SetUp() override { await_others(requester, 1); }

  Requester requester{requester_params()};
  const std::unique_ptr<Replier> replier = make_replier();
};

TEST_P(Waiting, EndsAtOnceWhenEnoughRepliesAreThereAndInTimeWhenTheyAreNot) {
  const DDS_SampleIdentity_t request = answered_request(3);
  EXPECT_TRUE(requester.wait_for_replies(DDS_DURATION_ZERO, 3, request));
  EXPECT_TRUE(requester.wait_for_replies(DDS_DURATION_ZERO, 3, request)) << "replies that were read count too";
  EXPECT_TRUE(requester.wait_for_replies(DDS_DURATION_INFINITE, 2, request));
  EXPECT_TRUE(requester.wait_for_replies(DDS_DURATION_INFINITE, 0, request));
  for (const DDS_Duration_t& max_wait : {DDS_DURATION_ZERO, DDS_Duration_t{-1, 0}, milliseconds(15)}) {
    EXPECT_FALSE(requester.wait_for_replies(max_wait, 4, request));
  }
  EXPECT_FALSE(requester.wait_for_replies(milliseconds(15), DDS_LENGTH_UNLIMITED, request));
  EXPECT_EQ(requester.take(request), (Strings{"0", "1", "2"})) << "a wait takes nothing";
}

TEST_P(Waiting, CountsRepliesThatTrickleInWhichKeepTheirOrder) {
  const DDS_SampleIdentity_t request = requester.send("question");
  const Request received = replier->receive().at(0);
  const DDS_SampleIdentity_t distraction = requester.send("another");
  const Request other = replier->receive().at(0);
  Strings sent;
  for (int i = 0; i < 20; ++i) { sent.push_back(std::to_string(i)); }
  Thread answering([&] {
    for (const std::string& text : sent) {
      replier->reply(received.identity, text);
      replier->reply(other.identity, "distraction");
      std::this_thread::yield();
    }
  });
  EXPECT_EQ(requester.await(request, 20), sent);
  EXPECT_EQ(requester.await(distraction, 20).size(), 20u);
}

TEST_P(Waiting, ALoanStaysWhileOthersTakeTheSameReplies) {
  const DDS_SampleIdentity_t request = answered_request(2);
  void** data = nullptr;
  int count = 0;
  DDS_SampleInfoSeq infos;
  requester.get_reply_loaned(&data, &count, infos, DDS_LENGTH_UNLIMITED, request, false);
  ASSERT_EQ(count, 2);
  EXPECT_EQ(requester.take(request).size(), 2u);
  answered_request(10);
  EXPECT_EQ(StringType::text(data[0]), "0");
  EXPECT_EQ(StringType::text(data[1]), "1");
  requester.return_loan(data, infos);
  EXPECT_EQ(infos.length(), 0);
}

TEST_P(Waiting, EndsForARepliersAnswerFromAnotherThreadLongAfterTheRequest) {
  std::promise<Request> taken;
  Thread receiving([&] { taken.set_value(replier->receive().at(0)); });
  const DDS_SampleIdentity_t request = requester.send("slow");
  receiving.join();
  EXPECT_FALSE(requester.wait_for_replies(milliseconds(5), 1, request));
  Thread answering([&] {
    const Request late = taken.get_future().get();
    replier->reply(late.identity, "done");
  });
  EXPECT_EQ(requester.await(request), Strings{"done"});
}

RUN_OVER_EVERY_CARRIER(Waiting);

}  // namespace
}  // namespace end_to_end
