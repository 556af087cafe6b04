#include "requestreply/fixture.hpp"
#include "support/vtable.hpp"

namespace requestreply_test {
namespace {

class EntityParameters : public RequestReply {
 protected:
  ~EntityParameters() override {
    participant_->delete_publisher(publisher_);
    participant_->delete_subscriber(subscriber_);
  }
  DDSPublisher* const publisher_ = participant_->create_publisher(DDS_PUBLISHER_QOS_DEFAULT, nullptr, 0);
  DDSSubscriber* const subscriber_ = participant_->create_subscriber(DDS_SUBSCRIBER_QOS_DEFAULT, nullptr, 0);
  static std::string failure(const std::string& msg) {
    return report("EntityParams::validate", DDS_LOG_BAD_PARAMETER_s, msg);
  }
};

TEST_F(EntityParameters, ReportTheFirstWrongCombinationAndOnlyThat) {
  support::FaultyParticipant other(*real_participant_);
  struct Case {
    DDSDomainParticipant* participant;
    const char *service, *request, *reply;
    DDSPublisher* publisher;
    DDSSubscriber* subscriber;
    const char* failure;
  };
  const char* both = "service name and topic names cannot be set at the same time";
  const char* neither = "either service name or topic names are required";
  const char* foreign_publisher = "publisher belongs to different participant";
  const char* foreign_subscriber = "subscriber belongs to different participant";
  const Case cases[] = {
      {nullptr, "S", "", "", nullptr, nullptr, "NULL participant"},
      {nullptr, "S", "A", "B", publisher_, subscriber_, "NULL participant"},
      {participant_.get(), "S", "A", "", nullptr, nullptr, both},
      {participant_.get(), "S", "", "B", nullptr, nullptr, both},
      {participant_.get(), "S", "A", "B", nullptr, nullptr, both},
      {participant_.get(), "", "A", "", nullptr, nullptr, neither},
      {participant_.get(), "", "", "B", nullptr, nullptr, neither},
      {participant_.get(), "", "", "", nullptr, nullptr, neither},
      {&other, "", "", "", publisher_, subscriber_, neither},
      {&other, "S", "", "", publisher_, nullptr, foreign_publisher},
      {&other, "S", "", "", publisher_, subscriber_, foreign_publisher},
      {&other, "", "A", "B", nullptr, subscriber_, foreign_subscriber},
  };
  for (const Case& entry : cases) {
    OpenParams params(entry.participant);
    params.service_name_ = entry.service;
    params.request_topic_name_ = entry.request;
    params.reply_topic_name_ = entry.reply;
    params.publisher_ = entry.publisher;
    params.subscriber_ = entry.subscriber;
    log_.clear();
    EXPECT_EQ(message_of<zemtra::BadParameterException>([&] { params.validate(); }), failure(entry.failure));
    EXPECT_THAT(log_.lines(),
                ::testing::ElementsAre(FailureLine("requestreply/Exception", "EntityParams::validate",
                                                   support::filled(DDS_LOG_BAD_PARAMETER_s, entry.failure))));
  }
}

TEST_F(EntityParameters, AcceptAServiceNameOrBothTopicNamesWithOwnPublisherAndSubscriber) {
  zemtra::RequesterParams params(participant_.get());
  EXPECT_TRUE(params.datawriter_qos() == nullptr && params.datareader_qos() == nullptr);
  EXPECT_TRUE(params.datawriter_type_support() == nullptr && params.datareader_type_support() == nullptr);
  EXPECT_NO_THROW(params.service_name(" ").validate());
  EXPECT_NO_THROW(params.publisher(publisher_).subscriber(subscriber_).validate());
  EXPECT_NO_THROW(params.service_name("").request_topic_name("A").reply_topic_name("B").validate());
  EXPECT_NO_THROW(params.qos_profile("", "profile without library").validate());
  EXPECT_THAT(log_.lines(), ::testing::IsEmpty());
}

TEST_F(EntityParameters, AreSetInAChainInWhichTheLastCallWins) {
  const DDS_DataWriterQos writer_qos;
  const DDS_DataReaderQos reader_qos;
  DDSStringTypeSupport request_type;
  DDSOctetsTypeSupport reply_type;
  zemtra::RequesterParams params(nullptr);
  zemtra::RequesterParams& chained = params.service_name("first")
                                         .participant(participant_.get())
                                         .service_name("S")
                                         .request_topic_name("A")
                                         .reply_topic_name("B")
                                         .datawriter_qos(writer_qos)
                                         .datareader_qos(reader_qos)
                                         .qos_profile("first", "first")
                                         .qos_profile("L", "P")
                                         .request_type_support(&request_type)
                                         .reply_type_support(&reply_type);
  EXPECT_EQ(&chained, &params);
  const EntityParams& read = params;
  EXPECT_EQ(read.participant(), participant_.get());
  EXPECT_EQ(read.service_name(), "S");
  EXPECT_EQ(read.request_topic_name(), "A");
  EXPECT_EQ(read.reply_topic_name(), "B");
  EXPECT_EQ(read.datawriter_qos(), &writer_qos);
  EXPECT_EQ(read.datareader_qos(), &reader_qos);
  EXPECT_EQ(read.qos_library_name(), "L");
  EXPECT_EQ(read.qos_profile_name(), "P");
  EXPECT_EQ(read.datawriter_type_support(), &request_type);
  EXPECT_EQ(read.datareader_type_support(), &reply_type);
}

TEST_F(EntityParameters, HaveTheFieldsAndVirtualOperationsThatBuildersOutsideTheLibraryRelyOn) {
  OpenParams params(participant_.get());
  const char* begin = reinterpret_cast<const char*>(&params);
  const auto offset = [begin](const void* field) { return static_cast<const char*>(field) - begin; };
  const std::vector<std::ptrdiff_t> offsets = {offset(&params.service_name()),
                                               offset(&params.request_topic_name()),
                                               offset(&params.reply_topic_name()),
                                               offset(&params.qos_library_name()),
                                               offset(&params.qos_profile_name()),
                                               offset(&params.datawriter_qos_),
                                               offset(&params.datareader_qos_),
                                               offset(&params.publisher_),
                                               offset(&params.subscriber_),
                                               offset(&params.datawriter_type_support_),
                                               offset(&params.datareader_type_support_)};
  EXPECT_EQ(offsets.front(), 2 * static_cast<std::ptrdiff_t>(sizeof(void*)));
  EXPECT_TRUE(std::is_sorted(offsets.begin(), offsets.end()));
  EXPECT_EQ(sizeof(EntityParams), 5 * sizeof(std::string) + 8 * sizeof(void*));
  EXPECT_EQ(sizeof(zemtra::RequesterParams), sizeof(EntityParams));

  const EntityParams plain(nullptr);
  EXPECT_EQ(support::virtual_function(&plain, 0), "zemtra::details::EntityParams::validate");
  EXPECT_EQ(support::virtual_function(&plain, 1), "zemtra::details::EntityParams::~EntityParams");
  const zemtra::RequesterParams requester(nullptr);
  EXPECT_EQ(support::virtual_function(&requester, 0), "zemtra::details::EntityParams::validate");
  EXPECT_EQ(support::virtual_function(&requester, 1), "zemtra::RequesterParams::~RequesterParams");
}

}  // namespace
}  // namespace requestreply_test
