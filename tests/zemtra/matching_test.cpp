// Whether the other end is there, and what is missing when it is not.

#include <atomic>

#include "typed_service.hpp"

namespace typed {
namespace {

class Matching : public TypedService {
 protected:
  static constexpr auto best_effort = DDS_BEST_EFFORT_RELIABILITY_QOS;
  static constexpr auto reliable = DDS_RELIABLE_RELIABILITY_QOS;

  /// A replier that asks for requests of a reliability and offers replies of one.
  std::unique_ptr<OtherReplier> make_replier_with(DDS_ReliabilityQosPolicyKind asked,
                                                  DDS_ReliabilityQosPolicyKind offered) {
    return make_other_replier({ReplierKind::typed, true, asked, offered});
  }
};

TEST_P(Matching, NobodyIsThere) {
  const Requester requester = make_requester();
  EXPECT_FALSE(requester.wait_for_service(1ms));
  EXPECT_EQ(requester.matched_repliers(), 0);
  EXPECT_EQ(requester.explain(), "no replier is matched on \"CalcRequest\" and no replier is matched on \"CalcReply\"");
}

TEST_P(Matching, EndsThatMatchOnBothTopicsAreCountedAsTheyComeAndGo) {
  const Requester requester = make_requester();
  std::unique_ptr<OtherReplier> first = make_other_replier();
  const std::unique_ptr<OtherReplier> second = make_other_replier();
  ASSERT_TRUE(requester.wait_for_service(kLong));
  AWAIT_EQ(requester.matched_repliers(), 2);
  AWAIT_EQ(second->matched_requesters(), 1);
  EXPECT_EQ(requester.explain(), "2 repliers are matched on \"CalcRequest\" and \"CalcReply\"");
  EXPECT_EQ(second->explain(), "1 requester is matched on \"CalcRequest\" and \"CalcReply\"");
  first.reset();
  AWAIT_EQ(requester.matched_repliers(), 1);
}

TEST_P(Matching, HalvesOfTwoRepliersAreNoneAndThePolicyIsNamed) {
  support::LogRecorder log;  // the mismatches are logged, too
  DDS_DataWriterQos writer_qos;
  writer_qos.reliability.kind = best_effort;
  const Requester requester(zemtra::RequesterParams(participant()).service_name("Calc").datawriter_qos(writer_qos));
  const std::unique_ptr<OtherReplier> hears_nothing = make_replier_with(reliable, reliable);
  EXPECT_FALSE(requester.wait_for_service(1ms));
  AWAIT_EQ(
      requester.explain(),
      "no replier is matched on \"CalcRequest\" and 1 replier is matched on \"CalcReply\"; so far 1 was refused on "
      "\"CalcRequest\", last because of the policy RELIABILITY");
  const std::unique_ptr<OtherReplier> is_not_heard = make_replier_with(best_effort, best_effort);
  EXPECT_FALSE(requester.wait_for_service(1ms));
  AWAIT_EQ(requester.explain(),
           "1 replier is matched on \"CalcRequest\" and 1 replier is matched on \"CalcReply\", but none on both; so "
           "far 1 was refused on \"CalcRequest\", last because of the policy RELIABILITY; so far 1 was refused on "
           "\"CalcReply\", last because of the policy RELIABILITY");
  EXPECT_EQ(is_not_heard->matched_requesters(), 0);
  AWAIT_EQ(
      is_not_heard->explain(),
      "1 requester is matched on \"CalcRequest\" and no requester is matched on \"CalcReply\"; so far 1 was refused on "
      "\"CalcReply\", last because of the policy RELIABILITY");
  const std::unique_ptr<OtherReplier> whole = make_replier_with(best_effort, reliable);
  EXPECT_TRUE(requester.wait_for_service(kLong));
  AWAIT_EQ(requester.matched_repliers(), 1);
}

TEST_P(Matching, WaitingThreadsAreToldWhoeverReadsTheStatuses) {
  for (int i = 0; i < scaled(200); ++i) {
    const Requester requester = make_requester();
    std::atomic<bool> over{false};
    Thread distracting([&] {
      while (!over) {
        DDS_PublicationMatchedStatus status;
        ASSERT_EQ(requester.request_datawriter()->get_publication_matched_status(status), DDS_RETCODE_OK);
      }
    });
    std::unique_ptr<OtherReplier> replier;
    {
      Thread one([&] { EXPECT_TRUE(requester.wait_for_service(kLong)); });
      Thread other([&] { EXPECT_TRUE(requester.wait_for_service(kLong)); });
      replier = make_other_replier();
    }
    over = true;
  }
}

TEST_P(Matching, RepliersThatKnowNothingOfTheFrontEndsAreFoundByTheirParticipant) {
  const Requester requester = make_requester();
  const std::unique_ptr<OtherReplier> replier = make_other_replier({ReplierKind::untyped});
  EXPECT_TRUE(requester.wait_for_service(kLong));
}

RUN_OVER_EVERY_CARRIER(Matching);

}  // namespace
}  // namespace typed
