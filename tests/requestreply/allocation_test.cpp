// Counts every allocation from the heap, of all libraries.

#include <gtest/gtest.h>

#include "dds_behaviour/failing_allocation.hpp"
#include "end_to_end/strings.hpp"

namespace {

using behaviour::allocation_count;
using end_to_end::register_strings;
using zemtra::details::ReplierUntypedImpl;
using zemtra::details::RequesterUntypedImpl;

constexpr DDS_Duration_t kLong{60, 0};
constexpr const char* kText = "a text that is too long for a string object to hold it in place";

/// One request, two replies that are waited for together, and everything given back.
void round_trip(RequesterUntypedImpl& requester, ReplierUntypedImpl& replier) {
  DDS_WriteParams_t request;
  requester.send_sample(&kText, request);

  void** data = nullptr;
  int count = 0;
  DDS_SampleInfoSeq infos;
  ASSERT_TRUE(replier.receive_sample_loaned(&data, &count, infos, 1, kLong, 1));
  const auto identity = zemtra::details::get_sample_identity_from_sample_info(infos[0]);
  replier.return_loan(data, infos);
  for (int i = 0; i < 2; ++i) {
    DDS_WriteParams_t reply;
    replier.send_sample(&kText, identity, reply);
  }

  ASSERT_TRUE(requester.wait_for_replies(kLong, 2, request.identity));
  requester.get_reply_loaned(&data, &count, infos, 10, request.identity, true);
  ASSERT_EQ(count, 2);
  EXPECT_STREQ(*static_cast<char**>(data[1]), kText);
  requester.return_loan(data, infos);
  requester.get_reply_loaned(&data, &count, infos, 10, request.identity, true);
  ASSERT_EQ(count, 0);
  ASSERT_FALSE(requester.wait_for_replies(DDS_DURATION_ZERO, 1, request.identity));
}

TEST(Allocation, CounterSeesTheAllocationsOfTheLibraries) {
  const long before = allocation_count();
  DDS_String_free(DDS_String_dup(kText));
  EXPECT_GT(allocation_count(), before);
}

TEST(Allocation, DoesNotHappenInASteadyRoundTrip) {
  DDSDomainParticipantFactory* factory = DDSDomainParticipantFactory::get_instance();
  DDSDomainParticipant* participant =
      factory->create_participant(0, DDS_PARTICIPANT_QOS_DEFAULT, nullptr, DDS_STATUS_MASK_NONE);
  {
    // The builder serves both roles here.
    const auto params = zemtra::RequesterParams(participant).service_name("Calc");
    ReplierUntypedImpl replier;
    replier.initialize(params, register_strings, register_strings, sizeof(char*), nullptr, false);
    RequesterUntypedImpl requester(params, register_strings, register_strings, sizeof(char*), false);
    for (int i = 0; i < 1000; ++i) { round_trip(requester, replier); }
    const long before = allocation_count();
    for (int i = 0; i < 1000; ++i) { round_trip(requester, replier); }
    EXPECT_EQ(allocation_count() - before, 0);
  }
  participant->delete_contained_entities();
  EXPECT_EQ(factory->delete_participant(participant), DDS_RETCODE_OK);
}

}  // namespace
