// Many threads and repliers on one service: every reply reaches the thread that asked, once.

#include <deque>
#include <vector>

#include "typed_service.hpp"

namespace typed {
namespace {

class TypedThreads : public TypedService {
 protected:
  static constexpr int kThreads = 8;
  static constexpr int kRepliers = 4;

  /// Uses up the replies to one request: one of each replier.
  static void check(zemtra::PendingRequest<Answer> pending, const Question& question) {
    std::vector<int> from(kRepliers);
    for (const auto& reply : pending.replies(kRepliers)) {
      ASSERT_EQ(reply.data().asker, question.asker);
      ASSERT_EQ(reply.data().number, question.number);
      ++from.at(static_cast<std::size_t>(std::stoi(reply.data().text)));
    }
    ASSERT_EQ(from, std::vector<int>(kRepliers, 1));
  }
  /// Sends requests, up to a window of them ahead of their replies.
  static void ask(Requester& requester, int asker, int count) {
    constexpr std::size_t window = 16;
    std::deque<zemtra::PendingRequest<Answer>> pending;
    for (int sent = 0, checked = 0; checked < count; ++checked) {
      for (; sent < count && pending.size() < window; ++sent) {
        pending.push_back(requester.send({asker, sent}, kLong));
      }
      ASSERT_NO_FATAL_FAILURE(check(std::move(pending.front()), {asker, checked}));
      pending.pop_front();
    }
  }
};

TEST_P(TypedThreads, EightOnOneRequesterAndFourRepliersLoseDoubleAndCrossNothing) {
  constexpr int replies = 1'000'000;  // in one process under sanitizers, too
  const int each = (GetParam().in_process() ? replies : scaled(replies)) / kThreads / kRepliers;
  Requester requester = make_requester();
  std::vector<std::unique_ptr<OtherReplier>> repliers;
  for (int i = 0; i < kRepliers; ++i) { repliers.push_back(make_other_replier()); }
  AWAIT_EQ(requester.matched_repliers(), kRepliers);
  std::vector<Thread> serving;
  for (int i = 0; i < kRepliers; ++i) {
    serving.emplace_back([&, i] { repliers[static_cast<std::size_t>(i)]->serve(kThreads * each, std::to_string(i)); });
  }
  std::vector<Thread> asking;
  for (int t = 0; t < kThreads; ++t) {
    asking.emplace_back([&, t] { ask(requester, t, each); });
  }
  asking.clear();
  EXPECT_EQ(requester.discarded_replies(), 0);
  EXPECT_FALSE(requester.take_reply());
}

TEST_P(TypedThreads, CallingAHandlerGetTheirOwnReplies) {
  const int each = scaled(20'000);
  const std::unique_ptr<OtherReplier> replier = make_other_replier({ReplierKind::handler});
  Requester requester = make_requester();
  ASSERT_TRUE(requester.wait_for_service(kLong));
  std::vector<Thread> asking;
  for (int t = 0; t < kThreads; ++t) {
    asking.emplace_back([&, t] {
      for (int i = 0; i < each; ++i) {
        const Answer reply = requester.call({t, i}, kLong);
        ASSERT_EQ(reply.asker, t);
        ASSERT_EQ(reply.number, i);
      }
    });
  }
}

RUN_OVER_EVERY_CARRIER(TypedThreads);

}  // namespace
}  // namespace typed
