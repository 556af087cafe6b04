// What an end learns of those that it matches, and how it waits for them.

#include <atomic>

#include "behaviour.hpp"

namespace behaviour {
namespace {

using MatchedEnds = OneTopicOver;

template <class Data>
void expect_described(const Data& data, const DDS_EntityNameQosPolicy& name) {
  EXPECT_STREQ(name.role_name, "role");
  EXPECT_EQ(name.name, nullptr);
  ASSERT_EQ(data.property.value.length(), 1);
  EXPECT_STREQ(data.property.value[0].name, "known");
  EXPECT_STREQ(data.property.value[0].value, "1");
}

bool equal(const DDS_GUID_t& a, const DDS_GUID_t& b) { return DDS_GUID_equals(&a, &b); }

TEST_P(MatchedEnds, TellWhoTheyAreAsLongAsTheyMatch) {
  auto* writer = make_writer(topic, described(reliable_writer(), &DDS_DataWriterQos::publication_name));
  auto* reader =
      make_reader(other.strings("Topic"), described(keep_all_reader(), &DDS_DataReaderQos::subscription_name));
  DDS_InstanceHandleSeq writers, readers;
  ASSERT_EQ(reader->get_matched_publications(writers), DDS_RETCODE_OK);
  ASSERT_EQ(writer->get_matched_subscriptions(readers), DDS_RETCODE_OK);
  DDS_PublicationBuiltinTopicData publication;
  ASSERT_EQ(reader->get_matched_publication_data(publication, writers[0]), DDS_RETCODE_OK);
  expect_described(publication, publication.publication_name);
  EXPECT_TRUE(equal(publication.key, guid_of(writer)));
  DDS_SubscriptionBuiltinTopicData subscription;
  ASSERT_EQ(writer->get_matched_subscription_data(subscription, readers[0]), DDS_RETCODE_OK);
  expect_described(subscription, subscription.subscription_name);
  EXPECT_TRUE(equal(subscription.related_writer_guid, DDS_GUID_UNKNOWN));
  EXPECT_FALSE(equal(subscription.key, publication.key));
  EXPECT_FALSE(equal(subscription.participant_key, publication.participant_key));

  DDSTopic* neighbours_topic = participant.strings("Topic2");
  DDSStringDataReader* neighbour = make_reader(neighbours_topic);
  make_writer(neighbours_topic);
  DDS_InstanceHandleSeq neighbours_writers;
  ASSERT_EQ(neighbour->get_matched_publications(neighbours_writers), DDS_RETCODE_OK);
  const DDS_InstanceHandle_t neighbours_writer = neighbours_writers[0];
  DDS_PublicationBuiltinTopicData of_neighbour;
  ASSERT_EQ(neighbour->get_matched_publication_data(of_neighbour, neighbours_writer), DDS_RETCODE_OK);
  EXPECT_TRUE(equal(of_neighbour.participant_key, publication.participant_key));

  EXPECT_EQ(reader->get_matched_publication_data(publication, neighbours_writer), DDS_RETCODE_BAD_PARAMETER);
  EXPECT_EQ(remove(reader), DDS_RETCODE_OK);
  EXPECT_EQ(writer->get_matched_subscription_data(subscription, readers[0]), DDS_RETCODE_BAD_PARAMETER);
  expect_described(subscription, subscription.subscription_name);
  expect_described(publication, publication.publication_name);
}

TEST_P(MatchedEnds, TellWhoseAnswersTheyWantIfTheyWantNothingElse) {
  DDSStringDataWriter* writer = make_writer(topic);
  const DDS_GUID_t asker = guid_of(make_writer(participant.strings("Questions")));
  const std::string own = "&hex(" + hexadecimal(asker) + ")";
  const std::string related = "@related_sample_identity.writer_guid.value";
  const std::string exact = related + " = " + own;
  const std::pair<std::string, bool> filters[] = {{exact, true},
                                                  {"((" + exact + "))", true},
                                                  {own + " = " + related, true},
                                                  {related + " = %0", true},
                                                  {"NOT " + exact, false},
                                                  {exact + " AND @sample_identity.sequence_number > 0", false},
                                                  {related + " <> " + own, false},
                                                  {"@related_sample_identity.sequence_number = 1", false},
                                                  {"@sample_identity.writer_guid.value = " + own, false}};
  for (const auto& [expression, tells] : filters) {
    DDSContentFilteredTopic* filtered = participant.filtered(expression.c_str(), topic, expression, {own});
    ASSERT_NE(filtered, nullptr) << expression;
    make_reader(filtered);
    DDS_PublicationMatchedStatus status;
    ASSERT_EQ(writer->get_publication_matched_status(status), DDS_RETCODE_OK);
    DDS_SubscriptionBuiltinTopicData data;
    ASSERT_EQ(writer->get_matched_subscription_data(data, status.last_subscription_handle), DDS_RETCODE_OK);
    EXPECT_TRUE(equal(data.related_writer_guid, tells ? asker : DDS_GUID_UNKNOWN)) << expression;
  }
}

RUN_OVER_EVERY_CARRIER(MatchedEnds);

class MatchCondition : public OverCarrier<bool>, public OneTopic {
 public:
  static auto every_case() {
    std::vector<std::tuple<support::Carrier, bool>> cases;
    for (const support::Carrier& carrier : support::carriers()) {
      cases.emplace_back(carrier, false);
      if (!carrier.across_processes()) { cases.emplace_back(carrier, true); }  // else the writer is elsewhere
    }
    return cases;
  }
  static std::string name(const ::testing::TestParamInfo<std::tuple<support::Carrier, bool>>& test) {
    return std::get<0>(test.param).name + std::string(std::get<1>(test.param) ? "OfAWriter" : "OfAReader");
  }

