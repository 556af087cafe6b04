#include "requestreply/fixture.hpp"

namespace requestreply_test {
namespace {

using zemtra::details::create_reply_topic_name_from_service_name;
using zemtra::details::create_request_topic_name_from_service_name;
using zemtra::details::get_or_create_topic;

class Topics : public RequestReply {
 protected:
  Topics() { type_name_ = register_string(nullptr, participant_.get()); }
  const char* type_name_;
};

TEST(TopicNames, AreTheServiceNameWithASuffix) {
  for (const std::string service : {"", "Calc", " with blanks ", "a service name of more than fifteen characters"}) {
    EXPECT_EQ(create_request_topic_name_from_service_name(service), service + "Request");
    EXPECT_EQ(create_reply_topic_name_from_service_name(service), service + "Reply");
  }
}

TEST_F(Topics, AreCreatedOnceWithTheParticipantsDefaultQosAndThenFound) {
  DDS_TopicQos qos;
  ASSERT_EQ(real_participant_->get_default_topic_qos(qos), DDS_RETCODE_OK);
  qos.history.depth = 7;
  ASSERT_EQ(real_participant_->set_default_topic_qos(qos), DDS_RETCODE_OK);

  DDSTopicDescription* created = get_or_create_topic(participant_.get(), "T", type_name_, false);
  ASSERT_NE(DDSTopic::narrow(created), nullptr);
  EXPECT_STREQ(created->get_name(), "T");
  EXPECT_STREQ(created->get_type_name(), type_name_);
  DDS_TopicQos created_qos;
  ASSERT_EQ(DDSTopic::narrow(created)->get_qos(created_qos), DDS_RETCODE_OK);
  EXPECT_EQ(created_qos.history.depth, 7);

  EXPECT_EQ(get_or_create_topic(participant_.get(), "T", type_name_, false), created);
  EXPECT_EQ(get_or_create_topic(participant_.get(), "T", "another type", true), created);
  EXPECT_EQ(Seam::get().count(Call::create_topic), 1);
  EXPECT_THAT(log_.lines(), ::testing::IsEmpty());
}

TEST_F(Topics, ThatAreFilteredAreReturnedOnlyWhereAllowed) {
  DDSContentFilteredTopic* filtered = make_filtered_topic("T", make_topic("related"));
  ASSERT_NE(filtered, nullptr);
  EXPECT_EQ(get_or_create_topic(participant_.get(), "T", type_name_, true), filtered);
  EXPECT_THAT(log_.lines(), ::testing::IsEmpty());

  const std::string msg = "a content-filtered topic with the name already exists (T)";
  EXPECT_EQ(message_of<zemtra::PreconditionNotMetException>(
                [&] { get_or_create_topic(participant_.get(), "T", type_name_, false); }),
            report("zemtra::details::get_or_create_topic", QVX_LOG_PRECONDITION_FAILURE_s, msg));
  EXPECT_THAT(log_.lines(),
              ::testing::ElementsAre(FailureLine("requestreply/Exception", "zemtra::details::get_or_create_topic",
                                                 support::filled(QVX_LOG_PRECONDITION_FAILURE_s, msg))));
  EXPECT_EQ(Seam::get().count(Call::create_topic), 1) << "only the related topic";
  EXPECT_EQ(participant_->delete_contentfilteredtopic(filtered), DDS_RETCODE_OK);
}

}  // namespace
}  // namespace requestreply_test
