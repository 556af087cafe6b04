#include "requestreply/fixture.hpp"

namespace requestreply_test {
namespace {

using ::testing::ElementsAre;

class Sending : public RequestReply {};

TEST_F(Sending, LetsTheMiddlewareChooseTheIdentityWhichStaysWithTheCallerAndPassesEverythingElseOn) {
  const auto replier = make_replier();
  const auto requester = make_requester();
  const char* sample = "request";
  DDS_WriteParams_t params;
  params.identity = {{{1, 2, 3}}, {4, 5}};
  params.related_sample_identity = {{{9, 8, 7}}, {6, 5}};
  params.source_timestamp = {1700000000, 42};
  requester->send_sample(&sample, params);
  EXPECT_TRUE(Seam::get().writes.at(0).identity == DDS_AUTO_SAMPLE_IDENTITY);
  EXPECT_TRUE((Seam::get().writes.at(0).related_sample_identity == DDS_SampleIdentity_t{{{9, 8, 7}}, {6, 5}}));
  Loan loan(*replier);
  ASSERT_TRUE(replier->receive_sample_loaned(&loan.data, &loan.count, loan.infos, 1, kLong, 1));
  EXPECT_THAT(loan.texts(), ElementsAre("request"));
  EXPECT_TRUE(loan.infos[0].related_sample_identity == params.related_sample_identity);
  EXPECT_TRUE(loan.infos[0].sample_identity == params.identity);
  EXPECT_TRUE(loan.infos[0].source_timestamp == params.source_timestamp);

  DDS_DataWriterQos qos;
  ASSERT_EQ(requester->writer->get_qos(qos), DDS_RETCODE_OK);
  EXPECT_TRUE(DDS_GUID_equals(&params.identity.writer_guid, &qos.protocol.writer_guid));
  const DDS_SampleIdentity_t first = params.identity;
  requester->send_sample(&sample, params);
  EXPECT_FALSE(params.identity == first);
}

TEST_F(Sending, ReportsASampleThatCannotBeWritten) {
  const auto requester = make_requester();
  DDS_WriteParams_t params;
  EXPECT_EQ(message_of<zemtra::BadParameterException>([&] { requester->send_sample(nullptr, params); }),
            report("EntityUntypedImpl::send_sample", QVX_LOG_ANY_FAILURE_s, "DataWriter write failure"));
}

}  // namespace
}  // namespace requestreply_test
