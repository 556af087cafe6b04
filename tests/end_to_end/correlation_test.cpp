// Which replies a requester gets for which request.

#include <algorithm>
#include <memory>

#include "service.hpp"

namespace end_to_end {
namespace {

class Correlation : public ServiceTest {};

TEST_P(Correlation, AReplyReachesTheRequesterOfItsRequestAndNoOther) {
  Requester one(requester_params()), other(requester_params());
  const std::unique_ptr<Replier> replier = make_replier();
  await_others(one, 1);
  await_others(other, 1);
  const DDS_SampleIdentity_t from_one = one.send("one"), from_other = other.send("other");
  EXPECT_EQ(from_one.sequence_number, from_other.sequence_number) << "the numbers alone do not tell them apart";
  replier->echo(2);
  EXPECT_EQ(one.await(from_one), Strings{"re: one"});
  EXPECT_EQ(other.await(from_other), Strings{"re: other"});
  const DDS_SampleIdentity_t end = one.send("end");  // its reply comes after any that was misled
  replier->echo(1);
  EXPECT_EQ(one.await(end), Strings{"re: end"});
  EXPECT_EQ(one.take(from_other), Strings{});
  EXPECT_EQ(other.take(from_one), Strings{});
}

TEST_P(Correlation, OctetsTravelUnchangedInBothDirections) {
  BasicRequester<OctetsType> requester(requester_params());
  const std::unique_ptr<Replier> replier = make_replier({true});
  await_others(requester, 1);
  for (const std::size_t size : {0u, 1u, 1000u, 1000000u}) {
    std::string payload(size, '\0');
    for (std::size_t i = 0; i < size; ++i) { payload[i] = static_cast<char>(i % 251); }
    const DDS_SampleIdentity_t request = requester.send(payload);
    replier->echo(1, std::string("\0\xff", 2));
    const Strings replies = requester.await(request);
    ASSERT_EQ(replies.size(), 1u);
    EXPECT_TRUE(replies[0] == std::string("\0\xff", 2) + payload) << size;
  }
}

TEST_P(Correlation, FourRepliersAnswerEveryRequest) {
  Requester requester(requester_params());
  std::vector<std::unique_ptr<Replier>> repliers;
  for (int i = 0; i < 4; ++i) { repliers.push_back(make_replier()); }
  await_others(requester, 4);
  constexpr int requests = 50;
  std::vector<Thread> threads;
  for (std::size_t i = 0; i < 4; ++i) {
    threads.emplace_back([&, i] { repliers[i]->echo(requests, std::to_string(i) + ": "); });
  }
  std::vector<DDS_SampleIdentity_t> ids;
  for (int i = 0; i < requests; ++i) { ids.push_back(requester.send(std::to_string(i))); }
  for (int i = 0; i < requests; ++i) {
    Strings replies = requester.await(ids[static_cast<std::size_t>(i)], 4);
    std::sort(replies.begin(), replies.end());
    const std::string text = std::to_string(i);
    EXPECT_EQ(replies, (Strings{"0: " + text, "1: " + text, "2: " + text, "3: " + text}));
  }
}

TEST_P(Correlation, ManyRequestersEachGetTheirOwn) {
  const int count = std::max(scaled(500), 50);
  std::vector<std::unique_ptr<Requester>> requesters;
  for (int i = 0; i < count; ++i) { requesters.push_back(std::make_unique<Requester>(requester_params())); }
  const std::unique_ptr<Replier> replier = make_replier();
  for (const auto& requester : requesters) { await_others(*requester, 1); }
  std::vector<DDS_SampleIdentity_t> ids;
  for (int i = 0; i < count; ++i) { ids.push_back(requesters[static_cast<std::size_t>(i)]->send(std::to_string(i))); }
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

RUN_OVER_EVERY_CARRIER(Correlation);

}  // namespace
}  // namespace end_to_end
