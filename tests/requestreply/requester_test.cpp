#include <atomic>
#include <thread>

#include "requestreply/fixture.hpp"

namespace requestreply_test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class Requester : public RequestReply {
 protected:
  Requester() : replier_(make_replier()), requester_(make_requester()), pool_(Seam::get().pools.at(0)) {}

  DDS_SampleIdentity_t ask(const std::string& text) { return send(*requester_, text); }
  void answer(const DDS_SampleIdentity_t& request, const std::string& text) { reply(*replier_, request, text); }

  /// How many conditions the idle wait sets hold in all.
  int conditions_in_pool() {
    std::vector<void*> taken(static_cast<std::size_t>(MORAFastBufferPool_getIdleCount(pool_)));
    int conditions = 0;
    for (void*& buffer : taken) {
      buffer = MORAFastBufferPool_getBufferWithSize(pool_, -1);
      DDSConditionSeq attached;
      EXPECT_EQ(static_cast<DDSWaitSet*>(buffer)->get_conditions(attached), DDS_RETCODE_OK);
      conditions += attached.length();
    }
    for (void* buffer : taken) { MORAFastBufferPool_returnBuffer(pool_, buffer); }
    return conditions;
  }

  std::unique_ptr<Open<ReplierUntypedImpl>> replier_;
  std::unique_ptr<Open<RequesterUntypedImpl>> requester_;
  MORAFastBufferPool* pool_;
};

TEST_F(Requester, PicksOutTheRepliesToOneOfItsOwnRequests) {
  const auto other = make_requester();
  const DDS_SampleIdentity_t first = ask("first");
  const DDS_SampleIdentity_t second = ask("second");
  answer(send(*other, "not mine"), "to the other");
  answer(second, "2a");
  answer(first, "1a");
  answer(second, "2b");
  EXPECT_TRUE(requester_->wait_for_replies(DDS_DURATION_ZERO, 2, second));
  for (const DDS_Duration_t& no_time : {DDS_DURATION_ZERO, DDS_Duration_t{-1, 0}, kShort}) {
    EXPECT_FALSE(requester_->wait_for_replies(no_time, 2, first));
  }
  EXPECT_EQ(Seam::get().count(Call::wait), 3) << "none for the replies that are held";
  EXPECT_TRUE(requester_->wait_for_replies(kLong, 1, second)) << "read or not";
  EXPECT_THAT(take_replies(*requester_, second), ElementsAre("2a", "2b"));
  EXPECT_THAT(take_replies(*requester_, second), IsEmpty());
  EXPECT_THAT(take_all(*requester_), ElementsAre("1a"));
  EXPECT_THAT(take_all(*other), ElementsAre("to the other"));
}

TEST_F(Requester, WaitsOnAPooledWaitSetForUnreadRepliesToTheRequest) {
  const DDS_SampleIdentity_t request = ask("request");
  const DDS_SampleIdentity_t other = ask("other");
  answer(request, "a");
  int waits = 0;
  Seam::get().on_wait = [&](DDSWaitSet& waitset) -> std::optional<DDS_ReturnCode_t> {
    EXPECT_NE(&waitset, &requester_->waitset);
    DDSConditionSeq attached;
    EXPECT_EQ(waitset.get_conditions(attached), DDS_RETCODE_OK);
    EXPECT_EQ(attached.length(), 1);
    EXPECT_EQ(MORAFastBufferPool_getIdleCount(pool_), 1);
    ++waits;
    answer(other, "to another request");
    answer(request, "b");
    return std::nullopt;
  };
  EXPECT_TRUE(requester_->wait_for_replies(kLong, 2, request));
  EXPECT_EQ(waits, 1);
  EXPECT_EQ(MORAFastBufferPool_getIdleCount(pool_), 2);
  EXPECT_EQ(conditions_in_pool(), 0);
}

