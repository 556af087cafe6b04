// Every heap allocation of an operation fails once, in turn. The operation then reports it, or manages without; in both
// cases everything is as it was or as it should be, and can be deleted.

#include <memory>

#include "behaviour.hpp"
#include "failing_allocation.hpp"
#include "log_lines.hpp"

namespace behaviour {
namespace {

/// A participant with a writer, readers of all kinds, and samples in them, made anew for every fault.
struct World {
  World() {
    EXPECT_EQ(reader->create_index("Index"), DDS_RETCODE_OK);
    for (int i = 0; i < 3; ++i) { EXPECT_EQ(write(writer, "a", std::to_string(i)), DDS_RETCODE_OK); }
  }
  Participant participant, other;
  DDSTopic* topic = participant.keyed_strings("Topic");
  DDSTopic* others_topic = other.keyed_strings("Topic");
  DDSTopic* unused_topic = participant.keyed_strings("A topic that has neither a writer nor a reader");
  DDSContentFilteredTopic* filtered = participant.filtered("Filtered", topic, "value <> 'x'");
  DDSKeyedStringDataReader* reader =
      make_reader<DDSKeyedStringDataReader>(topic, described(keep_all_reader(), &DDS_DataReaderQos::subscription_name));
  DDSKeyedStringDataReader* others_reader = make_reader<DDSKeyedStringDataReader>(others_topic);
  DDSKeyedStringDataReader* filtered_reader = make_reader<DDSKeyedStringDataReader>(filtered);
  DDSKeyedStringDataWriter* writer =
      make_writer<DDSKeyedStringDataWriter>(topic, described(reliable_writer(), &DDS_DataWriterQos::publication_name));
};

/// Runs `operation`, which returns whether it succeeded, in a fresh world for each of its allocations, then `check`
/// with the outcome.
template <class Operation, class Check>
void fail_each_allocation(const char* name, Operation operation, Check check) {
  for (int nth = 1;; ++nth) {
    World world;
    bool happened = false;
    bool succeeded = false;
    {
      const LogLines log;
      const FailingAllocation failing(nth);
      succeeded = operation(world);
      happened = failing.happened();
    }
    SCOPED_TRACE(std::string(name) + ", allocation " + std::to_string(nth));
    check(world, succeeded);
    if (!happened) {
      EXPECT_TRUE(succeeded);
      EXPECT_GT(nth, 1) << "it allocates nothing, so that nothing was tested";
      return;
    }
    ASSERT_LT(nth, 10000);
    if (::testing::Test::HasFailure()) { return; }
  }
}

bool made(const void* object) { return object != nullptr; }
bool done(DDS_ReturnCode_t retcode) {
  EXPECT_TRUE(retcode == DDS_RETCODE_OK || retcode == DDS_RETCODE_OUT_OF_RESOURCES) << retcode;
  return retcode == DDS_RETCODE_OK;
}

TEST(AllocationFailure, InACreationMakesNothing) {
  const auto nothing_else_changed = [](World& world, bool) {
    EXPECT_EQ(write(world.writer, "b", "after"), DDS_RETCODE_OK);
    EXPECT_EQ(values(take_all(world.reader)), (Strings{"0", "1", "2", "after"}));
  };
  const auto create = [&](const char* name, std::function<bool(World&)> operation) {
    fail_each_allocation(name, operation, nothing_else_changed);
  };
  create("participant", [](World&) {
    DDSDomainParticipant* created = factory().create_participant(0, DDS_PARTICIPANT_QOS_DEFAULT, nullptr, 0);
    return made(created) && done(factory().delete_participant(created));
  });
  create("topic", [](World& world) {
    return made(
        world.participant->create_topic("New", world.topic->get_type_name(), DDS_TOPIC_QOS_DEFAULT, nullptr, 0));
  });
  create("content-filtered topic", [none = DDS_StringSeq()](World& world) {
    return made(world.participant->create_contentfilteredtopic(
        "New", world.topic, "value = 'x' AND (key <> 'y' OR NOT @sample_identity.sequence_number = 5)", none));
  });
  create("publisher",
         [](World& world) { return made(world.participant->create_publisher(DDS_PUBLISHER_QOS_DEFAULT, nullptr, 0)); });
  create("subscriber", [](World& world) {
    return made(world.participant->create_subscriber(DDS_SUBSCRIBER_QOS_DEFAULT, nullptr, 0));
  });
  create("writer", [qos = described(DDS_DataWriterQos(), &DDS_DataWriterQos::publication_name)](World& world) {
    return made(world.participant->create_datawriter(world.topic, qos, nullptr, 0));
  });
  create("reader", [qos = described(DDS_DataReaderQos(), &DDS_DataReaderQos::subscription_name)](World& world) {
    return made(world.participant->create_datareader(world.filtered, qos, nullptr, 0));
  });
  create("first writer of a topic", [](World& world) {
    return made(world.participant->create_datawriter(world.unused_topic, DDS_DATAWRITER_QOS_DEFAULT, nullptr, 0));
  });
  create("first reader of a topic", [](World& world) {
    return made(world.participant->create_datareader(world.unused_topic, DDS_DATAREADER_QOS_DEFAULT, nullptr, 0));
  });
  create("read condition", [](World& world) {
    return made(world.reader->create_readcondition(DDS_ANY_SAMPLE_STATE, DDS_ANY_VIEW_STATE, DDS_ANY_INSTANCE_STATE));
  });
  create("index", [](World& world) { return done(world.reader->create_index("New")); });
  create("index condition", [](World& world) {
    return made(world.reader->create_index_condition(DDS_ANY_SAMPLE_STATE, DDS_ANY_VIEW_STATE, DDS_ANY_INSTANCE_STATE,
                                                     "Index", DDS_SampleInfo()));
  });
  create("writer's match condition", [](World& world) { return made(world.writer->create_match_condition()); });
  create("reader's match condition", [](World& world) { return made(world.reader->create_match_condition()); });
  create("type",
         [](World& world) { return done(DDSOctetsTypeSupport::register_type(world.participant.get(), "New")); });
  create("defaults", [qos = reliable_writer()](World& world) {
    return done(world.participant->set_default_datawriter_qos(qos, "New*"));
  });
}

TEST(AllocationFailure, InAWriteDeliversToNoReaderAtAll) {
  for (std::string key : {"a", "a new instance"}) {
    std::string value(100, 'v');  // longer than what the first writes left room for
    fail_each_allocation(
        "write", [&](World& world) { return done(world.writer->write(keyed(key, value), DDS_HANDLE_NIL)); },
        [&](World& world, bool succeeded) {
          EXPECT_EQ(write(world.writer, "a", "after"), DDS_RETCODE_OK);
          Strings expected = {"0", "1", "2"};
          if (succeeded) { expected.push_back(value); }
          expected.emplace_back("after");
          std::sort(expected.begin(), expected.end());
          for (auto* reader : {world.reader, world.others_reader, world.filtered_reader}) {
            const std::vector<Received> received = take_all(reader);
            Strings got = values(received);
            std::sort(got.begin(), got.end());
            EXPECT_EQ(got, expected);
            for (const Received& sample : received) {
              if (sample.value == "after") { EXPECT_EQ(number(sample.info.sample_identity), expected.size()); }
            }
          }
        });
  }
}

TEST(AllocationFailure, InADisposeDisposesForNoReaderOrForAll) {
  fail_each_allocation(
      "dispose",
      [key = std::string("a"), value = std::string()](World& world) mutable {
        return done(world.writer->dispose(keyed(key, value), DDS_HANDLE_NIL));
      },
      [](World& world, bool succeeded) {
        for (auto* reader : {world.reader, world.others_reader, world.filtered_reader}) {
          EXPECT_EQ(take_all(reader).front().info.instance_state,
                    succeeded ? DDS_NOT_ALIVE_DISPOSED_INSTANCE_STATE : DDS_ALIVE_INSTANCE_STATE);
        }
      });
}

TEST(AllocationFailure, InATakeLeavesTheSamplesInTheReader) {
  fail_each_allocation(
      "take",
      [](World& world) {
        DDS_KeyedStringSeq data;
        DDS_SampleInfoSeq infos;
        const bool taken = done(world.reader->take(data, infos, DDS_LENGTH_UNLIMITED, DDS_ANY_SAMPLE_STATE,
                                                   DDS_ANY_VIEW_STATE, DDS_ANY_INSTANCE_STATE));
        if (taken) { EXPECT_EQ(world.reader->return_loan(data, infos), DDS_RETCODE_OK); }
        return taken;
      },
      [](World& world, bool succeeded) {
        EXPECT_EQ(values(take_all(world.reader)), succeeded ? Strings{} : (Strings{"0", "1", "2"}));
      });
}

TEST(AllocationFailure, InADiscardOfAKeyLeavesTheSamplesInTheReader) {
  fail_each_allocation(
      "discard", [](World& world) { return done(world.reader->discard_index_key("Index", DDS_SampleInfo())); },
      [](World& world, bool succeeded) {
        EXPECT_EQ(write(world.writer, "a", "after"), DDS_RETCODE_OK);
        EXPECT_EQ(values(take_all(world.reader)), succeeded ? Strings{} : (Strings{"0", "1", "2", "after"}));
        DDS_LongLong count = -1;
        EXPECT_EQ(world.reader->get_discarded_sample_count(count), DDS_RETCODE_OK);
        EXPECT_EQ(count, succeeded ? 4 : 0);
      });
}

TEST(AllocationFailure, InALookAtAMatchedEndLeavesWhatWasThere) {
  const auto look = [](DDS_ReturnCode_t retcode, const DDS_EntityNameQosPolicy& name, int properties) {
    const bool looked = done(retcode);
    EXPECT_STREQ(name.role_name, looked ? "role" : nullptr);
    EXPECT_EQ(properties, looked ? 1 : 0);
    return looked;
  };
  fail_each_allocation(
      "look at a writer",
      [&](World& world) {
        DDS_PublicationBuiltinTopicData data;
        const auto retcode = world.reader->get_matched_publication_data(data, world.writer->get_instance_handle());
        return look(retcode, data.publication_name, data.property.value.length());
      },
      [](World&, bool) {});
  fail_each_allocation(
      "look at a reader",
      [&](World& world) {
        DDS_SubscriptionBuiltinTopicData data;
        const auto retcode = world.writer->get_matched_subscription_data(data, world.reader->get_instance_handle());
        return look(retcode, data.subscription_name, data.property.value.length());
      },
      [](World&, bool) {});
}

TEST(AllocationFailure, InAReadWithCopiesLeavesNoLoan) {
  fail_each_allocation(
      "read with copies",
      [](World& world) {
        DDS_KeyedStringSeq data;
        DDS_SampleInfoSeq infos;
        return data.maximum(3) && infos.maximum(3) &&
               done(world.reader->read(data, infos, DDS_LENGTH_UNLIMITED, DDS_ANY_SAMPLE_STATE, DDS_ANY_VIEW_STATE,
                                       DDS_ANY_INSTANCE_STATE));
      },
      [](World& world, bool) { EXPECT_EQ(remove(world.reader), DDS_RETCODE_OK); });
}

TEST(AllocationFailure, InTheDeletionOfAllThatAParticipantHoldsDeletesNothing) {
  fail_each_allocation(
      "deletion", [](World& world) { return done(world.other->delete_contained_entities()); },
      [](World& world, bool deleted) {
        EXPECT_EQ(world.other->lookup_topicdescription("Topic") == nullptr, deleted);
        EXPECT_EQ(write(world.writer, "b", "after"), DDS_RETCODE_OK);
        if (!deleted) { EXPECT_EQ(take_values(world.others_reader).back(), "after"); }
      });
}

template <class Writer>
DDS_Long matched(Writer* writer) {
  DDS_PublicationMatchedStatus status;
  EXPECT_EQ(writer->get_publication_matched_status(status), DDS_RETCODE_OK);
  return status.current_count;
}

// What such a thread does nobody can report to its caller. The last round has no memory at all.
TEST(AllocationFailure, OnATransportsOwnThreadsIsMadeGoodOnceThereIsMemoryAgain) {
  const support::Carrier carrier{"TwoParticipants", "rtps", support::Carrier::participant_each};
  long failures = 0;
  for (const long every : {11, 9, 8, 7, 6, 5, 4, 3, 2, 1}) {
    SCOPED_TRACE("one in " + std::to_string(every));
    const Setting setting(carrier);
    const Participant here, there;
    DDSTopic* topic = here.strings("Topic");
    DDSTopic* same_topic = there.strings("Topic");
    const auto add_reader = [](DDSTopic* of, const DDS_DataReaderQos& qos) {
      return DDSStringDataReader::narrow(
          of->get_participant()->create_datareader(of, qos, nullptr, DDS_STATUS_MASK_NONE));
    };
    DDSStringDataWriter* writer = nullptr;
    DDSStringDataReader *near = nullptr, *far = nullptr, *bounded = nullptr;
    if (every % 2 == 0) { settle(); }  // the two meet before or while memory is short
    {
      const FailingElsewhere failing(every);
      far = add_reader(same_topic, keep_all_reader());
      writer = DDSStringDataWriter::narrow(
          here->create_datawriter(topic, reliable_writer(milliseconds(200)), nullptr, DDS_STATUS_MASK_NONE));
      near = add_reader(topic, keep_all_reader());
      DDSStringDataReader* passing = add_reader(same_topic, keep_all_reader(1));
      for (int i = 0; i < 3; ++i) { write(writer, "early"); }
      bounded = add_reader(same_topic, keep_all_reader(1));
      for (int i = 0; i < 3; ++i) { write(writer, "early"); }
      EXPECT_EQ(there->delete_datareader(passing), DDS_RETCODE_OK);
      std::this_thread::sleep_for(std::chrono::milliseconds(50));
      failures += failing.failures();
    }
    AWAIT_EQ(matched(writer), 3);
    // The two may still be about to begin anew, and what is written meanwhile reach only some.
    const AsItComes as_it_comes;
    const auto write_and_take = [&] {
      for (DDSStringDataReader* reader : {near, far, bounded}) { take_all(reader); }
      const DDS_ReturnCode_t late = write(writer, "late");
      const DDS_ReturnCode_t too_late = write(writer, "too late");
      return std::tuple(late, too_late, take_values(near), take_values(far), take_values(bounded));
    };
    const Strings one{"late"};
    AWAIT_EQ(write_and_take(), std::tuple(DDS_RETCODE_OK, DDS_RETCODE_TIMEOUT, one, one, one));
  }
  EXPECT_GT(failures, 10);
}

TEST(AllocationFailure, InAWaitSetLosesNoCondition) {
  fail_each_allocation(
      "wait set",
      [](World&) {
        std::unique_ptr<DDSWaitSet> waitset;
        std::unique_ptr<DDSGuardCondition> first, second;
        try {
          waitset = std::make_unique<DDSWaitSet>();
          first = std::make_unique<DDSGuardCondition>();
          second = std::make_unique<DDSGuardCondition>();
        } catch (const std::bad_alloc&) { return false; }
        const bool attached =
            done(waitset->attach_condition(first.get())) && done(waitset->attach_condition(second.get()));
        if (!attached) { return false; }
        second->set_trigger_value(true);
        DDSConditionSeq active;
        return done(waitset->wait(active, DDS_DURATION_INFINITE));
      },
      [](World&, bool) {});
}

}  // namespace
}  // namespace behaviour
