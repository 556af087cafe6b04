// Loans: valid until returned, whatever others do; what is no loan is refused and harms nothing.

#include <atomic>

#include "behaviour.hpp"

namespace behaviour {
namespace {

/// A loan through the untyped calls, returned at the end of its scope unless it was before.
class Loan {
 public:
  Loan(DDSDataReader* reader, bool take, int max_samples = DDS_LENGTH_UNLIMITED) : reader_(reader) {
    settle();
    retcode_ = reader->read_or_take_untyped(&data_, &count_, infos_, max_samples, DDS_ANY_SAMPLE_STATE,
                                            DDS_ANY_VIEW_STATE, DDS_ANY_INSTANCE_STATE, nullptr, take);
  }
  Loan(Loan&&) = default;
  Loan& operator=(Loan&&) = default;
  ~Loan() {
    if (infos_.length() > 0) { EXPECT_EQ(give_back(), DDS_RETCODE_OK); }
  }
  DDS_ReturnCode_t give_back() { return reader_->return_loan_untyped(data_, infos_); }

  DDS_ReturnCode_t retcode() const { return retcode_; }
  void** data() const { return data_; }
  DDS_SampleInfoSeq& infos() { return infos_; }
  Strings strings() const {
    Strings result;
    for (int i = 0; i < count_; ++i) { result.emplace_back(*static_cast<char**>(data_[i])); }
    return result;
  }

 private:
  DDSDataReader* reader_;
  void** data_ = nullptr;
  int count_ = 0;
  DDS_SampleInfoSeq infos_;
  DDS_ReturnCode_t retcode_;
};

template <class Base>
class LoanTest : public Base {
 protected:
  void write_numbers(int from, int to) {
    for (int i = from; i < to; ++i) { ASSERT_EQ(write(writer, std::to_string(i)), DDS_RETCODE_OK); }
  }