TEST_F(Requester, CreatesAndDeletesItsConditionsInOrderForEachCall) {
  const DDS_SampleIdentity_t request = ask("request");
  answer(request, "reply");
  Seam::get().reset();
  EXPECT_TRUE(requester_->wait_for_replies(kLong, 1, request));
  EXPECT_THAT(
      Seam::get().trace(),
      ElementsAre("get_pool_buffer", "reader.create_index_condition(2, 65535, 65535, RequestReplyIndex)",
                  "reader.create_index_condition(65535, 65535, 65535, RequestReplyIndex)", "waitset.attach_condition",
                  "reader.read", "reader.return_loan", "condition.get_datareader", "reader.delete_readcondition",
                  "condition.get_datareader", "reader.delete_readcondition", "return_pool_buffer"));
  Seam::get().reset();
  EXPECT_THAT(take_replies(*requester_, request), ElementsAre("reply"));
  EXPECT_THAT(Seam::get().trace(),
              ElementsAre("reader.create_index_condition(65535, 65535, 65535, RequestReplyIndex)", "reader.take",
                          "condition.get_datareader", "reader.delete_readcondition", "reader.return_loan"));
}

TEST_F(Requester, LendsRepliesReadOrUnreadByTheSequenceNumberAloneAndTakesThemOnlyIfAsked) {
  const DDS_SampleIdentity_t request = ask("request");
  answer(request, "a");
  EXPECT_TRUE(requester_->wait_for_replies(kLong, 1, request));
  answer(request, "b");
  for (const DDS_GUID_t& guid : {DDS_GUID_UNKNOWN, DDS_GUID_AUTO, DDS_GUID_t{{7}}}) {
    const DDS_SampleIdentity_t same_number{guid, request.sequence_number};
    EXPECT_TRUE(requester_->wait_for_replies(kLong, 2, same_number));
    Loan loan(*requester_);
    requester_->get_reply_loaned(&loan.data, &loan.count, loan.infos, DDS_LENGTH_UNLIMITED, same_number, false);
    EXPECT_THAT(loan.texts(), ElementsAre("a", "b"));
  }
  {
    Loan loan(*requester_);
    requester_->get_reply_loaned(&loan.data, &loan.count, loan.infos, 1, request, true);
    EXPECT_THAT(loan.texts(), ElementsAre("a"));
  }
  EXPECT_THAT(take_replies(*requester_, request), ElementsAre("b"));
  Loan nothing(*requester_);
  EXPECT_NO_THROW(requester_->get_reply_loaned(&nothing.data, &nothing.count, nothing.infos, 1, request, true));
  EXPECT_EQ(nothing.count, 0);
}

TEST_F(Requester, RefusesNumbersThatNoRequestCanHaveBeforeAnythingIsCreatedAndANegativeCountAfterwards) {
  const std::string failure =
      report("RequesterUntypedImpl::create_correlation_condition", DDS_LOG_BAD_PARAMETER_s, "sample identity");
  Seam::get().reset();
  for (const DDS_SequenceNumber_t& number : kNumbersOfNoRequest) {
    const DDS_SampleIdentity_t request{{{1}}, number};
    EXPECT_EQ(message_of<zemtra::BadParameterException>([&] { requester_->wait_for_replies(kLong, 1, request); }),
              failure);
    EXPECT_EQ(MORAFastBufferPool_getIdleCount(pool_), 2);
    Loan loan(*requester_);
    EXPECT_EQ(message_of<zemtra::BadParameterException>(
                  [&] { requester_->get_reply_loaned(&loan.data, &loan.count, loan.infos, 1, request, true); }),
              failure);
    EXPECT_EQ(message_of<zemtra::BadParameterException>(
                  [&] { requester_->create_correlation_condition(DDS_ANY_SAMPLE_STATE, number); }),
              failure);
  }
  EXPECT_EQ(Seam::get().count(Call::create_index_condition), 0);
  EXPECT_EQ(log_.lines().size(), 12u);
  Loan loan(*requester_);
  const DDS_SampleIdentity_t valid{{{1}}, {0, 1}};
  EXPECT_EQ(message_of<zemtra::BadParameterException>(
                [&] { requester_->get_reply_loaned(&loan.data, &loan.count, loan.infos, -5, valid, true); }),
            report("EntityUntypedImpl::get_sample_loaned", DDS_LOG_BAD_PARAMETER_s, "max_samples"));
  EXPECT_EQ(Seam::get().count(Call::create_index_condition), 1);
  EXPECT_EQ(Seam::get().count(Call::delete_readcondition), 1);
}

