#include "requestreply/fixture.hpp"

namespace requestreply_test {
namespace {

using zemtra::details::log_and_rethrow_conditional;

/// A content-filtered topic that has lost its related topic.
class UnrelatedTopic final : public DDSContentFilteredTopic {
 public:
  const char* get_name() override { return "unrelated"; }
  const char* get_type_name() override { return ""; }
  DDSDomainParticipant* get_participant() override { return nullptr; }
  DDSTopic* get_related_topic() override { return nullptr; }
  const char* get_filter_expression() override { return ""; }
  DDS_ReturnCode_t get_expression_parameters(DDS_StringSeq& /*parameters*/) override { return DDS_RETCODE_OK; }
};

class ReaderOnUnrelatedTopic final : public support::FaultyReader {
 public:
  using FaultyReader::FaultyReader;
  DDSTopicDescription* get_topicdescription() override { return &topic_; }

 private:
  UnrelatedTopic topic_;
};

class EntityContext : public RequestReply {
 protected:
  std::string context(DDSDataWriter* writer, DDSDataReader* reader) {
    return log_and_rethrow_conditional(writer, reader, exception_, "Class", "method", false);
  }
  const zemtra::NotEnabledException exception_{"M"};
};

TEST_F(EntityContext, NamesBothTopicsAndForAFilteredTopicTheRelatedOne) {
  const auto requester = make_requester();
  const auto replier = make_replier();
  EXPECT_EQ(context(replier->writer, replier->reader), "Class(CalcReply, CalcRequest)::method failure");
  EXPECT_EQ(context(requester->writer, requester->reader), "Class(CalcRequest, CalcReply)::method failure");
  EXPECT_THAT(log_.lines(), ::testing::ElementsAre(
                                FailureLine("requestreply/UntypedCommon", "Class(CalcReply, CalcRequest)::method",
                                            support::filled(QVX_LOG_ANY_FAILURE_s, "failed (see previous errors)")),
                                FailureLine("requestreply/UntypedCommon", "Class(CalcRequest, CalcReply)::method",
                                            support::filled(QVX_LOG_ANY_FAILURE_s, "failed (see previous errors)"))));
}

TEST_F(EntityContext, NamesNoTopicUnlessBothHaveAName) {
  const auto replier = make_replier();
  EXPECT_EQ(context(nullptr, replier->reader), "Class::method failure");
  EXPECT_EQ(context(replier->writer, nullptr), "Class::method failure");
  EXPECT_EQ(context(nullptr, nullptr), "Class::method failure");
  for (const Call lost : {Call::get_writer_topic, Call::get_reader_topicdescription}) {
    Seam::get().plan({lost});
    EXPECT_EQ(context(replier->writer, replier->reader), "Class::method failure") << support::name_of(lost);
  }
  ReaderOnUnrelatedTopic reader(*replier->reader);
  EXPECT_EQ(context(replier->writer, &reader), "Class::method failure");
  EXPECT_EQ(log_.lines().size(), 6u);
}

TEST_F(EntityContext, IsPutInFrontOfTheExceptionThatIsThrownAgain) {
  const auto replier = make_replier();
  EXPECT_EQ(message_of<zemtra::NotEnabledException>([&] {
              log_and_rethrow_conditional(replier->writer, replier->reader, exception_, "Class", "method", true);
            }),
            "Class(CalcReply, CalcRequest)::method failure caused by M");
  EXPECT_EQ(message_of<zemtra::NotEnabledException>([&] { replier->log_and_rethrow(exception_, "Class", "method"); }),
            "Class(CalcReply, CalcRequest)::method failure caused by M");
  EXPECT_EQ(log_.lines().size(), 2u);
}

}  // namespace
}  // namespace requestreply_test
