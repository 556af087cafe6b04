#include "requestreply/fixture.hpp"

namespace requestreply_test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr DDS_Duration_t kSecond{1, 0};

class Receiving : public RequestReply {
 protected:
  Receiving() : replier_(make_replier()), requester_(make_requester()) { Seam::get().reset(); }

  void send_requests(int count) {
    for (int i = 0; i < count; ++i) { send(*requester_, "request " + std::to_string(i)); }
  }
  std::vector<int> max_samples_of_reads() const {
    std::vector<int> all;
    for (const support::ReadArguments& read : Seam::get().reads) { all.push_back(read.max_samples); }
    return all;
  }
  static std::string failure(const std::string& msg) {
    return report("EntityUntypedImpl::validate", DDS_LOG_BAD_PARAMETER_s, msg);
  }

  std::unique_ptr<Open<ReplierUntypedImpl>> replier_;
  std::unique_ptr<Open<RequesterUntypedImpl>> requester_;
};

TEST(SampleInfo, IsMarkedAsWithoutDataAndOtherwiseLeftAlone) {
  DDS_SampleInfo info;
  info.sample_state = DDS_READ_SAMPLE_STATE;
  info.sample_rank = 3;
  info.sample_identity.sequence_number = {4, 5};
  info.valid_data = true;
  zemtra::details::init_sample_info(info);
  EXPECT_FALSE(info.valid_data);
  EXPECT_EQ(info.sample_state, DDS_READ_SAMPLE_STATE);
  EXPECT_EQ(info.sample_rank, 3);
  EXPECT_TRUE(info.sample_identity.sequence_number == (DDS_SequenceNumber_t{4, 5}));
}

TEST_F(Receiving, ChecksItsArgumentsInOrder) {
  const std::string greater = "max_count must be greater than zero";
  const std::string at_least_min = "max_count must be greater or equal than min_count";
  const std::string no_time = "max_wait must be greater than zero";
  const std::string unbounded = "max_count and max_wait cannot be both unbounded";
  struct Case {
    int limit, min_count, max_count;
    DDS_Duration_t max_wait;
    std::string failure;  // empty when the arguments are valid
  };
  const int none = DDS_LENGTH_UNLIMITED;
  const Case cases[] = {
      {10, 1, none, kSecond, ""},
      {10, 1, none, DDS_DURATION_INFINITE, ""},
      {10, 10, none, kSecond, ""},
      {10, 11, none, kSecond, at_least_min},
      {10, none, none, kSecond, ""},
      {10, none, 10, kSecond, ""},
      {10, none, 9, kSecond, at_least_min},
      {10, 5, 3, kSecond, at_least_min},
      {10, 5, 3, DDS_DURATION_ZERO, at_least_min},
      {10, 3, 3, kSecond, ""},
      {10, 1, 0, kSecond, greater},
      {10, 1, -2, DDS_DURATION_ZERO, greater},
      {10, 1, 3, DDS_DURATION_ZERO, no_time},
      {10, 1, 3, DDS_DURATION_INFINITE, ""},
      {10, 0, 3, kSecond, ""},
      {10, -7, 3, kSecond, ""},
      {10, 1, 3, {-1, 0}, ""},
      {0, 1, none, kSecond, greater},
      {-5, 1, none, kSecond, greater},
      {none, 1, none, kSecond, ""},
      {none, 5, none, kSecond, ""},
      {none, none, none, kSecond, ""},
      {none, none, 3, kSecond, at_least_min},
      {none, 1, none, DDS_DURATION_ZERO, no_time},
      {none, 1, none, DDS_DURATION_INFINITE, unbounded},
      {none, none, none, DDS_DURATION_INFINITE, unbounded},
  };
  Open<EntityUntypedImpl> entity(false);
  for (const Case& entry : cases) {
    SCOPED_TRACE(std::to_string(entry.limit) + ", " + std::to_string(entry.min_count) + ", " +
                 std::to_string(entry.max_count) + ", " + std::to_string(entry.max_wait.sec));
    entity.max_samples_per_read = entry.limit;
    const auto validate = [&] { entity.validate(entry.min_count, entry.max_count, entry.max_wait); };
    if (entry.failure.empty()) {
      EXPECT_NO_THROW(validate());
    } else {
      EXPECT_EQ(message_of<zemtra::BadParameterException>(validate), failure(entry.failure));
    }
  }
}