 protected:
  bool of_writer() const { return std::get<1>(GetParam()); }
  /// Calls `f` for the end whose conditions are looked at; what comes and goes is at the other end.
  template <class F>
  auto at_end(F f) {
    return of_writer() ? f(writer) : f(reader);
  }
  DDSMatchCondition* create() {
    return at_end([](auto* end) { return end->create_match_condition(); });
  }
  DDS_ReturnCode_t destroy(DDSMatchCondition* condition) {
    return at_end([=](auto* end) { return end->delete_match_condition(condition); });
  }
  DDS_ReturnCode_t remove_end() {
    return at_end([](auto* end) { return remove(end); });
  }
  int match_count() {
    DDS_InstanceHandleSeq handles;
    EXPECT_EQ(of_writer() ? writer->get_matched_subscriptions(handles) : reader->get_matched_publications(handles),
              DDS_RETCODE_OK);
    return handles.length();
  }
  std::function<void()> come(bool fitting = true) {
    if (of_writer()) {
      DDSDataReader* made = make_reader(others_topic, fitting ? best_effort_reader() : keep_all_reader());
      return [made] { EXPECT_EQ(remove(made), DDS_RETCODE_OK); };
    }
    DDSDataWriter* made = make_writer(others_topic, fitting ? reliable_writer() : best_effort_writer());
    return [made] { EXPECT_EQ(remove(made), DDS_RETCODE_OK); };
  }

