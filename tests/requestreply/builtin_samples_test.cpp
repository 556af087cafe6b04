#include <gmock/gmock.h>

#include "dds_behaviour/failing_allocation.hpp"
#include "requestreply/fixture.hpp"
#include "requestreply/memory_calls.hpp"
#include "requestreply/sample_data.hpp"

namespace requestreply_test {
namespace {

using zemtra::OctetsView;
using zemtra::Sample;
using zemtra::SampleRef;
using zemtra::WriteSample;
using zemtra::WriteSampleRef;

DDS_SampleIdentity_t identity(int number) { return {DDS_GUID_AUTO, {0, static_cast<std::uint32_t>(number)}}; }
void number(DDS_SampleInfo& info, int n) {
  info.valid_data = true;
  info.sample_identity = identity(n);
  info.related_sample_identity = identity(n + 1);
}
void number(DDS_WriteParams_t& info, int n) {
  info.identity = identity(n);
  info.related_sample_identity = identity(n + 1);
  EXPECT_TRUE(info.cookie.value.ensure_length(3, 3));  // so that copying it allocates
  for (int i = 0; i < 3; ++i) { info.cookie.value[i] = static_cast<DDS_Octet>(n); }
}

/// Whether the info is that of the number, in whole.
bool has_number(const DDS_SampleInfo& info, int n) {
  return info.sample_identity.sequence_number == identity(n).sequence_number && info.valid_data &&
         info.related_sample_identity.sequence_number == identity(n + 1).sequence_number;
}
bool has_number(const DDS_WriteParams_t& info, int n) {
  return info.identity.sequence_number == identity(n).sequence_number && info.cookie.value.length() == 3 &&
         info.cookie.value[2] == n;
}

template <class S>
struct Kind;
template <class T>
struct Kind<Sample<T>> {
  using Type = T;
  using Info = DDS_SampleInfo;
  using Ref = SampleRef<T>;
  static constexpr bool writes = false;
};
template <class T>
struct Kind<WriteSample<T>> {
  using Type = T;
  using Info = DDS_WriteParams_t;
  using Ref = WriteSampleRef<T>;
  static constexpr bool writes = true;
};

/// What a sample is made from, and can be told from another source by.
template <class S>
struct Source {
  using T = typename Kind<S>::Type;
  explicit Source(std::string text_of_value, int n, int drop = 0)
      : value(std::move(text_of_value)), data(data_of<T>(key, value, drop)) {
    number(info, n);
  }
  typename Kind<S>::Ref ref() {
    if constexpr (std::is_pointer_v<T>) {
      return {data, &info};
    } else {
      return {&data, &info};
    }
  }
  std::string key = "key", value;
  T data;
  typename Kind<S>::Info info;
};

template <class S>
struct Expected;
#define EXPECTED(sample, in_name, said, data_calls, release_calls, pointers_) \
  template <>                                                                 \
  struct Expected<sample> {                                                   \
    static constexpr const char* method = in_name;                            \
    static constexpr const char* message = said;                              \
    static constexpr const char* copying = data_calls;                        \
    static constexpr const char* releasing = release_calls;                   \
    static constexpr int pointers = pointers_;                                \
  }
EXPECTED(Sample<DDS_Octets>, nullptr, nullptr, "dup ", "free_octets ", 1);
EXPECTED(Sample<DDS_KeyedString>, "Sample<DDS::KeyedSting>::Sample", "DDS::KeyedString failed to allocate memory",
         "replace replace ", "free_string free_string ", 2);
EXPECTED(Sample<DDS_KeyedOctets>, "Sample<DDS::KeyedOctets>::Sample", "DDS::KeyedOctets failed to allocate memory",
         "replace dup ", "free_string free_octets ", 2);
EXPECTED(Sample<char*>, "Sample<char *>::Sample", "DDS_String_alloc failed to allocate memory", "replace ",
         "free_string ", 1);
EXPECTED(Sample<const char*>, "Sample<const char *>::Sample", "DDS_String_alloc failed to allocate memory", "replace ",
         "free_string ", 1);
EXPECTED(WriteSample<DDS_Octets>, "WriteSample<DDS::Octets>::WriteSample", "DDS::Octets failed to allocate memory",
         "dup ", "free_octets ", 1);
EXPECTED(WriteSample<DDS_KeyedString>, "WriteSample<DDS::KeyedSting>::WriteSample",
         "DDS::KeyedString failed to allocate memory", "replace replace ", "free_string free_string ", 2);
EXPECTED(WriteSample<DDS_KeyedOctets>, "WriteSample<DDS::KeyedOctets>::WriteSample",
         "DDS::KeyedOctets failed to allocate memory", "replace dup ", "free_string free_octets ", 2);
EXPECTED(WriteSample<char*>, "WriteSample<char *>::Sample", "DDS_String_alloc failed to allocate memory", "replace ",
         "free_string ", 1);
EXPECTED(WriteSample<const char*>, "WriteSample<const char *>::Sample", "DDS_String_alloc failed to allocate memory",
         "replace ", "free_string ", 1);
EXPECTED(WriteSample<std::string>, nullptr, nullptr, "", "", 0);
#undef EXPECTED

template <class S>
class BuiltinSample : public ::testing::Test {
 protected:
  using T = typename Kind<S>::Type;
  using E = Expected<S>;
  static constexpr bool is_string_pointer = std::is_pointer_v<T>;
  static constexpr bool writes = Kind<S>::writes;
  static constexpr bool is_read_octets = std::is_same_v<S, Sample<DDS_Octets>>;
  /// Whether an assignment takes what a construction refuses.
  static constexpr bool assigns_unchecked = !writes && (is_string_pointer || is_read_octets);

