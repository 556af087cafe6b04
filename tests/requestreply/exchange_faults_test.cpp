#include "requestreply/fixture.hpp"

// Every call that sending, receiving, waiting and correlating make is failed, with every code that it may return.

namespace requestreply_test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* kRead = "EntityUntypedImpl::get_sample_loaned";
constexpr const char* kWait = "EntityUntypedImpl::wait_for_samples";
constexpr const char* kSend = "EntityUntypedImpl::send_sample";
constexpr const char* kCorrelate = "RequesterUntypedImpl::create_correlation_condition";

class ExchangeFaults : public RequestReply {
 protected:
  ExchangeFaults()
      : replier_(make_replier()),
        requester_(make_requester()),
        pool_(Seam::get().pools.at(0)),
        request_(send(*requester_, "request")) {}

  /// Runs `operation` while a call fails; expects the exception, one log line, and no condition or wait set lost.
  template <class Operation>
  void expect_failure(const Fault& fault, const std::type_info& exception, const std::string& context,
                      const QVXLogMessage& log_template, const std::string& msg, Operation operation) {
    SCOPED_TRACE(std::string(support::name_of(fault.call)) + " " + std::to_string(fault.occurrence) + ", code " +
                 std::to_string(fault.retcode));
    begin(fault);
    const auto [type, message] = thrown_by(operation);
    EXPECT_EQ(*type, exception);
    EXPECT_EQ(message, report(context, log_template, msg));
    EXPECT_THAT(log_.lines(),
                ElementsAre(FailureLine("requestreply/Exception", context, support::filled(log_template, msg))));
    expect_nothing_lost();
  }

  /// Runs `operation` for every code with which a call may fail.
  template <class Operation>
  void expect_failures(Call call, int occurrence, const std::string& context, const std::string& msg,
                       Operation operation) {
    for (const Failure& failure : kFailures) {
      expect_failure({call, occurrence, failure.retcode}, *failure.exception, context, QVX_LOG_ANY_FAILURE_s, msg,
                     operation);
    }
  }

  void begin(const Fault& fault) {
    Seam::get().reset();
    log_.clear();
    Seam::get().plan(fault);
  }

  void expect_nothing_lost() {
    Seam& seam = Seam::get();
    EXPECT_TRUE(seam.all_happened());
    EXPECT_EQ(seam.count(Call::get_pool_buffer), seam.count(Call::return_pool_buffer));
    EXPECT_EQ(MORAFastBufferPool_getIdleCount(pool_), 2);
    seam.reset();
  }

  bool receive(int min_count) {
    Loan loan(*replier_);
    return replier_->receive_sample_loaned(&loan.data, &loan.count, loan.infos, 10, kShort, min_count);
  }
  void read_replies() {
    Loan loan(*requester_);
    requester_->get_reply_loaned(&loan.data, &loan.count, loan.infos, 10, request_, false);
  }

  std::unique_ptr<Open<ReplierUntypedImpl>> replier_;
  std::unique_ptr<Open<RequesterUntypedImpl>> requester_;
  MORAFastBufferPool* pool_;
  DDS_SampleIdentity_t request_;
};

TEST_F(ExchangeFaults, OfAWriteAreReportedAndATimeoutIsOneOfThem) {
  expect_failures(Call::write, 1, kSend, "DataWriter write failure", [this] { send(*requester_, "request"); });
  expect_failures(Call::write, 1, kSend, "DataWriter write failure", [this] { reply(*replier_, request_, "reply"); });
  expect_failure({Call::write, 1, DDS_RETCODE_TIMEOUT}, typeid(zemtra::TimeoutException), kSend, QVX_LOG_ANY_FAILURE_s,
                 "DataWriter write timeout", [this] { send(*requester_, "request"); });
  EXPECT_THAT(take_all(*replier_), ElementsAre("request"));
  EXPECT_THAT(take_all(*requester_), IsEmpty());
}

TEST_F(ExchangeFaults, OfAReadAreReportedWhetherItTouchesOrTakes) {
  const char* msg = "read from DataReader";
  // Counting what is there, counting what has arrived, and taking.
  expect_failures(Call::read_or_take, 1, kRead, msg, [this] { receive(1); });
  expect_failures(Call::read_or_take, 2, kRead, msg, [this] {
    Seam::get().on_wait = [](DDSWaitSet&) { return std::optional(DDS_RETCODE_OK); };
    requester_->wait_for_replies(kLong, 2, request_);
  });
  expect_failures(Call::read_or_take, 2, kRead, msg, [this] { receive(1); });
  reply(*replier_, request_, "reply");
  expect_failures(Call::read_or_take, 1, kRead, msg, [this] { requester_->wait_for_replies(kLong, 1, request_); });
  expect_failures(Call::read_or_take, 1, kRead, msg, [this] { read_replies(); });
  EXPECT_THAT(take_replies(*requester_, request_), ElementsAre("reply"));
}

TEST_F(ExchangeFaults, OfAWaitAreReported) {
  for (const int min_count : {1, 3}) {
    expect_failures(Call::wait, 1, kWait, "wait for samples",
                    [this, min_count] { requester_->wait_for_any_sample(kLong, min_count); });
    expect_failures(Call::wait, 1, kWait, "wait for samples",
                    [this, min_count] { requester_->wait_for_replies(kLong, min_count, request_); });
  }
}