struct Unbuildable {
  Unbuildable() { throw std::runtime_error("unbuildable"); }
};

TEST(FastObjectPool, SwallowsTheExceptionOfAnObjectThatCannotBeBuilt) {
  alignas(DDSWaitSet) unsigned char buffer[sizeof(DDSWaitSet)];
  using Failing = zemtra::FastObjectPool<DDSWaitSet>::BufferMemoryAdapter<Unbuildable>;
  EXPECT_EQ(Failing::buffer_initialize(buffer, nullptr), 0);
  using Adapter = zemtra::FastObjectPool<DDSWaitSet>::BufferMemoryAdapter<DDSWaitSet>;
  ASSERT_EQ(Adapter::buffer_initialize(buffer, nullptr), 1);
  DDSConditionSeq attached;
  EXPECT_EQ(reinterpret_cast<DDSWaitSet*>(buffer)->get_conditions(attached), DDS_RETCODE_OK);
  Adapter::buffer_finalize(buffer, nullptr);
}

TEST_F(Requester, SelectsRepliesByConditionsThatAreOwnedForAScope) {
  const DDS_SampleIdentity_t request = ask("request");
  {
    const ScopedReadCondition scoped(
        requester_->create_correlation_condition(DDS_ANY_SAMPLE_STATE, request.sequence_number));
    EXPECT_FALSE(scoped.get()->get_trigger_value());
    answer(request, "reply");
    EXPECT_TRUE(scoped.get()->get_trigger_value());
    EXPECT_EQ(Seam::get().count(Call::delete_readcondition), 0);
  }
  EXPECT_EQ(Seam::get().count(Call::delete_readcondition), 1);
  const ScopedReadCondition empty(nullptr);
  EXPECT_EQ(empty.get(), nullptr);
  const ScopedReadCondition unread(
      requester_->create_correlation_condition(DDS_NOT_READ_SAMPLE_STATE, request.sequence_number));
  EXPECT_EQ(requester_->touch_samples(10, unread.get()), 1);
  EXPECT_EQ(requester_->touch_samples(10, unread.get()), 0);
  EXPECT_EQ(sizeof(ScopedReadCondition), 2 * sizeof(void*));
  EXPECT_TRUE(std::has_virtual_destructor_v<ScopedReadCondition>);
}

TEST_F(Requester, WakesEveryThreadThatWaitsForTheSameRequestWhenItsReplyArrives) {
  constexpr int kThreads = 3;
  const DDS_SampleIdentity_t request = ask("request");
  std::atomic<int> waiting{0};
  Seam::get().on_wait = [&waiting](DDSWaitSet&) {
    ++waiting;
    return std::optional<DDS_ReturnCode_t>();
  };
  std::atomic<int> satisfied{0};
  std::vector<std::thread> waiters;
  for (int t = 0; t < kThreads; ++t) {
    waiters.emplace_back([&] { satisfied += requester_->wait_for_replies(kLong, 1, request) ? 1 : 0; });
  }
  // Only when all have counted what was there: counting marks as read, and then nobody else is woken.
  while (waiting < kThreads) { std::this_thread::yield(); }
  answer(request, "reply");
  for (std::thread& waiter : waiters) { waiter.join(); }
  EXPECT_EQ(satisfied, kThreads);
  EXPECT_EQ(conditions_in_pool(), 0);
}

}  // namespace
}  // namespace requestreply_test