TEST_F(Receiving, ChecksItsArgumentsBeforeItWaits) {
  Loan loan(*replier_);
  EXPECT_EQ(message_of<zemtra::BadParameterException>(
                [&] { replier_->receive_sample_loaned(&loan.data, &loan.count, loan.infos, 0, kSecond, 1); }),
            failure("max_count must be greater than zero"));
  EXPECT_THAT(Seam::get().trace(), IsEmpty());
}

TEST_F(Receiving, AsksForLoansAndNeverForCopies) {
  send_requests(1);
  Loan loan(*replier_);
  EXPECT_TRUE(replier_->get_sample_loaned(&loan.data, &loan.count, loan.infos, 4, true, nullptr));
  ASSERT_EQ(Seam::get().reads.size(), 1u);
  const support::ReadArguments& read = Seam::get().reads[0];
  EXPECT_EQ(read.data_seq_len, 0);
  EXPECT_EQ(read.data_seq_max_len, 0);
  EXPECT_EQ(read.data_seq_has_ownership, 1);
  EXPECT_EQ(read.copy_buffer, nullptr);
  EXPECT_EQ(read.sample_size, kSampleSize);
  EXPECT_EQ(read.max_samples, 4);
  EXPECT_TRUE(read.take);
  EXPECT_EQ(loan.count, 1);
  EXPECT_EQ(loan.infos.length(), 1);
  EXPECT_TRUE(loan.infos[0].valid_data);
}

TEST_F(Receiving, ReadsOrTakesThroughTheConditionOrElseInAnyState) {
  send_requests(3);
  EXPECT_EQ(replier_->touch_samples(2, replier_->any_sample_condition), 2);
  for (const auto& [condition, expected] :
       {std::pair(replier_->not_read_condition, 1), std::pair<DDSReadCondition*, int>(nullptr, 3)}) {
    Loan loan(*replier_);
    EXPECT_TRUE(replier_->get_sample_loaned(&loan.data, &loan.count, loan.infos, 10, false, condition));
    EXPECT_EQ(loan.count, expected);
  }
  EXPECT_EQ(replier_->touch_samples(10, replier_->not_read_condition), 0);
  EXPECT_THAT(take_all(*replier_), ElementsAre("request 0", "request 1", "request 2"));
  Loan nothing(*replier_);
  EXPECT_FALSE(replier_->get_sample_loaned(&nothing.data, &nothing.count, nothing.infos, 10, true, nullptr));
  EXPECT_EQ(nothing.count, 0);
}

TEST_F(Receiving, RefusesANegativeCountButNotZeroOrUnlimited) {
  send_requests(2);
  Loan loan(*replier_);
  const auto get = [&](int max_samples) {
    return replier_->get_sample_loaned(&loan.data, &loan.count, loan.infos, max_samples, false, nullptr);
  };
  for (const int max_samples : {-2, -5, std::numeric_limits<int>::min()}) {
    EXPECT_EQ(message_of<zemtra::BadParameterException>([&] { get(max_samples); }),
              report("EntityUntypedImpl::get_sample_loaned", DDS_LOG_BAD_PARAMETER_s, "max_samples"));
  }
  EXPECT_THAT(Seam::get().reads, IsEmpty());
  EXPECT_FALSE(get(0));
  EXPECT_TRUE(get(DDS_LENGTH_UNLIMITED));
  EXPECT_EQ(loan.count, 2);
  EXPECT_THAT(max_samples_of_reads(), ElementsAre(0, DDS_LENGTH_UNLIMITED));
}