TEST_F(ExchangeFaults, OfAWaitLeaveWhatWasCountedMarkedAsRead) {
  begin({Call::wait, 1, DDS_RETCODE_ERROR});
  EXPECT_THROW(receive(2), zemtra::RuntimeException);
  EXPECT_THAT(sample_states(*replier_->reader), ElementsAre(DDS_READ_SAMPLE_STATE));
  EXPECT_THAT(take_all(*replier_), ElementsAre("request"));
}

TEST_F(ExchangeFaults, OfACorrelationConditionAreReportedAndLeaveNeitherConditionNorWaitSetBehind) {
  const auto expect = [this](int occurrence, auto operation) {
    expect_failure({Call::create_index_condition, occurrence}, typeid(zemtra::RuntimeException), kCorrelate,
                   QVX_LOG_CREATION_FAILURE_s, "correlation condition", operation);
  };
  expect(1, [this] { requester_->wait_for_replies(kLong, 1, request_); });
  expect(2, [this] { requester_->wait_for_replies(kLong, 1, request_); });
  expect(1, [this] { read_replies(); });
}

TEST_F(ExchangeFaults, OfTheClockAreNotLookedAt) {
  for (const int occurrence : {1, 2}) {
    for (const Failure& failure : kFailures) {
      begin({Call::get_current_time, occurrence, failure.retcode});
      Seam::get().on_wait = [](DDSWaitSet&) { return std::optional(DDS_RETCODE_TIMEOUT); };
      EXPECT_FALSE(requester_->wait_for_any_sample(kLong, 2));
      EXPECT_THAT(log_.lines(), IsEmpty());
    }
  }
}

TEST_F(ExchangeFaults, OfReturningALoanAreOnlyLogged) {
  for (const Failure& failure : kFailures) {
    begin({Call::return_loan, 1, failure.retcode});
    EXPECT_EQ(replier_->touch_samples(1, replier_->any_sample_condition), 1);
    EXPECT_THAT(log_.lines(),
                ElementsAre(FailureLine("requestreply/UntypedCommon", "EntityUntypedImpl::return_loan",
                                        support::filled(QVX_LOG_ANY_FAILURE_s, "return DataReader loan"))));
    expect_nothing_lost();
  }
}

TEST_F(ExchangeFaults, OfThePoolAreExhaustedMemoryBeforeAnythingIsCreated) {
  begin({Call::get_pool_buffer});
  EXPECT_THROW(requester_->wait_for_replies(kLong, 1, request_), std::bad_alloc);
  EXPECT_THAT(Seam::get().trace(), ElementsAre("get_pool_buffer"));
  EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(ExchangeFaults, OfAttachingTheCorrelationConditionAreNotLookedAt) {
  for (const Failure& failure : kFailures) {
    begin({Call::attach_condition, 1, failure.retcode});
    EXPECT_FALSE(requester_->wait_for_replies(kShort, 1, request_));
    EXPECT_THAT(log_.lines(), IsEmpty());
    expect_nothing_lost();
  }
}

TEST_F(ExchangeFaults, OfDeletingACorrelationConditionAreIgnoredAndTheRestIsGivenBack) {
  for (const Call call : {Call::delete_readcondition, Call::get_condition_reader}) {
    for (const int occurrence : {1, 2}) {
      begin({call, occurrence});
      EXPECT_FALSE(requester_->wait_for_replies(kShort, 1, request_));
      EXPECT_THAT(log_.lines(), IsEmpty());
      expect_nothing_lost();
    }
  }
  // The conditions that are left keep the reader from being deleted.
  requester_.reset();
  EXPECT_THAT(logged(), ElementsAre(support::filled(QVX_LOG_DESTRUCTION_FAILURE_s, "reader"),
                                    support::filled(QVX_LOG_DESTRUCTION_FAILURE_s, "content-filtered topic")));
  replier_.reset();
  delete_leftovers();
}

TEST_F(ExchangeFaults, ThatAreNotTheLibrarysOwnPassUnchangedAndLoseNothing) {
  for (const std::pair<Call, int>& where :
       {std::pair(Call::create_index_condition, 1), std::pair(Call::create_index_condition, 2),
        std::pair(Call::attach_condition, 1), std::pair(Call::read_or_take, 1), std::pair(Call::wait, 1),
        std::pair(Call::get_current_time, 2)}) {
    SCOPED_TRACE(support::name_of(where.first));
    begin({where.first, where.second, DDS_RETCODE_OK, true});
    EXPECT_THROW(requester_->wait_for_replies(kShort, 2, request_), std::bad_alloc);
    EXPECT_EQ(Seam::get().count(Call::get_condition_reader), Seam::get().count(Call::delete_readcondition));
    expect_nothing_lost();
  }
  begin({Call::write, 1, DDS_RETCODE_OK, true});
  EXPECT_THROW(send(*requester_, "request"), std::bad_alloc);
  EXPECT_THAT(log_.lines(), IsEmpty());
}

}  // namespace
}  // namespace requestreply_test
