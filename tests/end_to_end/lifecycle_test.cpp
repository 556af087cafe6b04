// What creating, destroying and refusing leave behind. That no entity is left in a participant is checked at the end
// of every test, when its participants are deleted.

#include "service.hpp"
#include "support/log_recorder.hpp"

namespace end_to_end {
namespace {

class Lifecycle : public ServiceTest {};

TEST_P(Lifecycle, AReplyToAVanishedRequesterGoesNowhere) {
  const std::unique_ptr<Replier> replier = make_replier();
  std::vector<Request> received;
  {
    Requester requester(requester_params());
    await_others(requester, 1);
    requester.send("answer me later");
    received = replier->receive();
  }
  ASSERT_EQ(received.size(), 1u);
  replier->await_requesters(0);
  Requester next(requester_params());
  await_others(next, 1);
  EXPECT_NO_THROW(replier->reply(received[0].identity, "too late"));
  const DDS_SampleIdentity_t id = next.send("hello");
  EXPECT_EQ(id.sequence_number, received[0].identity.sequence_number);
  replier->echo(1);
  EXPECT_EQ(next.await(id), Strings{"re: hello"});
}

TEST_P(Lifecycle, AFullReplierTimesTheRequesterOutUntilItTakes) {
  DDS_DataWriterQos impatient;
  impatient.history.kind = DDS_KEEP_ALL_HISTORY_QOS;
  // Between participants, asking for room takes time, too.
  impatient.reliability.max_blocking_time = milliseconds(GetParam().in_process() ? 15 : 500);
  Requester requester(requester_params().datawriter_qos(impatient));
  const std::unique_ptr<Replier> replier = make_replier({false, 2});
  await_others(requester, 1);
  const DDS_SampleIdentity_t first = requester.send("1");
  requester.send("2");
  {
    const support::LogRecorder log;
    EXPECT_THROW(requester.send("3"), zemtra::TimeoutException);
    EXPECT_EQ(log.lines().size(), 1u);
  }
  EXPECT_EQ(replier->receive(1).at(0).text, "1");
  const DDS_SampleIdentity_t third = requester.send("3");
  EXPECT_EQ(third.sequence_number.low, first.sequence_number.low + 2) << "the failed request took no number";
  replier->echo(2);
  EXPECT_EQ(requester.await(third), Strings{"re: 3"});
}

RUN_OVER_EVERY_CARRIER(Lifecycle);

}  // namespace
}  // namespace end_to_end
