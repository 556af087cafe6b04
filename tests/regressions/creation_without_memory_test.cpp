#include "regressions/failing_allocation.hpp"
#include "regressions/participant.hpp"

namespace regressions {
namespace {

class CreationWithoutMemory : public Participant {
 protected:
  /// Calls `create` again and again, each time with another allocation that fails, until none does.
  template <class Create, class Delete>
  static void fail_each_allocation(Create create, Delete delete_entity) {
    int failures = 0;
    for (bool failed = true; failed;) {
      allocations_left = failures++;
      auto* entity = create();
      failed = allocations_left < 0;
      allocations_left = -1;
      if (entity != nullptr) { ASSERT_EQ(delete_entity(entity), DDS_RETCODE_OK); }
    }
    EXPECT_GT(failures, 5);
  }
};

TEST_F(CreationWithoutMemory, AWriterThatCannotBeMatchedWithAReaderIsNotCreated) {
  DDSDataReader* reader = create_reader(strings, reliable_reader_qos());
  fail_each_allocation([&] { return create_writer(strings); },
                       [&](DDSDataWriter* writer) { return participant->delete_datawriter(writer); });
  DDS_SubscriptionMatchedStatus matched;
  ASSERT_EQ(reader->get_subscription_matched_status(matched), DDS_RETCODE_OK);
  EXPECT_EQ(matched.current_count, 0);
}

TEST_F(CreationWithoutMemory, AReaderOnATopicThatNobodyElseUsesIsNotCreated) {
  fail_each_allocation([&] { return create_reader(strings, reliable_reader_qos()); },
                       [&](DDSDataReader* reader) { return participant->delete_datareader(reader); });
}

TEST_F(CreationWithoutMemory, AReaderThatCannotBeMatchedWithAWriterIsNotCreated) {
  DDSDataWriter* writer = create_writer(strings);
  fail_each_allocation([&] { return create_reader(strings, reliable_reader_qos()); },
                       [&](DDSDataReader* reader) { return participant->delete_datareader(reader); });
  DDS_PublicationMatchedStatus matched;
  ASSERT_EQ(writer->get_publication_matched_status(matched), DDS_RETCODE_OK);
  EXPECT_EQ(matched.current_count, 0);
}

TEST_F(CreationWithoutMemory, DeletingWhatAParticipantHoldsReportsExhaustedMemory) {
  create_writer(strings);
  allocations_left = 0;
  const DDS_ReturnCode_t retcode = participant->delete_contained_entities();
  allocations_left = -1;
  EXPECT_EQ(retcode, DDS_RETCODE_OUT_OF_RESOURCES);
}

}  // namespace
}  // namespace regressions