TEST_F(Receiving, CountsWhatIsThereInAnyStateWithoutWaiting) {
  send_requests(3);
  Seam::get().reset();
  EXPECT_EQ(replier_->touch_samples(1, replier_->not_read_condition), 1);
  EXPECT_THAT(sample_states(*replier_->reader),
              ElementsAre(DDS_READ_SAMPLE_STATE, DDS_NOT_READ_SAMPLE_STATE, DDS_NOT_READ_SAMPLE_STATE));
  EXPECT_THAT(Seam::get().trace(), ElementsAre("reader.read", "reader.return_loan"));
  Seam::get().reset();
  EXPECT_TRUE(replier_->wait_for_any_sample(kShort, 3));
  EXPECT_TRUE(replier_->wait_for_any_sample(kShort, 1));
  EXPECT_TRUE(replier_->wait_for_any_sample(kShort, 0));
  EXPECT_EQ(Seam::get().count(Call::wait), 0);
  EXPECT_THAT(max_samples_of_reads(), ElementsAre(3, 1, 0));
}

TEST_F(Receiving, MarksWhatItCountsAsReadExceptALastOneThatWasMissingAloneForWhichItReadsNoClock) {
  Seam::get().on_wait = [this](DDSWaitSet&) -> std::optional<DDS_ReturnCode_t> {
    send_requests(1);
    return std::nullopt;
  };
  std::vector<DDS_SampleStateMask> expected = {DDS_NOT_READ_SAMPLE_STATE};
  for (const int min_count : {1, 3}) {
    send_requests(min_count - 1);
    EXPECT_TRUE(replier_->wait_for_any_sample(kLong, min_count));
    EXPECT_THAT(sample_states(*replier_->reader), ::testing::ElementsAreArray(expected));
    take_all(*replier_);
    expected.insert(expected.begin(), 2, DDS_READ_SAMPLE_STATE);
  }
  EXPECT_EQ(Seam::get().count(Call::wait), 2);
  EXPECT_EQ(Seam::get().count(Call::get_current_time), 0);
}

TEST_F(Receiving, CountsArrivalsOnceEachAndReadsAtMostWhatIsMissing) {
  int waits = 0;
  Seam::get().on_wait = [&](DDSWaitSet&) -> std::optional<DDS_ReturnCode_t> {
    send_requests(++waits == 1 ? 2 : 4);
    return std::nullopt;
  };
  EXPECT_TRUE(replier_->wait_for_any_sample(kLong, 5));
  EXPECT_EQ(waits, 2);
  EXPECT_THAT(max_samples_of_reads(), ElementsAre(5, 5, 3));
  const std::vector<DDS_SampleStateMask> states = sample_states(*replier_->reader);
  EXPECT_EQ(std::count(states.begin(), states.end(), DDS_READ_SAMPLE_STATE), 5);
  EXPECT_EQ(states.size(), 6u);
}

TEST_F(Receiving, ReducesTheRemainingTimeByWhatPassedWithoutALowerBound) {
  Seam::get().times = {{100, 0}, {103, 500000000}, {104, 0}, {112, 0}};
  Seam::get().on_wait = [this](DDSWaitSet&) -> std::optional<DDS_ReturnCode_t> {
    send_requests(1);
    return DDS_RETCODE_OK;
  };
  EXPECT_TRUE(replier_->wait_for_any_sample({10, 0}, 3));
  EXPECT_THAT(Seam::get().wait_timeouts,
              ElementsAre(DDS_Duration_t{10, 0}, DDS_Duration_t{6, 500000000}, DDS_Duration_t{-2, 500000000}));
  EXPECT_EQ(Seam::get().count(Call::get_current_time), 4) << "none around the last wait";
  EXPECT_THAT(max_samples_of_reads(), ElementsAre(3, 3, 2));
}

