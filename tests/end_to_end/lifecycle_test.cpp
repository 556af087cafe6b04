// What creating, destroying and refusing leave behind. That no entity is left in a participant is checked at the end
// of every test, when its participants are deleted.

#include "service.hpp"
#include "support/log_recorder.hpp"

namespace end_to_end {
namespace {

class Lifecycle : public ServiceTest {};

TEST_P(Lifecycle, ARequesterLeavesItsTopicsAndNothingElse) {
  std::string filter_name;
  {
    Requester requester(requester_params());
    filter_name = "CalcReply_" + hexadecimal(requester.send("anybody?").writer_guid);
    EXPECT_NE(requester_side->get()->lookup_topicdescription(filter_name.c_str()), nullptr);
  }
  EXPECT_EQ(requester_side->get()->lookup_topicdescription(filter_name.c_str()), nullptr);
  EXPECT_NE(requester_side->get()->lookup_topicdescription("CalcRequest"), nullptr);
  EXPECT_NE(requester_side->get()->lookup_topicdescription("CalcReply"), nullptr);
}

TEST_P(Lifecycle, RequestersWithUntakenRepliesCanBeDestroyed) {
  Replier replier(replier_params());
  {
    Requester requester(requester_params());
    await_others(requester, 1);
    const DDS_SampleIdentity_t id = requester.send("x");
    replier.echo(1);
    EXPECT_TRUE(requester.wait_for_replies(DDS_DURATION_INFINITE, 1, id));
  }
  await_others(replier, 0);
}

TEST_P(Lifecycle, AReplyToAVanishedRequesterGoesNowhere) {
  Replier replier(replier_params());
  std::vector<Request> received;
  {
    Requester requester(requester_params());
    await_others(requester, 1);
    requester.send("answer me later");
    received = replier.receive();
  }
  ASSERT_EQ(received.size(), 1u);
  await_others(replier, 0);
  Requester next(requester_params());
  await_others(next, 1);
  EXPECT_NO_THROW(replier.reply(received[0].identity, "too late"));
  const DDS_SampleIdentity_t id = next.send("hello");
  EXPECT_EQ(id.sequence_number, received[0].identity.sequence_number);
  replier.echo(1);
  EXPECT_EQ(next.await(id), Strings{"re: hello"});
}

TEST_P(Lifecycle, AVanishedRequesterLeavesNoRequestWithoutData) {
  Replier replier(replier_params());
  {
    Requester requester(requester_params());
    await_others(requester, 1);
    requester.send("only this");
  }
  await_others(replier, 0);
  EXPECT_EQ(replier.receive().at(0).text, "only this");
  EXPECT_FALSE(replier.wait_for_any_sample(DDS_DURATION_ZERO, 1));
}

TEST_P(Lifecycle, ARequestToNobodyIsLostButHarmless) {
  Requester requester(requester_params());
  const DDS_SampleIdentity_t id = requester.send("nobody listens");
  EXPECT_FALSE(requester.wait_for_replies(DDS_DURATION_ZERO, 1, id));
  Replier replier(replier_params());
  await_others(requester, 1);
  EXPECT_FALSE(replier.wait_for_any_sample(DDS_DURATION_ZERO, 1));
  const DDS_SampleIdentity_t heard = requester.send("now");
  replier.echo(1);
  EXPECT_EQ(requester.await(heard), Strings{"re: now"});
}

TEST_P(Lifecycle, AThousandRequestersComeAndGo) {
  Replier replier(replier_params());
  for (int i = 0; i < scaled(1000); ++i) {
    Requester requester(requester_params());
    await_others(requester, 1);
    const DDS_SampleIdentity_t id = requester.send(std::to_string(i));
    replier.echo(1);
    ASSERT_EQ(requester.await(id), Strings{"re: " + std::to_string(i)});
  }
}

TEST_P(Lifecycle, APublisherAndASubscriberOfTheApplicationAreUsedAndKept) {
  DDSDomainParticipant* participant = requester_side->get();
  DDSPublisher* publisher = participant->create_publisher(DDS_PUBLISHER_QOS_DEFAULT, nullptr, 0);
  DDSSubscriber* subscriber = participant->create_subscriber(DDS_SUBSCRIBER_QOS_DEFAULT, nullptr, 0);
  {
    Requester requester(requester_params().publisher(publisher).subscriber(subscriber));
    Replier replier(replier_params());
    EXPECT_EQ(requester.get_datawriter()->get_publisher(), publisher);
    EXPECT_EQ(requester.get_datareader()->get_subscriber(), subscriber);
    await_others(requester, 1);
    const DDS_SampleIdentity_t id = requester.send("x");
    replier.echo(1);
    EXPECT_EQ(requester.await(id), Strings{"re: x"});
    EXPECT_EQ(participant->delete_publisher(publisher), DDS_RETCODE_PRECONDITION_NOT_MET);
  }
  EXPECT_EQ(participant->delete_publisher(publisher), DDS_RETCODE_OK);
  EXPECT_EQ(participant->delete_subscriber(subscriber), DDS_RETCODE_OK);
}

TEST_P(Lifecycle, AFullReplierTimesTheRequesterOutUntilItTakes) {
  DDS_DataReaderQos full;
  full.reliability.kind = DDS_RELIABLE_RELIABILITY_QOS;
  full.history.kind = DDS_KEEP_ALL_HISTORY_QOS;
  full.resource_limits.max_samples = 2;
  DDS_DataWriterQos impatient;
  impatient.history.kind = DDS_KEEP_ALL_HISTORY_QOS;
  impatient.reliability.max_blocking_time = milliseconds(15);
  Requester requester(requester_params().datawriter_qos(impatient));
  Replier replier(replier_params().datareader_qos(full));
  await_others(requester, 1);
  const DDS_SampleIdentity_t first = requester.send("1");
  requester.send("2");
  {
    const support::LogRecorder log;
    EXPECT_THROW(requester.send("3"), zemtra::TimeoutException);
    EXPECT_EQ(log.lines().size(), 1u);
  }
  EXPECT_EQ(replier.receive(1).at(0).text, "1");
  const DDS_SampleIdentity_t third = requester.send("3");
  EXPECT_EQ(third.sequence_number.low, first.sequence_number.low + 2) << "the failed request took no number";
  replier.echo(2);
  EXPECT_EQ(requester.await(third), Strings{"re: 3"});
}

TEST_P(Lifecycle, SwappedRequestersHaveEachOthersReplies) {
  Requester one(requester_params()), other(requester_params());
  Replier replier(replier_params());
  await_others(replier, 2);
  const DDS_SampleIdentity_t id = one.send("mine");
  zemtra::details::swap(one, other);
  replier.echo(1);
  EXPECT_EQ(other.await(id), Strings{"re: mine"});
  EXPECT_EQ(one.take(id), Strings{});
  const DDS_SampleIdentity_t next = one.send("next");
  replier.echo(1);
  EXPECT_EQ(one.await(next), Strings{"re: next"});
}

TEST_P(Lifecycle, AReplyTopicThatIsFilteredAlreadyMakesBothRolesFailAndLeavesNothing) {
  requester_side->expect_topic("Base");
  DDSDomainParticipant* participant = requester_side->get();
  ASSERT_EQ(DDSStringTypeSupport::register_type(participant, nullptr), DDS_RETCODE_OK);
  DDSTopic* base =
      participant->create_topic("Base", DDSStringTypeSupport::get_type_name(), DDS_TOPIC_QOS_DEFAULT, nullptr, 0);
  DDSContentFilteredTopic* filtered =
      participant->create_contentfilteredtopic("CalcReply", base, "value = 'x'", DDS_StringSeq());
  ASSERT_NE(filtered, nullptr);
  {
    const support::LogRecorder log;
    EXPECT_THROW(Requester requester(requester_params()), zemtra::PreconditionNotMetException);
    EXPECT_THROW(Replier replier(requester_params()), zemtra::PreconditionNotMetException);
  }
  EXPECT_EQ(participant->delete_contentfilteredtopic(filtered), DDS_RETCODE_OK);
}

TEST_P(Lifecycle, TopicNamesMayBeGivenInPlaceOfAServiceName) {
  for (const char* name : {"Questions", "Answers"}) {
    requester_side->expect_topic(name);
    if (GetParam().participant_per_side) { replier_side().expect_topic(name); }
  }
  const auto named = [](DDSDomainParticipant* participant) {
    return zemtra::RequesterParams(participant).request_topic_name("Questions").reply_topic_name("Answers");
  };
  Requester requester(named(requester_side->get()));
  Replier replier(named(replier_side().get()));
  await_others(requester, 1);
  EXPECT_STREQ(requester.get_datawriter()->get_topic()->get_name(), "Questions");
  EXPECT_STREQ(replier.get_datawriter()->get_topic()->get_name(), "Answers");
  const DDS_SampleIdentity_t id = requester.send("?");
  replier.echo(1);
  EXPECT_EQ(requester.await(id), Strings{"re: ?"});
}

RUN_OVER_EVERY_TRANSPORT(Lifecycle);

}  // namespace
}  // namespace end_to_end
