#include "requestreply/fixture.hpp"

namespace requestreply_test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using zemtra::details::get_related_sample_identity_from_sample_info;
using zemtra::details::get_sample_identity_from_sample_info;

const DDS_GUID_t kGuid{{1, 2, 3}};
class Replier : public RequestReply {
 protected:
  static std::string failure(const std::string& half) {
    return report("ReplierUntypedImpl::configure_params_for_reply", DDS_LOG_BAD_PARAMETER_s,
                  "related request identity (" + half + ")");
  }
};

TEST_F(Replier, AnswersARequestWithTheIdentityThatItReceived) {
  const auto replier = make_replier();
  const auto requester = make_requester();
  const DDS_SampleIdentity_t sent = send(*requester, "request");
  Loan loan(*replier);
  ASSERT_TRUE(replier->receive_sample_loaned(&loan.data, &loan.count, loan.infos, 1, kLong, 1));
  const DDS_SampleIdentity_t received = get_sample_identity_from_sample_info(loan.infos[0]);
  EXPECT_TRUE(received == sent);
  EXPECT_TRUE(get_related_sample_identity_from_sample_info(loan.infos[0]) == DDS_UNKNOWN_SAMPLE_IDENTITY);

  const char* sample = "reply";
  DDS_WriteParams_t params;
  replier->send_sample(&sample, received, params);
  EXPECT_TRUE(params.related_sample_identity == sent) << "the caller's parameters keep it";

  Loan replies(*requester);
  ASSERT_TRUE(requester->wait_for_replies(kLong, 1, sent));
  requester->get_reply_loaned(&replies.data, &replies.count, replies.infos, 1, sent, true);
  EXPECT_THAT(replies.texts(), ElementsAre("reply"));
  EXPECT_TRUE(get_related_sample_identity_from_sample_info(replies.infos[0]) == sent);
  EXPECT_TRUE(get_sample_identity_from_sample_info(replies.infos[0]) == params.identity);
}

TEST_F(Replier, AddressesAReplyAndChangesNothingElse) {
  // Numbers that share one half with a special one.
  for (const DDS_SequenceNumber_t& number :
       {DDS_SequenceNumber_t{0, 1}, DDS_SequenceNumber_t{1, 0}, DDS_SequenceNumber_t{-1, 1},
        DDS_SequenceNumber_t{0, 0xffffffffu}, DDS_SequenceNumber_t{0x7fffffff, 0}}) {
    DDS_WriteParams_t params;
    params.identity = {{{9}}, {8, 7}};
    params.source_timestamp = {1, 2};
    params.handle = 3;
    const DDS_SampleIdentity_t request{kGuid, number};
    ReplierUntypedImpl::configure_params_for_reply(params, request);
    EXPECT_TRUE(params.related_sample_identity == request);
    EXPECT_TRUE((params.identity == DDS_SampleIdentity_t{{{9}}, {8, 7}}));
    EXPECT_TRUE((params.source_timestamp == DDS_Time_t{1, 2}));
    EXPECT_EQ(params.handle, 3u);
    EXPECT_EQ(params.cookie.value.length(), 0);
  }
}

TEST_F(Replier, RefusesIdentitiesThatNoRequestCanHaveAndWritesNothing) {
  const auto replier = make_replier();
  Seam::get().reset();
  const char* sample = "reply";
  DDS_WriteParams_t params;
  const auto expect_refusal = [&](const DDS_SampleIdentity_t& request, const char* half) {
    EXPECT_EQ(message_of<zemtra::BadParameterException>([&] { replier->send_sample(&sample, request, params); }),
              failure(half));
  };
  for (const DDS_GUID_t& guid : {DDS_GUID_AUTO, DDS_GUID_UNKNOWN}) {
    expect_refusal({guid, {4, 5}}, "writer guid");
    expect_refusal({guid, DDS::SEQUENCE_NUMBER_ZERO}, "writer guid");
  }
  for (const DDS_SequenceNumber_t& number : kNumbersOfNoRequest) { expect_refusal({kGuid, number}, "sequence number"); }
  EXPECT_TRUE(params.related_sample_identity == DDS_UNKNOWN_SAMPLE_IDENTITY);
  EXPECT_THAT(Seam::get().trace(), IsEmpty());
  EXPECT_EQ(log_.lines().size(), 8u);
}

TEST_F(Replier, ReadsAnApplicationsFilteredTopicUnderTheRequestTopicsName) {
  DDSTopic* requests = make_topic("AllRequests");
  DDSContentFilteredTopic* filtered = make_filtered_topic("CalcRequest", requests);
  {
    const auto replier = make_replier();
    EXPECT_EQ(replier->reader_topic, filtered);
    const auto requester = make_requester(
        requester_params().service_name("").request_topic_name("AllRequests").reply_topic_name("CalcReply"));
    send(*requester, "unwanted");
    send(*requester, "wanted");
    EXPECT_THAT(take_all(*replier), ElementsAre("wanted"));
    EXPECT_EQ(Seam::get().trace().front(),
              "participant.create_topic(AllRequests, " + std::string(DDSStringTypeSupport::get_type_name()) + ")");
    const zemtra::NotEnabledException exception("M");
    EXPECT_EQ(message_of<zemtra::NotEnabledException>([&] { replier->log_and_rethrow(exception, "C", "m"); }),
              "C(CalcReply, AllRequests)::m failure caused by M");
  }
  EXPECT_EQ(participant_->delete_contentfilteredtopic(filtered), DDS_RETCODE_OK) << "the replier has not deleted it";
}

TEST_F(Replier, TakesExplicitTopicNames) {
  OpenParams params = replier_params();
  params.service_name_ = "";
  params.request_topic_name_ = "Ask";
  params.reply_topic_name_ = "Answer";
  const auto replier = make_replier(params);
  EXPECT_STREQ(replier->writer_topic->get_name(), "Answer");
  EXPECT_STREQ(replier->reader_topic->get_name(), "Ask");
}

TEST(TypeSupportCast, FindsADynamicTypeSupportOnly) {
  DDSDynamicDataTypeSupport dynamic;
  DDSStringTypeSupport other;
  EXPECT_EQ(zemtra::details::dynamic_data_type_support_cast(&dynamic), &dynamic);
  EXPECT_EQ(zemtra::details::dynamic_data_type_support_cast(&other), nullptr);
  EXPECT_EQ(zemtra::details::dynamic_data_type_support_cast(nullptr), nullptr);
}

}  // namespace
}  // namespace requestreply_test
