#include "requestreply/fixture.hpp"
#include "support/dds_values.hpp"

namespace requestreply_test {
namespace {

using zemtra::details::CorrelationCFTBuilder;

class CorrelationFilter : public RequestReply {
 protected:
  DDSContentFilteredTopic* create(DDSTopic* topic, const DDS_GUID_t& guid) {
    return CorrelationCFTBuilder().create_correlation_cft(participant_.get(), topic, guid);
  }
  // Each digit in each half of an octet.
  const DDS_GUID_t guid_{
      {0x01, 0x23, 0x45, 0x67, 0x89, 0xab, 0xcd, 0xef, 0xfe, 0xdc, 0xba, 0x98, 0x76, 0x54, 0x32, 0x10}};
};

TEST_F(CorrelationFilter, IsNamedAndWrittenCharacterByCharacterAndMadeOnceForAWriter) {
  EXPECT_STREQ(CorrelationCFTBuilder::GUID_FIELD_NAME, "@related_sample_identity.writer_guid.value");
  DDSTopic* topic = make_topic("CalcReply");
  DDSContentFilteredTopic* filtered = create(topic, guid_);
  EXPECT_STREQ(filtered->get_name(), "CalcReply_0123456789abcdeffedcba9876543210");
  EXPECT_STREQ(filtered->get_filter_expression(),
               "@related_sample_identity.writer_guid.value = &hex(0123456789abcdeffedcba9876543210)");
  EXPECT_EQ(filtered->get_related_topic(), topic);
  DDS_StringSeq parameters;
  EXPECT_EQ(filtered->get_expression_parameters(parameters), DDS_RETCODE_OK);
  EXPECT_EQ(parameters.length(), 0);
  // It cannot be made twice for one writer.
  EXPECT_EQ(message_of<zemtra::RuntimeException>([&] { create(topic, guid_); }),
            report("CorrelationCFTBuilder::create_correlation_cft", QVX_LOG_CREATE_s,
                   "content-filtered topic for topic CalcReply"));
  EXPECT_EQ(log_.lines().size(), 1u);
  EXPECT_EQ(participant_->delete_contentfilteredtopic(filtered), DDS_RETCODE_OK);
}

TEST_F(CorrelationFilter, AllowsAReplyTopicANameOf190CharactersAndNoMore) {
  const std::string service(185, 's');
  EXPECT_STREQ(make_requester(requester_params().service_name(service))->writer_topic->get_name(),
               (service + "Request").c_str());
  EXPECT_EQ(participant_->created_filtered_topics.at(0).size(), 223u);
  Seam::get().reset();
  log_.clear();
  const std::string longer = service + "s";
  EXPECT_EQ(message_of<zemtra::BadParameterException>([&] { make_requester(requester_params().service_name(longer)); }),
            "zemtra::details::EntityUntypedImpl::initialize failure caused by " +
                report("CorrelationCFTBuilder::create_correlation_cft", DDS_LOG_BAD_PARAMETER_s,
                       "topic name is too long: " + longer + "Reply"));
  EXPECT_EQ(log_.lines().size(), 2u);
  EXPECT_EQ(Seam::get().count(Call::create_contentfilteredtopic), 0);
}

TEST_F(CorrelationFilter, NamesTheRequestersOwnWriter) {
  const auto a = make_requester();
  const auto b = make_requester();
  EXPECT_STRNE(a->reader_topic->get_name(), b->reader_topic->get_name());
  for (const auto* requester : {a.get(), b.get()}) {
    DDS_DataWriterQos qos;
    ASSERT_EQ(requester->writer->get_qos(qos), DDS_RETCODE_OK);
    EXPECT_EQ(requester->reader_topic->get_name(), "CalcReply_" + support::hexadecimal(qos.protocol.writer_guid));
  }
}

TEST_F(CorrelationFilter, IsNotMadeAndNoReplierEitherWhenTheReplyTopicIsAFilteredOneAlready) {
  DDSContentFilteredTopic* filtered = make_filtered_topic("CalcReply", make_topic("related"));
  Seam::get().reset();
  const auto expect_refusal = [](const auto& create) {
    EXPECT_THAT(message_of<zemtra::PreconditionNotMetException>(create),
                ::testing::HasSubstr("a content-filtered topic with the name already exists (CalcReply)"));
  };
  expect_refusal([&] { make_replier(); });
  EXPECT_EQ(Seam::get().count(Call::create_datawriter), 0);
  expect_refusal([&] { make_requester(); });
  EXPECT_EQ(Seam::get().count(Call::create_contentfilteredtopic), 0);
  EXPECT_EQ(Seam::get().count(Call::delete_datawriter), 1);
  EXPECT_EQ(participant_->delete_contentfilteredtopic(filtered), DDS_RETCODE_OK);
}

TEST_F(CorrelationFilter, TakesExplicitTopicNamesBeforeTheServiceName) {
  const auto requester =
      make_requester(requester_params().service_name("").request_topic_name("Ask").reply_topic_name("Answer"));
  EXPECT_STREQ(requester->writer_topic->get_name(), "Ask");
  EXPECT_STREQ(DDSContentFilteredTopic::narrow(requester->reader_topic)->get_related_topic()->get_name(), "Answer");
}

TEST_F(CorrelationFilter, IsMadeForTheAutomaticGuidWhenTheWritersCannotBeAsked) {
  Seam::get().plan({Call::get_writer_qos});
  EXPECT_EQ(make_requester()->reader_topic->get_name(), "CalcReply_" + std::string(32, 'f'));
}

}  // namespace
}  // namespace requestreply_test
