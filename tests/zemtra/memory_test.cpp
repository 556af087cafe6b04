// What is left on the heap.

#include <gtest/gtest.h>
#include <malloc.h>

#include <vector>

#include <zemtra/zemtra.hpp>

namespace {

struct Question {
  int number;
};
struct Answer {
  std::vector<int> numbers;
};

using namespace std::chrono_literals;

std::size_t octets_in_use() {
  const struct mallinfo2 heap = mallinfo2();
  return heap.uordblks + heap.hblkhd;
}

TEST(AbandonedRequests, WhoseRepliesComeLateLeaveNoMemoryBehind) {
  constexpr int round = 10'000, warm_up = 2, rounds = 100;
  const zemtra::Participant participant;
  zemtra::Requester<Question, Answer> requester(participant, "Late");
  zemtra::Replier<Question, Answer> replier(participant, "Late");
  const auto abandon_a_round = [&] {
    for (int i = 0; i < round; ++i) { static_cast<void>(requester.send({i}, 1s)); }  // dropped at once
    for (int left = round; left > 0;) {
      for (const auto& request : replier.take_requests()) {
        replier.send_reply({{request.data().number, 2, 3}}, request);
        --left;
      }
    }
  };
  for (int i = 0; i < warm_up; ++i) { abandon_a_round(); }  // every pool is then as large as it will be
  const std::size_t before = octets_in_use();
  for (int i = 0; i < rounds; ++i) { abandon_a_round(); }
  EXPECT_EQ(requester.discarded_replies(), round * (warm_up + rounds));
  EXPECT_FALSE(requester.take_reply());
  EXPECT_LE(octets_in_use(), before);
}

}  // namespace
