#include <algorithm>

#include "requestreply/fixture.hpp"
#include "requestreply/sample_data.hpp"

namespace requestreply_test {
namespace {

using zemtra::dds_type_traits;
using zemtra::LoanedSample;
using zemtra::LoanedSamples;
using zemtra::Sample;
using zemtra::details::create_loaned_samples;

/// A writer and a reader of `T`, and loans of the latter.
template <class T>
class LoanOf : public RequestReply {
 protected:
  using Traits = dds_type_traits<T>;

  LoanOf() {
    const char* type = Traits::register_type(nullptr, real_participant_);
    topic_ = real_participant_->create_topic("Topic", type, DDS_TOPIC_QOS_DEFAULT, nullptr, DDS_STATUS_MASK_NONE);
    DDS_DataWriterQos writer_qos;
    DDS_DataReaderQos reader_qos;
    real_participant_->get_default_datawriter_qos(writer_qos);
    real_participant_->get_default_datareader_qos(reader_qos);
    writer_qos.reliability.kind = reader_qos.reliability.kind = DDS_RELIABLE_RELIABILITY_QOS;
    writer_qos.history.kind = reader_qos.history.kind = DDS_KEEP_ALL_HISTORY_QOS;
    reader_ = real_participant_->create_datareader(topic_, reader_qos, nullptr, DDS_STATUS_MASK_NONE);
    writer_ = real_participant_->create_datawriter(topic_, writer_qos, nullptr, DDS_STATUS_MASK_NONE);
  }
  ~LoanOf() override {
    // The reader cannot be deleted while it has lent something.
    EXPECT_EQ(real_participant_->delete_datareader(reader_), DDS_RETCODE_OK);
    delete_leftovers();
    EXPECT_EQ(logged(), std::vector<std::string>());
  }

  void write(std::string key, std::string value) {
    const T data = data_of<T>(key, value, 0);
    const typename Traits::Outgoing outgoing(data);
    DDS_WriteParams_t params;
    EXPECT_EQ(writer_->write_untyped(outgoing.get(), params), DDS_RETCODE_OK);
    written_.push_back(text(data));
    identities_.push_back(params.identity.sequence_number);
  }
  /// Reads what there is, leaving it in the reader.
  LoanedSamples<T> read() {
    DDS_SampleInfoSeq infos;
    int count = 0;
    EXPECT_EQ(reader_->read_or_take_untyped(&lent_, &count, infos, DDS_LENGTH_UNLIMITED, DDS_ANY_SAMPLE_STATE,
                                            DDS_ANY_VIEW_STATE, DDS_ANY_INSTANCE_STATE, nullptr, false),
              DDS_RETCODE_OK);
    auto loan = create_loaned_samples<T>(lent_, count, infos, Traits::narrow(reader_));
    EXPECT_EQ(infos.length(), 0);
    EXPECT_EQ(infos.maximum(), 0);
    EXPECT_EQ(loan.length(), count);
    return loan;
  }