  DDSTopic* others_topic = other.strings("Topic");
  // They do not match each other.
  DDSStringDataWriter* writer = make_writer(topic, best_effort_writer());
  DDSStringDataReader* reader = make_reader(topic);
};

TEST_P(MatchCondition, IsLatchedByEveryChangeUntilItIsReset) {
  DDSMatchCondition* first = create();
  ASSERT_NE(first, nullptr);
  EXPECT_FALSE(first->get_trigger_value()) << "what was before does not count";
  const std::function<void()> go = come();
  EXPECT_TRUE(first->get_trigger_value());
  DDSMatchCondition* second = create();
  EXPECT_FALSE(second->get_trigger_value());
  first->reset();
  EXPECT_FALSE(first->get_trigger_value());
  EXPECT_NE(at_end([](auto* end) { return end->get_status_changes(); }) &
                (of_writer() ? DDS_PUBLICATION_MATCHED_STATUS : DDS_SUBSCRIPTION_MATCHED_STATUS),
            0u)
      << "the status is the application's";
  go();
  EXPECT_TRUE(first->get_trigger_value());
  EXPECT_TRUE(second->get_trigger_value());
  first->reset();
  EXPECT_TRUE(second->get_trigger_value());
  come(false);
  EXPECT_TRUE(first->get_trigger_value()) << "an end that does not fit is a change too";
  EXPECT_EQ(match_count(), 0);
  EXPECT_EQ(destroy(first), DDS_RETCODE_OK);
  EXPECT_EQ(destroy(second), DDS_RETCODE_OK);
}

struct CountingListener : DDSDataWriterListener, DDSDataReaderListener {
  void on_publication_matched(DDSDataWriter*, const DDS_PublicationMatchedStatus&) override { ++calls; }
  void on_subscription_matched(DDSDataReader*, const DDS_SubscriptionMatchedStatus&) override { ++calls; }
  std::atomic<int> calls{0};
};

TEST_P(MatchCondition, IsDeletedByItsEntityAlone) {
  CountingListener listener;
  const auto listen = [this](CountingListener* to) {
    return of_writer() ? writer->set_listener(to, DDS_PUBLICATION_MATCHED_STATUS)
                       : reader->set_listener(to, DDS_SUBSCRIPTION_MATCHED_STATUS);
  };
  EXPECT_EQ(listen(&listener), DDS_RETCODE_OK);
  DDSMatchCondition* condition = create();
  DDSMatchCondition* foreign = make_reader(other.strings("Topic2"))->create_match_condition();
  DDSWaitSet waitset;
  ASSERT_EQ(waitset.attach_condition(condition), DDS_RETCODE_OK);
  EXPECT_EQ(destroy(nullptr), DDS_RETCODE_BAD_PARAMETER);
  EXPECT_EQ(destroy(foreign), DDS_RETCODE_PRECONDITION_NOT_MET);
  EXPECT_EQ(remove_end(), DDS_RETCODE_PRECONDITION_NOT_MET);
  come();
  EXPECT_TRUE(condition->get_trigger_value()) << "the entity is as before";
  AWAIT_EQ(listener.calls.load(), 1);
  EXPECT_EQ(destroy(condition), DDS_RETCODE_OK);
  DDSConditionSeq attached;
  EXPECT_EQ(waitset.get_conditions(attached), DDS_RETCODE_OK);
  EXPECT_EQ(attached.length(), 0);
  EXPECT_EQ(destroy(condition), DDS_RETCODE_PRECONDITION_NOT_MET);
  EXPECT_EQ(listen(nullptr), DDS_RETCODE_OK);
  EXPECT_EQ(remove_end(), DDS_RETCODE_OK);
  EXPECT_EQ(other->delete_contained_entities(), DDS_RETCODE_OK) << "with the conditions that are left";
}

TEST_P(MatchCondition, LosesNoChangeBetweenLookingAndWaiting) {
  const int rounds = scaled(1000);
  std::atomic<int> wanted{-1};
  Thread changing([&] {
    for (int i = 0; i < rounds; ++i) {
      const std::function<void()> go = come();
      while (wanted != 1) { std::this_thread::yield(); }
      go();
      while (wanted != 0) { std::this_thread::yield(); }
    }
  });
  DDSMatchCondition* condition = create();
  DDSWaitSet waitset;
  DDSConditionSeq active;
  ASSERT_EQ(waitset.attach_condition(condition), DDS_RETCODE_OK);
  for (int i = 0; i < 2 * rounds; ++i) {
    const int expected = (i + 1) % 2;
    for (;;) {
      condition->reset();
      if (match_count() == expected) { break; }
      ASSERT_EQ(waitset.wait(active, DDS_DURATION_INFINITE), DDS_RETCODE_OK);
    }
    wanted = expected;
  }
  changing.join();
  EXPECT_EQ(destroy(condition), DDS_RETCODE_OK);
}
INSTANTIATE_TEST_SUITE_P(Over, MatchCondition, ::testing::ValuesIn(MatchCondition::every_case()),
                         &MatchCondition::name);

}  // namespace
}  // namespace behaviour
