// Conditions and wait sets: what triggers, and what may happen to conditions while a thread waits.

#include <atomic>
#include <memory>
#include <set>

#include "behaviour.hpp"

namespace behaviour {
namespace {

using Active = std::multiset<DDSCondition*>;

Active conditions_in(const DDSConditionSeq& sequence) {
  Active result;
  for (int i = 0; i < sequence.length(); ++i) { result.insert(sequence[i]); }
  return result;
}
Active attached(DDSWaitSet& waitset) {
  DDSConditionSeq sequence;
  EXPECT_EQ(waitset.get_conditions(sequence), DDS_RETCODE_OK);
  return conditions_in(sequence);
}
/// The conditions that are true now.
Active look(DDSWaitSet& waitset) {
  settle();
  DDSConditionSeq active;
  const DDS_ReturnCode_t retcode = waitset.wait(active, DDS_DURATION_ZERO);
  EXPECT_EQ(retcode, active.length() > 0 ? DDS_RETCODE_OK : DDS_RETCODE_TIMEOUT);
  return conditions_in(active);
}

/// Waits on another thread, without time-out.
class Waiter {
 public:
  explicit Waiter(DDSWaitSet& waitset) : waitset_(waitset), thread_([this] { run(); }) {
    DDSConditionSeq active;
    while (!done_ && waitset_.wait(active, DDS_DURATION_ZERO) != DDS_RETCODE_PRECONDITION_NOT_MET) {
      std::this_thread::yield();
    }
  }
  bool done() const { return done_; }
  Active active() {
    thread_.join();
    return conditions_in(active_);
  }

 private:
  void run() {
    DDS_ReturnCode_t retcode = DDS_RETCODE_PRECONDITION_NOT_MET;  // while the constructor looks
    while (retcode == DDS_RETCODE_PRECONDITION_NOT_MET) { retcode = waitset_.wait(active_, DDS_DURATION_INFINITE); }
    EXPECT_EQ(retcode, DDS_RETCODE_OK);
    done_ = true;
  }

  DDSWaitSet& waitset_;
  DDSConditionSeq active_;
  std::atomic<bool> done_{false};
  Thread thread_;
};

template <class Base>
class WaitSetTest : public Base {
 protected:
  void attach(const Active& conditions) {
    for (DDSCondition* each : conditions) { EXPECT_EQ(waitset.attach_condition(each), DDS_RETCODE_OK); }
  }
  DDSReadCondition* condition() {
    DDSReadCondition* made =
        reader->create_readcondition(DDS_NOT_READ_SAMPLE_STATE, DDS_ANY_VIEW_STATE, DDS_ANY_INSTANCE_STATE);
    EXPECT_NE(made, nullptr);
    EXPECT_EQ(made->get_sample_state_mask(), DDS_NOT_READ_SAMPLE_STATE);
    EXPECT_EQ(made->get_view_state_mask(), DDS_ANY_VIEW_STATE);
    EXPECT_EQ(made->get_instance_state_mask(), DDS_ANY_INSTANCE_STATE);
    EXPECT_EQ(made->get_datareader(), reader);
    return made;
  }