TEST_F(Receiving, WaitsWithoutEndForAnInfiniteTimeWhateverPasses) {
  Seam::get().times = {{100, 0}, {2000000, 0}};
  Seam::get().on_wait = [this](DDSWaitSet&) -> std::optional<DDS_ReturnCode_t> {
    send_requests(1);
    return DDS_RETCODE_OK;
  };
  EXPECT_TRUE(replier_->wait_for_any_sample(DDS_DURATION_INFINITE, 2));
  EXPECT_THAT(Seam::get().wait_timeouts, ElementsAre(DDS_DURATION_INFINITE, DDS_DURATION_INFINITE));
}

TEST_F(Receiving, WaitsForTheTimeoutWhenTheCountIsUnlimited) {
  send_requests(2);
  EXPECT_FALSE(replier_->wait_for_any_sample(kShort, DDS_LENGTH_UNLIMITED));
  EXPECT_EQ(max_samples_of_reads().front(), 2147483647);
  const std::vector<DDS_SampleStateMask> states = sample_states(*replier_->reader);
  EXPECT_THAT(states, ElementsAre(DDS_READ_SAMPLE_STATE, DDS_READ_SAMPLE_STATE));
}

TEST_F(Receiving, TellsOfATimeoutByItsResultAndLogsItOnlyAsInformation) {
  for (const int min_count : {1, 2}) {
    EXPECT_FALSE(replier_->wait_for_any_sample(kShort, min_count));
    EXPECT_THAT(log_.lines(), IsEmpty());
  }
  DDSLog_g_instrumentationMask |= 0x8;
  EXPECT_FALSE(replier_->wait_for_any_sample(kShort, 1));
  ASSERT_EQ(log_.lines().size(), 1u);
  const support::LogLine line = log_.lines()[0];
  EXPECT_EQ(line.level, 8);
  EXPECT_EQ(line.file.rfind("requestreply/UntypedCommon", 0), 0u) << line.file;
  EXPECT_EQ(line.context, "EntityUntypedImpl::wait_for_samples");
  EXPECT_EQ(line.log_template, &QVX_LOG_ANY_s);
  EXPECT_EQ(line.text, support::filled(QVX_LOG_ANY_s, "timed out waiting for data"));

  log_.clear();
  DDSLog_g_submoduleMask &= ~0x10u;
  EXPECT_FALSE(replier_->wait_for_any_sample(kShort, 1));
  EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(Receiving, TakesUpToTheMaximumInAnyStateAfterTheWaitAndNothingAfterATimeout) {
  send_requests(4);
  EXPECT_EQ(replier_->touch_samples(1, replier_->any_sample_condition), 1);
  Loan loan(*replier_), nothing(*replier_);
  EXPECT_TRUE(replier_->receive_sample_loaned(&loan.data, &loan.count, loan.infos, 3, kLong, 2));
  EXPECT_THAT(loan.texts(), ElementsAre("request 0", "request 1", "request 2"));
  EXPECT_FALSE(replier_->receive_sample_loaned(&nothing.data, &nothing.count, nothing.infos, 3, kShort, 2));
  EXPECT_EQ(nothing.count, 0);
  EXPECT_EQ(nothing.infos.length(), 0);
  EXPECT_THAT(take_all(*replier_), ElementsAre("request 3"));
}

TEST_F(Receiving, KeepsALoanValidUntilItIsReturnedAndOnlyLogsAWrongReturn) {
  send_requests(1);
  Loan loan(*replier_);
  ASSERT_TRUE(replier_->receive_sample_loaned(&loan.data, &loan.count, loan.infos, 1, kLong, 1));
  requester_.reset();
  EXPECT_THAT(loan.texts(), ElementsAre("request 0"));
  void** data = loan.data;
  loan.give_back();
  EXPECT_THAT(log_.lines(), IsEmpty());

  DDS_SampleInfoSeq infos;
  EXPECT_NO_THROW(replier_->return_loan(data, infos));
  EXPECT_THAT(log_.lines(), ElementsAre(FailureLine("requestreply/UntypedCommon", "EntityUntypedImpl::return_loan",
                                                    support::filled(QVX_LOG_ANY_FAILURE_s, "return DataReader loan"))));
}

}  // namespace
}  // namespace requestreply_test
