// Many threads on one requester, and repliers that answer from their listener.

#include "service.hpp"

namespace end_to_end {
namespace {

class Threads : public ServiceTest {
 protected:
  /// `threads` threads send `each` requests and check that each gets its own replies and nothing else.
  static void ask(Requester& requester, int threads, int each) {
    std::vector<Thread> asking;
    for (int t = 0; t < threads; ++t) {
      asking.emplace_back([&requester, t, each] {
        for (int i = 0; i < each; ++i) {
          const std::string question = std::to_string(t) + ":" + std::to_string(i);
          const DDS_SampleIdentity_t id = requester.send(question);
          ASSERT_EQ(requester.await(id), Strings{"re: " + question});
        }
      });
    }
  }
};

TEST_P(Threads, OnOneRequesterGetTheirOwnReplies) {
  constexpr int threads = 8;
  const int each = scaled(2000);
  Requester requester(requester_params());
  const std::unique_ptr<Replier> replier = make_replier();
  await_others(requester, 1);
  Thread answering([&] { replier->echo(threads * each); });
  ask(requester, threads, each);
}

TEST_P(Threads, OnOneRequesterGetRepliesThatAreSentBeforeTheirRequestReturns) {
  Requester requester(requester_params());
  const std::unique_ptr<Replier> echoing = make_replier({true});
  await_others(requester, 1);
  ask(requester, 8, scaled(2000));
}

TEST_P(Threads, WithManyRequestsUnderWayGetThemAllAnswered) {
  constexpr int threads = 4, outstanding = 32;
  const int rounds = scaled(100);
  Requester requester(requester_params());
  const std::unique_ptr<Replier> replier = make_replier();
  await_others(requester, 1);
  Thread answering([&] { replier->echo(threads * outstanding * rounds); });
  std::vector<Thread> asking;
  for (int t = 0; t < threads; ++t) {
    asking.emplace_back([&, t] {
      for (int round = 0; round < rounds; ++round) {
        std::vector<DDS_SampleIdentity_t> ids;
        for (int i = 0; i < outstanding; ++i) { ids.push_back(requester.send(std::to_string(t * 1000 + i))); }
        for (int i = outstanding - 1; i >= 0; --i) {
          ASSERT_EQ(requester.await(ids[static_cast<std::size_t>(i)]), Strings{"re: " + std::to_string(t * 1000 + i)});
        }
      }
    });
  }
}

TEST_P(Threads, CreatingAndDestroyingRequestersDisturbNobody) {
  const int cycles = scaled(1000);
  Requester requester(requester_params());
  const std::unique_ptr<Replier> echoing = make_replier({true});
  await_others(requester, 1);
  Thread churning([&] {
    for (int i = 0; i < cycles; ++i) {
      Requester brief(requester_params());
      await_others(brief, 1);
      ASSERT_EQ(brief.await(brief.send("brief")), Strings{"re: brief"});
    }
  });
  ask(requester, 1, cycles * 2);
}

RUN_OVER_EVERY_CARRIER(Threads);

}  // namespace
}  // namespace end_to_end
