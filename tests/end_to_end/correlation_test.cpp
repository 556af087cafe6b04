// Which replies a requester gets for which request.

#include <algorithm>
#include <memory>

#include "service.hpp"

namespace end_to_end {
namespace {

class Correlation : public ServiceTest {};

TEST_P(Correlation, ManyRequestersEachGetTheirOwn) {
  const int count = std::max(scaled(500), 50);
  std::vector<std::unique_ptr<Requester>> requesters;
  for (int i = 0; i < count; ++i) { requesters.push_back(std::make_unique<Requester>(requester_params())); }
  const std::unique_ptr<Replier> replier = make_replier();
  for (const auto& requester : requesters) { await_others(*requester, 1); }
  std::vector<DDS_SampleIdentity_t> ids;
  for (int i = 0; i < count; ++i) { ids.push_back(requesters[static_cast<std::size_t>(i)]->send(std::to_string(i))); }
  EXPECT_EQ(ids.front().sequence_number, ids.back().sequence_number) << "the numbers alone do not tell them apart";
  std::vector<Request> received = replier->receive(count, count);
  ASSERT_EQ(received.size(), static_cast<std::size_t>(count));
  std::reverse(received.begin(), received.end());
  for (const Request& request : received) { replier->reply(request.identity, "re: " + request.text); }
  for (std::size_t i = 0; i < requesters.size(); ++i) {
    EXPECT_EQ(requesters[i]->await(ids[i]), Strings{"re: " + std::to_string(i)});
    void** data = nullptr;
    int left = 0;
    DDS_SampleInfoSeq infos;
    EXPECT_FALSE(requesters[i]->get_sample_loaned(&data, &left, infos, DDS_LENGTH_UNLIMITED, true, nullptr))
        << "its reader holds nothing of the others";
  }
}

TEST_P(Correlation, RepliesThatTrickleInAreWaitedForAsLongAsAskedAndKeepTheirOrder) {
  Requester requester(requester_params());
  const std::unique_ptr<Replier> replier = make_replier();
  await_others(requester, 1);
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
  EXPECT_TRUE(requester.wait_for_replies(DDS_DURATION_INFINITE, 20, request));
  EXPECT_TRUE(requester.wait_for_replies(DDS_DURATION_ZERO, 20, request)) << "replies that were counted count again";
  for (const DDS_Duration_t& max_wait : {DDS_DURATION_ZERO, DDS_Duration_t{-1, 0}, milliseconds(15)}) {
    EXPECT_FALSE(requester.wait_for_replies(max_wait, 21, request));
  }
  EXPECT_FALSE(requester.wait_for_replies(milliseconds(15), DDS_LENGTH_UNLIMITED, request));
  EXPECT_EQ(requester.take(request), sent) << "a wait takes nothing";
  EXPECT_EQ(requester.await(distraction, 20).size(), 20u);
}

TEST_P(Correlation, PayloadsOfAnySizeTravelBothWays) {
  Requester requester(requester_params());
  const std::unique_ptr<Replier> replier = make_replier();
  await_others(requester, 1);
  for (const std::size_t size : {0u, 1u, 1000u, 1000000u}) {
    std::string payload(size, 'a');
    for (std::size_t i = 0; i < size; ++i) { payload[i] = static_cast<char>('a' + i % 23); }
    const DDS_SampleIdentity_t request = requester.send(payload);
    replier->echo(1);
    EXPECT_TRUE(requester.await(request) == Strings{"re: " + payload}) << size;
  }
}

RUN_OVER_EVERY_CARRIER(Correlation);

}  // namespace
}  // namespace end_to_end