  DDSStringDataWriter* writer = make_writer(this->topic);
  DDSStringDataReader* reader = make_reader(this->topic);
  DDSStringDataReader* second = make_reader(this->topic);
};
using Loans = LoanTest<OneTopic>;
using LoansOfWhatArrives = LoanTest<OneTopicOver>;

TEST_P(LoansOfWhatArrives, OutliveTheReplacementTakeAndWriterOfTheirSamplesWhichReadersShare) {
  DDS_DataReaderQos qos = keep_all_reader();
  qos.history = {DDS_KEEP_LAST_HISTORY_QOS, 1};
  DDSStringDataReader* latest = make_reader(topic, qos);
  write_numbers(0, 1);
  Loan replaced(latest, false), read(reader, false), taken(second, true);
  for (const Loan* loan : {&read, &taken}) {
    if (!carrier().in_process()) { break; }
    EXPECT_EQ(*static_cast<char**>(loan->data()[0]), *static_cast<char**>(replaced.data()[0])) << "nothing is copied";
  }
  take_all(reader);
  write_numbers(1, 50);  // would reuse the memory of what has been taken
  EXPECT_EQ(take_values(latest), Strings{"49"});
  EXPECT_EQ(remove(writer), DDS_RETCODE_OK);
  for (const Loan* loan : {&replaced, &read, &taken}) { EXPECT_EQ(loan->strings(), Strings{"0"}); }
}

TEST_F(Loans, AreRefusedByWhomTheyAreNotOfOrWhenTheirHalvesAreMixedUpOrWereReturnedBefore) {
  write_numbers(0, 4);
  Loan one(reader, true, 2), two(reader, true, 2), foreign(second, true, 2);
  void** const data = one.data();
  DDS_SampleInfoSeq none;
  void* invented[2] = {nullptr, nullptr};
  const std::pair<void**, DDS_SampleInfoSeq*> wrong[] = {
      {foreign.data(), &foreign.infos()}, {data, &two.infos()},    {nullptr, &one.infos()}, {data, &none},
      {invented, &one.infos()},           {data + 1, &one.infos()}};
  for (const auto& [pointers, infos] : wrong) {
    EXPECT_EQ(reader->return_loan_untyped(pointers, *infos), DDS_RETCODE_PRECONDITION_NOT_MET);
  }
  EXPECT_EQ(one.strings(), (Strings{"0", "1"}));
  EXPECT_EQ(two.strings(), (Strings{"2", "3"}));
  EXPECT_EQ(foreign.strings(), (Strings{"0", "1"}));
  for (Loan* loan : {&two, &one, &foreign}) {
    EXPECT_EQ(loan->give_back(), DDS_RETCODE_OK);
    EXPECT_EQ(loan->infos().length(), 0);
    EXPECT_TRUE(loan->infos().has_ownership());
  }
  EXPECT_EQ(reader->return_loan_untyped(data, one.infos()), DDS_RETCODE_PRECONDITION_NOT_MET);
  write_numbers(4, 5);
  EXPECT_EQ(take_values(reader), Strings{"4"});
}

TEST_F(Loans, KeepTheInfosOfTheMomentOfTheRead) {
  write_numbers(0, 1);
  Loan before(reader, false), later(reader, false);
  EXPECT_EQ(before.infos()[0].sample_state, DDS_NOT_READ_SAMPLE_STATE);
  EXPECT_EQ(before.infos()[0].view_state, DDS_NEW_VIEW_STATE);
  EXPECT_EQ(later.infos()[0].sample_state, DDS_READ_SAMPLE_STATE);
  EXPECT_EQ(later.infos()[0].view_state, DDS_NOT_NEW_VIEW_STATE);
}

TEST_F(Loans, KeepTheirReaderFromBeingDeleted) {
  write_numbers(0, 1);
  {
    const Loan loan(reader, true);
    EXPECT_EQ(remove(reader), DDS_RETCODE_PRECONDITION_NOT_MET);
    EXPECT_EQ(participant->delete_contained_entities(), DDS_RETCODE_PRECONDITION_NOT_MET);
    EXPECT_EQ(loan.strings(), Strings{"0"});
  }
  EXPECT_EQ(remove(reader), DDS_RETCODE_OK);
}

TEST_F(Loans, HoldAtMostWhatWasAskedForAndWhatTheReaderAllowsARead) {
  DDS_DataReaderQos qos = keep_all_reader();
  qos.reader_resource_limits.max_samples_per_read = 3;
  DDSStringDataReader* limited = make_reader(topic, qos);
  write_numbers(0, 5);
  EXPECT_EQ(Loan(limited, false).strings().size(), 3u);
  EXPECT_EQ(Loan(limited, false, 100).strings().size(), 3u);
  EXPECT_EQ(Loan(limited, false, 2).strings().size(), 2u);
  EXPECT_EQ(Loan(limited, false, 0).retcode(), DDS_RETCODE_NO_DATA);
  EXPECT_EQ(Loan(limited, false, -2).retcode(), DDS_RETCODE_BAD_PARAMETER);
  EXPECT_EQ(Loan(reader, true).strings().size(), 5u);
  EXPECT_EQ(Loan(reader, true).retcode(), DDS_RETCODE_NO_DATA);
}

TEST_F(Loans, GiveWayToCopiesInSequencesWithRoomOfTheirOwn) {
  write_numbers(0, 5);
  DDS_StringSeq data(3);
  DDS_SampleInfoSeq infos(3);
  ASSERT_EQ(
      reader->take(data, infos, DDS_LENGTH_UNLIMITED, DDS_ANY_SAMPLE_STATE, DDS_ANY_VIEW_STATE, DDS_ANY_INSTANCE_STATE),
      DDS_RETCODE_OK);
  ASSERT_EQ(data.length(), 3);
  EXPECT_TRUE(data.has_ownership());
  EXPECT_EQ(remove(reader), DDS_RETCODE_OK) << "no loan is outstanding";
  EXPECT_EQ(remove(writer), DDS_RETCODE_OK);
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(data[i], std::to_string(i));
    EXPECT_TRUE(infos[i].valid_data);
  }
  EXPECT_EQ(second->return_loan(data, infos), DDS_RETCODE_PRECONDITION_NOT_MET);
}

TEST_F(Loans, AreNotMixedWithCopiesNorMadeOverASequenceThatIsNotEmpty) {
  write_numbers(0, 1);
  void** untyped = nullptr;
  int count = 0;
  DDS_SampleInfoSeq occupied(3);
  EXPECT_EQ(reader->read_or_take_untyped(&untyped, &count, occupied, 1, DDS_ANY_SAMPLE_STATE, DDS_ANY_VIEW_STATE,
                                         DDS_ANY_INSTANCE_STATE, nullptr, true),
            DDS_RETCODE_PRECONDITION_NOT_MET);
  const auto take_into = [&](DDS_StringSeq& data, DDS_SampleInfoSeq& infos) {
    return reader->take(data, infos, 1, DDS_ANY_SAMPLE_STATE, DDS_ANY_VIEW_STATE, DDS_ANY_INSTANCE_STATE);
  };
  DDS_StringSeq data, room(2);
  DDS_SampleInfoSeq infos, less_room(1);
  EXPECT_EQ(take_into(room, infos), DDS_RETCODE_PRECONDITION_NOT_MET);
  EXPECT_EQ(take_into(data, less_room), DDS_RETCODE_PRECONDITION_NOT_MET);
  EXPECT_EQ(take_into(room, less_room), DDS_RETCODE_PRECONDITION_NOT_MET);
  ASSERT_EQ(take_into(data, infos), DDS_RETCODE_OK) << "a refused take takes nothing";
  EXPECT_EQ(take_into(data, infos), DDS_RETCODE_PRECONDITION_NOT_MET) << "the loan is still there";
  EXPECT_EQ(reader->return_loan(data, infos), DDS_RETCODE_OK);
}

TEST_P(LoansOfWhatArrives, StayIntactWhileThreadsReadTakeAndWriteAtOnce) {
  const int count = scaled(20000);
  DDS_DataReaderQos qos = keep_all_reader(16);
  DDSStringDataReader* shared = make_reader(topic, qos);
  EXPECT_EQ(remove(reader), DDS_RETCODE_OK);
  EXPECT_EQ(remove(second), DDS_RETCODE_OK);
  std::atomic<int> taken{0};
  const auto check = [](const Loan& loan) {
    for (const std::string& value : loan.strings()) {
      EXPECT_EQ(value, std::string(value.size(), value.front()));  // a torn or reused buffer would differ
    }
    return static_cast<int>(loan.strings().size());
  };
  std::vector<Thread> threads;
  for (int t = 0; t < 2; ++t) {
    threads.emplace_back([&] {
      const AsItComes as_it_comes;
      while (taken < count) { taken += check(Loan(shared, true, 3)); }
    });
    threads.emplace_back([&] {
      const AsItComes as_it_comes;
      while (taken < count) { check(Loan(shared, false, 5)); }
    });
  }
  for (int i = 0; i < count; ++i) {
    const std::string value(static_cast<std::size_t>(1 + i % 50), static_cast<char>('a' + i % 26));
    EXPECT_EQ(write(writer, value), DDS_RETCODE_OK);
  }
}

RUN_OVER_EVERY_CARRIER(LoansOfWhatArrives);

}  // namespace
}  // namespace behaviour