  static std::string construction() {
    const std::string info = "initialize copy ";
    return is_string_pointer ? info + E::copying : E::copying + info;
  }
  static std::string destruction() {
    const std::string info = "finalize ";
    return is_string_pointer ? E::releasing + info : info + E::releasing;
  }
  static std::string assignment() {
    if (is_read_octets) { return "free_octets dup copy "; }
    return construction() + "initialize copy copy copy finalize " + destruction();
  }
  support::LogRecorder log_;
};
using BuiltinSamples = ::testing::Types<Sample<DDS_Octets>, Sample<DDS_KeyedString>, Sample<DDS_KeyedOctets>,
                                        Sample<char*>, Sample<const char*>, WriteSample<DDS_Octets>,
                                        WriteSample<DDS_KeyedString>, WriteSample<DDS_KeyedOctets>, WriteSample<char*>,
                                        WriteSample<const char*>, WriteSample<std::string>>;
TYPED_TEST_SUITE(BuiltinSample, BuiltinSamples);

TYPED_TEST(BuiltinSample, IsMadeOfCopiesAndAssignedThemInAFixedOrder) {
  Source<TypeParam> source("value", 1), other("other", 5);
  const std::string before = text(source.data), other_before = text(other.data);
  MemoryCalls made;
  {
    TypeParam sample(source.ref());
    EXPECT_EQ(made.trace(), this->construction());
    source.key = source.value = "?????";
    number(source.info, 9);
    EXPECT_EQ(text(sample.data()), before);
    EXPECT_TRUE(has_number(sample.info(), 1));
    EXPECT_EQ(sample.related_identity().sequence_number, identity(2).sequence_number);

    if constexpr (!std::is_same_v<TypeParam, Sample<DDS_KeyedString>> &&
                  !std::is_same_v<TypeParam, Sample<DDS_KeyedOctets>>) {
      const std::size_t so_far = made.trace().size();
      sample = other.ref();
      EXPECT_EQ(made.trace().substr(so_far), this->assignment());
    } else {
      sample = other.ref();
    }
    EXPECT_EQ(text(sample.data()), other_before);
    EXPECT_TRUE(has_number(sample.info(), 5));
    sample = typename Kind<TypeParam>::Ref(sample);  // of itself
    EXPECT_EQ(text(sample.data()), other_before);
    EXPECT_TRUE(has_number(sample.info(), 5));
  }
  EXPECT_EQ(made.held(), 0);
}

TYPED_TEST(BuiltinSample, IsMadeFromAnEmptyValueButNotFromWhatLacksAPointer) {
  Source<TypeParam> empty("", 1);
  EXPECT_EQ(text(TypeParam(empty.ref()).data()), text(empty.data));
  for (int drop = 1; drop <= TestFixture::E::pointers; ++drop) {
    Source<TypeParam> source("value", 1), lacking("other", 5, drop);
    TypeParam target(source.ref());
    const MemoryCalls calls;
    const auto construct = [&] { const TypeParam sample(lacking.ref()); };
    const auto assign = [&] { target = lacking.ref(); };
    if (this->is_read_octets) {
      construct();
    } else {
      this->log_.clear();
      const std::string expected = report(TestFixture::E::method, DDS_LOG_BAD_PARAMETER_s, TestFixture::E::message);
      EXPECT_EQ(message_of<zemtra::OutOfResourcesException>(construct), expected);
      EXPECT_THAT(this->log_.lines(), ::testing::ElementsAre(FailureLine(
                                          "requestreply/Exception", TestFixture::E::method,
                                          support::filled(DDS_LOG_BAD_PARAMETER_s, TestFixture::E::message))));
      EXPECT_THAT(calls.trace(), ::testing::HasSubstr("finalize "));
    }
    EXPECT_EQ(calls.held(), 0);
    if (this->assigns_unchecked) {
      assign();
      EXPECT_EQ(text(target.data()), text(lacking.data));
      EXPECT_TRUE(has_number(target.info(), 5));
    } else {
      EXPECT_THROW(assign(), zemtra::OutOfResourcesException);
      EXPECT_EQ(text(target.data()), text(source.data));
      EXPECT_TRUE(has_number(target.info(), 1));
    }
    const TypeParam copy(target);  // null stays null
    EXPECT_EQ(text(copy.data()), text(target.data()));
  }
}

/// Runs an operation that changes `target` with each of its allocations failing in turn. Whether it throws or, where
/// nothing is checked, leaves a null pointer: nothing leaks; and a target that has thrown is as before.
template <class S, class Operation>
void fail_each_allocation(bool checked, Operation operation) {
  for (int nth = 1;; ++nth) {
    SCOPED_TRACE(nth);
    Source<S> source("value", 1), other("other", 5);
    const MemoryCalls around;
    int held_by_operation = 0;
    bool done = false;
    {
      const S origin(other.ref());
      S target(source.ref());
      const MemoryCalls failing(nth);
      bool threw = false;
      try {
        operation(target, other.ref(), origin);
      } catch (const zemtra::OutOfResourcesException&) { threw = true; }
      done = !failing.failed();
      held_by_operation = failing.held();
      EXPECT_EQ(threw, !done && checked);
      EXPECT_EQ(text(target.data()) == text(source.data), threw);
      EXPECT_TRUE(has_number(target.info(), threw ? 1 : 5));
    }
    EXPECT_EQ(around.held() + held_by_operation, 0);
    if (done) { return; }
    ASSERT_LT(nth, 20);
  }
}

TYPED_TEST(BuiltinSample, SurvivesEveryFailingAllocation) {
  const bool unchecked = this->assigns_unchecked;
  fail_each_allocation<TypeParam>(!unchecked, [](TypeParam& target, auto ref, const TypeParam&) { target = ref; });
  fail_each_allocation<TypeParam>(true, [](TypeParam& target, auto, const TypeParam& other) { target = other; });
  fail_each_allocation<TypeParam>(!this->is_read_octets, [](TypeParam& target, auto ref, const TypeParam&) {
    TypeParam made(ref);
    target.swap(made);
  });
}

TYPED_TEST(BuiltinSample, IsAValue) {
  Source<TypeParam> source("value", 1), other("other", 5);
  MemoryCalls calls;
  {
    TypeParam a(source.ref());
    TypeParam b(a);
    a = other.ref();
    EXPECT_EQ(text(b.data()), text(source.data));
    const int held = calls.held();
    TypeParam moved(std::move(a));
    EXPECT_EQ(text(moved.data()), text(other.data));
    EXPECT_TRUE(has_number(moved.info(), 5));
    const TypeParam empty;
    EXPECT_EQ(text(a.data()), text(empty.data()));
    EXPECT_EQ(a.identity().sequence_number, empty.identity().sequence_number);
    b = std::move(moved);
    std::swap(a, b);
    EXPECT_EQ(text(a.data()), text(other.data));
    EXPECT_LE(calls.held(), held);
    const TypeParam from_value(source.data, source.info);
    EXPECT_EQ(text(from_value.data()), text(source.data));
    EXPECT_TRUE(has_number(from_value.info(), 1));
    if constexpr (!TestFixture::writes) {
      EXPECT_FALSE(empty.has_data());
      EXPECT_TRUE(TypeParam(source.data).has_data());
    }
  }
  EXPECT_EQ(calls.held(), 0);
  static_assert(std::is_nothrow_move_constructible_v<TypeParam> && std::is_nothrow_move_assignable_v<TypeParam>);
}

TEST(OctetsSample, IsHarmlessWhenItsOctetsCouldNotBeCopied) {
  static_assert(sizeof(Sample<DDS_Octets>) == sizeof(DDS_Octets) + sizeof(DDS_SampleInfo));
  Source<Sample<DDS_Octets>> source("value", 1);
  Sample<DDS_Octets> sample;
  EXPECT_TRUE(OctetsView(sample.data()).empty());
  {
    const MemoryCalls failing(1);
    sample = source.ref();
  }
  EXPECT_EQ(text(sample.data()), "null 5");
  EXPECT_FALSE(sample.has_data());
  EXPECT_EQ(OctetsView(sample.data()).size(), 0u);
  sample = source.ref();
  EXPECT_TRUE(sample.has_data());
  // A part of the sample's own octets.
  DDS_Octets part{3, sample.data().value + 2};
  sample = SampleRef<DDS_Octets>(&part, &sample.info());
  EXPECT_EQ(text(sample.data()), "lue");
  EXPECT_EQ(OctetsView(sample.data()).size(), 3u);
  // A negative length is nobody's.
  part = {-1, part.value};
  part.value = octets(source.value);
  EXPECT_EQ(Sample<DDS_Octets>(SampleRef<DDS_Octets>(&part, &source.info)).data().value, nullptr);
  const DDS_Long& read_default = Sample<DDS_Octets>::DEFAULT_VALUE_SIZE;
  const DDS_Long& write_default = WriteSample<DDS_Octets>::DEFAULT_VALUE_SIZE;
  EXPECT_EQ(read_default, 255);
  EXPECT_EQ(write_default, 255);
}

TEST(StringWriteSample, KeepsItsPlaceInMemoryAndReportsExhaustionAsTheStringDoes) {
  struct Layout {
    bool flag;
    std::string data;
    std::uint64_t first_word;
    DDS_WriteParams_t info;
    std::uint64_t second_word;
  };
  static_assert(sizeof(Layout) == sizeof(WriteSample<std::string>));
  Source<WriteSample<std::string>> source("", 1), large(std::string(100, 'v'), 5);
  WriteSample<std::string> sample(source.ref());
  sample = source.ref();
  const auto& layout = reinterpret_cast<const Layout&>(sample);
  EXPECT_TRUE(layout.flag);
  EXPECT_EQ(&layout.data, &sample.data());
  EXPECT_EQ(layout.first_word, 0u);
  EXPECT_EQ(&layout.info, &sample.info());
  EXPECT_EQ(layout.second_word, 0u);
  {
    const behaviour::FailingAllocation failing(1);
    EXPECT_THROW(sample = large.ref(), std::bad_alloc);
  }
  EXPECT_EQ(sample.data(), "");
  EXPECT_TRUE(has_number(sample.info(), 1));
}

TEST(KeyedData, IsSwappedByItsPointers) {
  std::string key = "key", value = "value";
  const auto twice = [&](auto a, auto b) {
    const auto a_before = a, b_before = b;
    DDS::swap(a, b);
    EXPECT_TRUE(a.key == b_before.key && a.value == b_before.value && text(a) == text(b_before));
    EXPECT_TRUE(b.key == a_before.key && b.value == a_before.value && text(b) == text(a_before));
    DDS::swap(a, b);
    EXPECT_TRUE(a.key == a_before.key && a.value == a_before.value);
  };
  const MemoryCalls calls;
  twice(DDS_KeyedString{key.data(), value.data()}, DDS_KeyedString{nullptr, key.data()});
  twice(DDS_KeyedOctets{key.data(), 5, octets(value)}, DDS_KeyedOctets{nullptr, 3, octets(key)});
  EXPECT_EQ(calls.trace(), "");
}

TEST(Sample, OfAnyTypeIsAValue) {
  struct Point {
    int x = 0;
    std::string name;
  };
  Source<WriteSample<std::string>> params("", 5);
  DDS_SampleInfo info;
  number(info, 1);
  Point point{3, "three"};
  Sample<Point> sample(SampleRef<Point>(&point, &info));
  sample = SampleRef<Point>(sample);
  Sample<Point> moved(std::move(sample));
  EXPECT_TRUE(moved.has_data() && has_number(moved.info(), 1));
  EXPECT_EQ(moved.data().name, "three");
  EXPECT_FALSE(sample.has_data());
  WriteSample<Point> written(point, params.info);
  WriteSample<Point> copy;
  copy = WriteSampleRef<Point>(written);
  std::swap(copy, written);
  EXPECT_TRUE(has_number(copy.info(), 5) && has_number(written.info(), 5));
  EXPECT_EQ(copy.data().x, 3);
  MemoryCalls failing(1);
  EXPECT_THROW(copy = written, zemtra::OutOfResourcesException);
  EXPECT_TRUE(Sample<std::string>("text").has_data());
}

}  // namespace
}  // namespace requestreply_test