  DDSTopic* topic_;
  DDSDataReader* reader_;
  DDSDataWriter* writer_;
  std::vector<std::string> written_;
  std::vector<DDS_SequenceNumber_t> identities_;
  void** lent_ = nullptr;
};
using LentTypes = ::testing::Types<std::string, char*, const char*, DDS_Octets, DDS_KeyedString, DDS_KeyedOctets>;
TYPED_TEST_SUITE(LoanOf, LentTypes);

TYPED_TEST(LoanOf, ShowsTheSamplesWhereTheyLie) {
  using Element = typename TestFixture::Traits::Element;
  this->write("key", "one");
  this->write("key", "");
  this->real_participant_->delete_datawriter(this->writer_);  // tells of it by a sample without data
  LoanedSamples<TypeParam> loan = this->read();
  ASSERT_EQ(loan.size(), 3u);
  int i = 0;
  for (const auto& sample : loan) {
    const bool valid = i < 2;
    EXPECT_EQ(sample.has_data(), valid);
    EXPECT_EQ(sample.info().valid_data, valid);
    const auto& element = *static_cast<Element*>(this->lent_[i]);
    const Sample<TypeParam> copy = sample;
    EXPECT_EQ(copy.has_data(), valid);
    if (valid) {
      EXPECT_EQ(sample.identity().sequence_number, this->identities_[static_cast<std::size_t>(i)]);
      EXPECT_EQ(copy.identity().sequence_number, sample.identity().sequence_number);
      EXPECT_EQ(text(copy.data()), text(sample.data()));
    } else {
      EXPECT_EQ(text(copy.data()), text(Sample<TypeParam>().data()));
    }
    const typename TestFixture::Traits::Value value = TestFixture::Traits::to_value(element, sample.info());
    if constexpr (std::is_same_v<TypeParam, std::string>) {
      EXPECT_EQ(value, copy.data());
    } else {
      EXPECT_EQ(text(value.data()), text(copy.data()));
    }
    ++i;
  }
  // A copy outlives the loan.
  const Sample<TypeParam> first(loan[0]), second(loan[1]);
  loan.return_loan();
  EXPECT_TRUE(loan.empty());
  EXPECT_EQ(text(first.data()), this->written_[0]);
  if constexpr (!std::is_same_v<TypeParam, DDS_Octets> && !std::is_same_v<TypeParam, DDS_KeyedOctets>) {
    EXPECT_EQ(text(second.data()), this->written_[1]);
  }
  EXPECT_TRUE(second.has_data());
}

TYPED_TEST(LoanOf, LooksAtNoDataThatIsNotThere) {
  using Element = typename TestFixture::Traits::Element;
  const DDS_SampleInfo info;
  alignas(Element) unsigned char garbage[sizeof(Element)];
  std::fill(std::begin(garbage), std::end(garbage), static_cast<unsigned char>(0xdb));
  const Element* const elements[] = {nullptr, reinterpret_cast<const Element*>(garbage)};
  for (const Element* element : elements) {
    const LoanedSample<TypeParam> sample(element, &info);
    EXPECT_FALSE(sample.has_data());
    const TypeParam nothing{};
    const std::string expected = std::is_pointer_v<TypeParam> ? "" : text(nothing);
    EXPECT_EQ(text(sample.data()), expected);
    const Sample<TypeParam> copy = sample;
    EXPECT_FALSE(copy.has_data());
  }
}

using LoanOfStrings = LoanOf<std::string>;

TEST_F(LoanOfStrings, KeepsTheReadersOwnStringsThroughMoves) {
  for (const char* value : {"a", "b", "c"}) { write("", value); }
  LoanedSamples<std::string> loan = read();
  const LoanedSample<std::string> second = loan[1];
  LoanedSamples<std::string> other = read();
  void** const others = lent_;
  LoanedSamples<std::string> moved(std::move(loan));
  EXPECT_TRUE(loan.empty());
  EXPECT_EQ(second.data(), "b");
  moved = std::move(other);  // gives the first loan back
  EXPECT_TRUE(other.empty());
  ASSERT_EQ(moved.length(), 3);
  for (int i = 0; i < 3; ++i) { EXPECT_EQ(moved[i].data().c_str(), *static_cast<char**>(others[i])); }

  const auto begin = moved.begin();
  EXPECT_EQ(moved.end() - begin, 3);
  EXPECT_EQ(begin[2].data(), std::string("c"));
  EXPECT_EQ((2 + begin)->data().size(), 1u);
  EXPECT_EQ(std::string((moved.end() - 1)->data()), "c");
  EXPECT_TRUE(begin < moved.end() && begin + 3 == moved.end());
  EXPECT_EQ(std::count_if(begin, moved.end(), [](const auto& sample) { return sample.data() != "b"; }), 2);
}

/// Loans that the reader has never made, so that it refuses each attempt to give one back, which is logged.
class RefusedLoan : public LoanOfStrings {
 protected:
  ~RefusedLoan() override { log_.clear(); }
  void lend_infos() { EXPECT_TRUE(infos_.loan_contiguous(info_array_, 3, 3)); }
  DDSStringDataReader* reader() { return DDSStringDataReader::narrow(reader_); }
  std::size_t attempts() const { return log_.lines().size(); }

  char texts_[3][2] = {"a", "b", "c"};
  char* strings_[3] = {texts_[0], texts_[1], texts_[2]};
  void* pointers_[3] = {&strings_[0], &strings_[1], &strings_[2]};
  DDS_SampleInfo info_array_[3];
  DDS_SampleInfoSeq infos_;
};

TEST_F(RefusedLoan, IsOfferedOnceByItsLastOwner) {
  lend_infos();
  {
    LoanedSamples<std::string> last;
    {
      auto loan = create_loaned_samples<std::string>(pointers_, 3, infos_, reader());
      LoanedSamples<std::string> moved(std::move(loan));
      last = std::move(moved);
    }
    EXPECT_EQ(attempts(), 0u);
    EXPECT_EQ(last.length(), 3);
    last.return_loan();
    EXPECT_TRUE(last.empty());
    last.return_loan();
  }
  EXPECT_THAT(log_.lines(),
              ::testing::ElementsAre(FailureLine("requestreply/BuiltinSamples", "LoanedSamples::return_loan",
                                                 support::filled(QVX_LOG_ANY_FAILURE_s, "return DataReader loan"))));
  static_assert(noexcept(LoanedSamples<std::string>(std::declval<LoanedSamples<std::string>>())));
  static_assert(std::is_nothrow_destructible_v<LoanedSamples<std::string>>);
}

TEST_F(RefusedLoan, IsNotOfferedWhenASequenceOwnsItsBuffer) {
  ASSERT_TRUE(infos_.ensure_length(3, 3));
  create_loaned_samples<std::string>(pointers_, 3, infos_, reader());
  lend_infos();
  create_loaned_samples<std::string>(pointers_, -1, infos_, reader());
  EXPECT_EQ(attempts(), 0u);
}

TEST_F(RefusedLoan, StaysTheCallersWithoutAReader) {
  lend_infos();
  EXPECT_EQ(message_of<zemtra::BadParameterException>(
                [this] { create_loaned_samples<std::string>(pointers_, 3, infos_, nullptr); }),
            report("LoanedSamples::move_construct_from_loans", DDS_LOG_BAD_PARAMETER_s, "reader"));
  EXPECT_EQ(infos_.length(), 3);
  EXPECT_EQ(&infos_[0], &info_array_[0]);
  EXPECT_EQ(attempts(), 1u);  // the failure itself
}

TEST(TypeTraits, RefuseWhatCannotBeSentOrRegistered) {
  const support::LogRecorder log;
  using Traits = dds_type_traits<std::string>;
  const std::string with_nul("a\0b", 3);
  EXPECT_THROW(Traits::Outgoing{with_nul}, zemtra::BadParameterException);
  EXPECT_THROW(Traits::register_type(nullptr, nullptr), zemtra::BadParameterException);
  EXPECT_EQ(log.lines().size(), 2u);
}

}  // namespace
}  // namespace requestreply_test