  DDSStringDataReader* reader = make_reader(this->topic);
  DDSStringDataWriter* writer = make_writer(this->topic);
  DDSGuardCondition one, second;
  DDSWaitSet waitset;
};
using WaitSets = WaitSetTest<OneTopic>;
using WaitSetsForArrivals = WaitSetTest<OneTopicOver>;

TEST_P(WaitSetsForArrivals, ReturnExactlyTheConditionsThatAreTrue) {
  DDSReadCondition* unread = condition();
  DDSStatusCondition* status = reader->get_statuscondition();
  ASSERT_EQ(status->set_enabled_statuses(DDS_DATA_AVAILABLE_STATUS), DDS_RETCODE_OK);
  attach({&one, &second, unread, status});
  EXPECT_EQ(look(waitset), Active{});
  one.set_trigger_value(true);
  EXPECT_EQ(look(waitset), Active{&one});
  EXPECT_EQ(look(waitset), Active{&one}) << "a guard condition stays true";
  EXPECT_EQ(write(writer, "x"), DDS_RETCODE_OK);
  EXPECT_EQ(look(waitset), (Active{&one, unread, status}));
  one.set_trigger_value(false);
  read_all(reader);
  EXPECT_EQ(look(waitset), Active{});
}

TEST_F(WaitSets, KnowWhatIsAttached) {
  attach({&one, &one, &second});  // a second time changes nothing
  EXPECT_EQ(attached(waitset), (Active{&one, &second}));
  EXPECT_EQ(waitset.detach_condition(&one), DDS_RETCODE_OK);
  EXPECT_EQ(waitset.detach_condition(&one), DDS_RETCODE_PRECONDITION_NOT_MET);
  EXPECT_EQ(attached(waitset), Active{&second});
  EXPECT_EQ(waitset.attach_condition(nullptr), DDS_RETCODE_BAD_PARAMETER);
  EXPECT_EQ(waitset.detach_condition(nullptr), DDS_RETCODE_BAD_PARAMETER);
}

TEST_F(WaitSets, TimeOutWithAnEmptySequence) {
  EXPECT_EQ(waitset.attach_condition(&one), DDS_RETCODE_OK);
  for (const DDS_Duration_t& timeout :
       {DDS_DURATION_ZERO, DDS_Duration_t{-1, 999999999}, DDS_Duration_t{-5, 0}, milliseconds(10)}) {
    DDSConditionSeq active;
    ASSERT_TRUE(active.ensure_length(3, 3));
    EXPECT_EQ(waitset.wait(active, timeout), DDS_RETCODE_TIMEOUT);
    EXPECT_EQ(active.length(), 0);
  }
  one.set_trigger_value(true);
  for (const DDS_Duration_t& timeout : {DDS_DURATION_ZERO, DDS_Duration_t{-5, 0}, DDS_DURATION_INFINITE}) {
    DDSConditionSeq active;
    EXPECT_EQ(waitset.wait(active, timeout), DDS_RETCODE_OK) << "what is true is found without time too";
    EXPECT_EQ(conditions_in(active), Active{&one});
  }
}

TEST_F(WaitSets, FillALentSequenceAsFarAsItGoes) {
  attach({&one, &second});
  one.set_trigger_value(true);
  second.set_trigger_value(true);
  DDSCondition* buffer[1] = {nullptr};
  DDSConditionSeq active;
  ASSERT_TRUE(active.loan_contiguous(buffer, 0, 1));
  EXPECT_EQ(waitset.wait(active, DDS_DURATION_ZERO), DDS_RETCODE_OK);
  EXPECT_EQ(active.length(), 1);
  EXPECT_TRUE(buffer[0] == &one || buffer[0] == &second);
  EXPECT_TRUE(active.unloan());
}

TEST_F(WaitSets, ServeOneWaitingThreadAtATime) {
  EXPECT_EQ(waitset.attach_condition(&one), DDS_RETCODE_OK);
  Waiter waiter(waitset);
  DDSConditionSeq active;
  EXPECT_EQ(waitset.wait(active, DDS_DURATION_INFINITE), DDS_RETCODE_PRECONDITION_NOT_MET);
  EXPECT_EQ(waitset.wait(active, DDS_DURATION_ZERO), DDS_RETCODE_PRECONDITION_NOT_MET);
  EXPECT_FALSE(waiter.done()) << "the waiting thread is not disturbed";
  one.set_trigger_value(true);
  EXPECT_EQ(waiter.active(), Active{&one});
  EXPECT_EQ(look(waitset), Active{&one});
}

TEST_P(WaitSetsForArrivals, WakeForAConditionThatIsTrueBeforeItIsAttachedOrBecomesTrueAfterwardsWhileAThreadWaits) {
  DDSStatusCondition* status = reader->get_statuscondition();
  ASSERT_EQ(status->set_enabled_statuses(DDS_STATUS_MASK_NONE), DDS_RETCODE_OK);
  one.set_trigger_value(true);
  const std::pair<DDSCondition*, std::function<void()>> cases[] = {
      {&one, [] {}},
      {condition(), [this] { EXPECT_EQ(write(writer, "x"), DDS_RETCODE_OK); }},
      {status, [&] { EXPECT_EQ(status->set_enabled_statuses(DDS_DATA_AVAILABLE_STATUS), DDS_RETCODE_OK); }}};
  EXPECT_EQ(waitset.attach_condition(&second), DDS_RETCODE_OK);
  for (const auto& [late, trigger] : cases) {
    Waiter waiter(waitset);
    EXPECT_EQ(waitset.attach_condition(late), DDS_RETCODE_OK);
    trigger();
    EXPECT_EQ(waiter.active(), Active{late});
    EXPECT_EQ(waitset.detach_condition(late), DDS_RETCODE_OK);
  }
}

TEST_F(WaitSets, ForgetConditionsThatAreDetachedOrDeletedWhileAThreadWaits) {
  auto gone = std::make_unique<DDSGuardCondition>();
  DDSReadCondition* unread = condition();
  attach({&one, &second, gone.get(), unread});
  Waiter waiter(waitset);
  EXPECT_EQ(waitset.detach_condition(&one), DDS_RETCODE_OK);
  one.set_trigger_value(true);
  gone.reset();
  EXPECT_EQ(reader->delete_readcondition(unread), DDS_RETCODE_OK);
  EXPECT_EQ(write(writer, "x"), DDS_RETCODE_OK);
  EXPECT_EQ(attached(waitset), Active{&second});
  EXPECT_FALSE(waiter.done());
  second.set_trigger_value(true);
  EXPECT_EQ(waiter.active(), Active{&second});
}

TEST_F(WaitSets, LetGoOfTheConditionsOfADeletedReaderAndOfAllAtTheirEnd) {
  {
    DDSWaitSet brief;
    EXPECT_EQ(brief.attach_condition(&one), DDS_RETCODE_OK);
    EXPECT_EQ(brief.attach_condition(reader->get_statuscondition()), DDS_RETCODE_OK);
    EXPECT_EQ(waitset.attach_condition(&one), DDS_RETCODE_OK) << "a condition serves several wait sets";
  }
  EXPECT_EQ(waitset.attach_condition(reader->get_statuscondition()), DDS_RETCODE_OK);
  EXPECT_EQ(write(writer, "x"), DDS_RETCODE_OK);
  EXPECT_EQ(remove(reader), DDS_RETCODE_OK);
  EXPECT_EQ(attached(waitset), Active{&one});
  one.set_trigger_value(true);
  EXPECT_EQ(look(waitset), Active{&one});
}

TEST_F(WaitSets, SwapTheirConditions) {
  DDSReadCondition* unread = condition();
  DDSWaitSet third;
  attach({&one, unread});
  EXPECT_EQ(third.attach_condition(&second), DDS_RETCODE_OK);
  waitset.swap(third);
  EXPECT_EQ(attached(waitset), Active{&second});
  EXPECT_EQ(attached(third), (Active{&one, unread}));
  Waiter waiter(third);
  EXPECT_EQ(write(writer, "x"), DDS_RETCODE_OK);
  EXPECT_EQ(waiter.active(), Active{unread});
  second.set_trigger_value(true);
  EXPECT_EQ(look(waitset), Active{&second});
}

TEST_F(WaitSets, OfSeveralThreadsAreAllWokenByOneCondition) {
  std::vector<DDSWaitSet> waitsets(4);
  std::vector<std::unique_ptr<Waiter>> waiters;
  for (DDSWaitSet& each : waitsets) {
    EXPECT_EQ(each.attach_condition(&one), DDS_RETCODE_OK);
    waiters.push_back(std::make_unique<Waiter>(each));
  }
  one.set_trigger_value(true);
  for (const auto& waiter : waiters) { EXPECT_EQ(waiter->active(), Active{&one}); }
}

TEST_P(WaitSetsForArrivals, WakeForAnIndexConditionOnlyWithItsKey) {
  ASSERT_EQ(reader->create_index("Index"), DDS_RETCODE_OK);
  EXPECT_EQ(reader->create_index("Index"), DDS_RETCODE_PRECONDITION_NOT_MET);
  EXPECT_EQ(reader->create_index(""), DDS_RETCODE_BAD_PARAMETER);
  EXPECT_EQ(reader->create_index(nullptr), DDS_RETCODE_BAD_PARAMETER);
  DDS_SampleInfo key;
  key.related_sample_identity.sequence_number = {1, 7};
  const auto make = [&](const char* index) {
    return reader->create_index_condition(DDS_NOT_READ_SAMPLE_STATE, DDS_ANY_VIEW_STATE, DDS_ANY_INSTANCE_STATE, index,
                                          key);
  };
  EXPECT_EQ(make("Unknown"), nullptr);
  DDSReadCondition* keyed_condition = make("Index");
  ASSERT_NE(keyed_condition, nullptr);
  EXPECT_EQ(waitset.attach_condition(keyed_condition), DDS_RETCODE_OK);
  const auto write_related = [&](const char* value, DDS_SequenceNumber_t related) {
    DDS_WriteParams_t params;
    params.related_sample_identity.sequence_number = related;
    EXPECT_EQ(writer->write_w_params(value, params), DDS_RETCODE_OK);
  };
  Waiter waiter(waitset);
  write_related("low half differs", {1, 8});
  write_related("high half differs", {0, 7});
  settle();
  EXPECT_FALSE(waiter.done());
  write_related("mine", {1, 7});
  EXPECT_EQ(waiter.active(), Active{keyed_condition});
  EXPECT_EQ(values(collect(reader, true, DDS_LENGTH_UNLIMITED, {}, keyed_condition)), Strings{"mine"});
  EXPECT_EQ(take_values(reader).size(), 2u);
}

RUN_OVER_EVERY_CARRIER(WaitSetsForArrivals);

}  // namespace
}  // namespace behaviour
