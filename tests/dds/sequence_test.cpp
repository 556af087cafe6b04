#include <dds/sequence.hpp>

#include <gtest/gtest.h>

#include <initializer_list>
#include <memory>
#include <new>
#include <sstream>
#include <string>
#include <utility>

#include <dds/builtin_types.hpp>

#include "allocations.hpp"

namespace {

using LongSeq = DDSSequence<int>;

template <class Seq, class Value, class Set>
Seq sequence_of(std::initializer_list<Value> values, Set set) {
  Seq sequence(static_cast<int>(values.size()));
  EXPECT_TRUE(sequence.length(static_cast<int>(values.size())));
  int i = 0;
  for (const Value value : values) { set(sequence[i++], value); }
  return sequence;
}
LongSeq longs(std::initializer_list<int> values) {
  return sequence_of<LongSeq>(values, [](int& element, int value) { element = value; });
}
DDS_StringSeq strings(std::initializer_list<const char*> values) {
  return sequence_of<DDS_StringSeq>(values,
                                    [](char*& element, const char* value) { DDS_String_replace(&element, value); });
}

/// As one text, each element with a blank behind it.
template <class Seq>
std::string text(const Seq& sequence) {
  std::ostringstream all;
  for (int i = 0; i < sequence.length(); ++i) {
    if constexpr (std::is_same_v<Seq, DDS_StringSeq>) {
      all << (sequence[i] == nullptr ? "null" : sequence[i]) << ' ';
    } else {
      all << sequence[i] << ' ';
    }
  }
  return all.str();
}
bool is_empty_and_owned(const LongSeq& sequence) {
  return sequence.length() == 0 && sequence.maximum() == 0 && sequence.has_ownership() &&
         sequence.get_contiguous_buffer() == nullptr && sequence.get_discontiguous_buffer() == nullptr;
}

TEST(Sequence, HasALengthWithinItsMaximumWhichKeepsTheElementsThatFit) {
  EXPECT_TRUE(is_empty_and_owned(LongSeq()));
  LongSeq sequence(3);
  EXPECT_EQ(sequence.length(), 0);
  EXPECT_TRUE(sequence.length(3));
  EXPECT_EQ(text(sequence), "0 0 0 ");
  EXPECT_FALSE(sequence.length(4) || sequence.length(-1));
  sequence = longs({1, 2, 3});
  EXPECT_TRUE(sequence.maximum(5));
  EXPECT_EQ(text(sequence), "1 2 3 ");
  EXPECT_TRUE(sequence.maximum(2));
  EXPECT_EQ(text(sequence), "1 2 ");
  EXPECT_FALSE(sequence.maximum(-1));
  EXPECT_EQ(sequence.maximum(), 2);
  EXPECT_TRUE(sequence.maximum(0) && is_empty_and_owned(sequence));
}

TEST(Sequence, EnsuringALengthGrowsOnlyWhenItMust) {
  LongSeq sequence = longs({1, 2, 3});
  const int* buffer = sequence.get_contiguous_buffer();
  EXPECT_TRUE(sequence.ensure_length(1, 8));
  EXPECT_EQ(sequence.maximum(), 3);
  EXPECT_EQ(sequence.get_contiguous_buffer(), buffer);
  EXPECT_FALSE(sequence.ensure_length(9, 8));
  EXPECT_FALSE(sequence.ensure_length(-1, 8));
  EXPECT_EQ(text(sequence), "1 ");
  EXPECT_TRUE(sequence.ensure_length(5, 8));
  EXPECT_EQ(sequence.maximum(), 8);
  EXPECT_EQ(sequence[0], 1);
}

TEST(Sequence, IsCopiedDeeplyAndMovedWithItsBuffer) {
  DDS_StringSeq source = strings({"a", nullptr, "c"});
  const DDS_StringSeq copy(source);
  DDS_String_replace(&source[0], "changed");
  EXPECT_EQ(text(copy), "a null c ");
  EXPECT_TRUE(copy.has_ownership());
  DDS_StringSeq assigned = strings({"former"});
  assigned = copy;
  const DDS_StringSeq& same = assigned;
  assigned = same;
  EXPECT_EQ(text(assigned), "a null c ");

  LongSeq numbers = longs({1, 2});
  const int* buffer = numbers.get_contiguous_buffer();
  LongSeq moved(std::move(numbers)), target = longs({9});
  EXPECT_EQ(moved.get_contiguous_buffer(), buffer);
  EXPECT_TRUE(is_empty_and_owned(numbers));
  target = std::move(moved);
  EXPECT_EQ(target.get_contiguous_buffer(), buffer);
  EXPECT_TRUE(is_empty_and_owned(moved));
  LongSeq& itself = target;
  target = std::move(itself);
  EXPECT_EQ(text(target), "1 2 ");
}

TEST(Sequence, AssigningReusesTheMemoryThatIsThere) {
  LongSeq sequence = longs({1, 2, 3});
  const int* buffer = sequence.get_contiguous_buffer();
  const LongSeq shorter = longs({7, 8});
  const int before = allocation_count();
  EXPECT_TRUE(sequence.assign(shorter));
  EXPECT_TRUE(sequence.assign(sequence));
  EXPECT_EQ(allocation_count(), before);
  EXPECT_EQ(text(sequence), "7 8 ");
  EXPECT_EQ(sequence.get_contiguous_buffer(), buffer);
  EXPECT_EQ(sequence.maximum(), 3);
  EXPECT_TRUE(sequence.assign(longs({1, 2, 3, 4})));
  EXPECT_EQ(text(sequence), "1 2 3 4 ");
}

TEST(SequenceLoan, AContiguousLoanIsReferredToAndNeverReleased) {
  int lent[3] = {1, 2, 3};
  LongSeq sequence;
  ASSERT_TRUE(sequence.loan_contiguous(lent, 2, 3));
  EXPECT_FALSE(sequence.has_ownership());
  EXPECT_EQ(sequence.get_contiguous_buffer(), lent);
  sequence[1] = 20;
  EXPECT_EQ(lent[1], 20);
  EXPECT_TRUE(sequence.length(3));
  EXPECT_FALSE(sequence.maximum(4)) << "a lent buffer cannot grow";
  EXPECT_FALSE(sequence.ensure_length(4, 4));
  EXPECT_EQ(text(sequence), "1 20 3 ");
  EXPECT_TRUE(sequence.unloan());
  EXPECT_TRUE(sequence.has_ownership());
  EXPECT_EQ(sequence.maximum(), 0);
  EXPECT_FALSE(sequence.unloan()) << "there is no loan any more";
  EXPECT_EQ(lent[1], 20);
}

TEST(SequenceLoan, ADiscontiguousLoanIsReadAndWrittenThroughItsPointers) {
  int first = 1, second = 2;
  int* lent[2] = {&second, &first};
  LongSeq sequence;
  ASSERT_TRUE(sequence.loan_discontiguous(lent, 2, 2));
  EXPECT_EQ(text(sequence), "2 1 ");
  EXPECT_EQ(sequence.get_discontiguous_buffer(), lent);
  EXPECT_EQ(sequence.get_contiguous_buffer(), nullptr);
  LongSeq copy(sequence);
  EXPECT_TRUE(copy.has_ownership());
  EXPECT_EQ(text(copy), "2 1 ");
  LongSeq moved(std::move(sequence));
  EXPECT_EQ(moved.get_discontiguous_buffer(), lent);
  EXPECT_TRUE(is_empty_and_owned(sequence));
  EXPECT_FALSE(moved.maximum(0));
  EXPECT_TRUE(moved.assign(longs({5, 6})));
  EXPECT_TRUE(second == 5 && first == 6);
  EXPECT_FALSE(moved.assign(longs({7, 8, 9})));
  EXPECT_EQ(text(moved), "5 6 ");
  EXPECT_FALSE(moved.has_ownership());
}

TEST(SequenceLoan, IsOnlyForAnEmptyOwnedSequenceAndForSensibleLengths) {
  int lent[2] = {1, 2};
  int* pointers[1] = {lent};
  LongSeq sequence;
  EXPECT_FALSE(sequence.loan_contiguous(lent, 3, 2));
  EXPECT_FALSE(sequence.loan_contiguous(lent, -1, 2));
  EXPECT_FALSE(sequence.loan_contiguous(nullptr, 0, 1));
  EXPECT_FALSE(sequence.loan_discontiguous(nullptr, 0, 1));
  LongSeq occupied(1);
  EXPECT_FALSE(occupied.loan_contiguous(lent, 2, 2));
  EXPECT_TRUE(sequence.loan_contiguous(lent, 2, 2));
  EXPECT_FALSE(sequence.loan_discontiguous(pointers, 1, 1)) << "it holds a loan already";
  EXPECT_EQ(text(sequence), "1 2 ");
}

TEST(SequenceMemory, ExhaustedMemoryIsReportedAndLeavesWhatWasThere) {
  LongSeq sequence = longs({1, 2});
  {
    const FailingAllocations failing(0);
    EXPECT_FALSE(sequence.maximum(100));
    EXPECT_FALSE(sequence.ensure_length(3, 100));
    EXPECT_THROW(LongSeq(4), std::bad_alloc);
    EXPECT_THROW(LongSeq{sequence}, std::bad_alloc);
  }
  EXPECT_EQ(text(sequence), "1 2 ");
  EXPECT_EQ(sequence.maximum(), 2);
}

/// Assigns in both ways with every allocation failing once.
template <class Seq>
void fail_each_copy(const Seq& source, Seq former) {
  const int length = former.length();
  const auto assign = [&] {
    try {
      former = source;
      return true;
    } catch (const std::bad_alloc&) { return false; }
  };
  fail_each_allocation(assign, [&] { EXPECT_EQ(former.length(), length); });
  Seq target;
  fail_each_allocation([&] { return target.assign(source); }, [&] { EXPECT_EQ(target.length(), 0); });
  EXPECT_EQ(former.length(), source.length());
  EXPECT_EQ(target.length(), source.length());
}

TEST(SequenceMemory, AFailedCopyOfElementsWithMemoryLosesNothing) {
  fail_each_copy(strings({"a", "b", "c"}), strings({"former"}));
  DDS_PropertySeq properties(2);
  ASSERT_TRUE(properties.length(2));
  for (int i = 0; i < 2; ++i) {
    properties[i].name = DDS_String_dup("name");
    properties[i].value = DDS_String_dup("value");
  }
  fail_each_copy(properties, DDS_PropertySeq());
}

TEST(BuiltinSequence, OwnsItsElementsDeeply) {
  char key[] = "key";
  char value[] = "value";
  DDS_Octet octets[2] = {1, 2};
  const auto copy_of = [](auto sequence, auto element) {
    decltype(element)* lent[1] = {&element};
    EXPECT_TRUE(sequence.loan_discontiguous(lent, 1, 1));
    auto copy = std::make_unique<decltype(sequence)>();
    EXPECT_TRUE(copy->assign(sequence));
    return copy;
  };
  const auto string_copy = copy_of(DDS_KeyedStringSeq(), DDS_KeyedString{key, value});
  const auto keyed_copy = copy_of(DDS_KeyedOctetsSeq(), DDS_KeyedOctets{key, 2, octets});
  const auto octets_copy = copy_of(DDS_OctetsSeq(), DDS_Octets{2, octets});
  key[0] = value[0] = 'X';
  octets[0] = 9;
  EXPECT_STREQ((*string_copy)[0].key, "key");
  EXPECT_STREQ((*string_copy)[0].value, "value");
  EXPECT_STREQ((*keyed_copy)[0].key, "key");
  EXPECT_EQ((*keyed_copy)[0].length, 2);
  EXPECT_EQ((*keyed_copy)[0].value[0], 1);
  EXPECT_EQ((*octets_copy)[0].length, 2);
  EXPECT_EQ((*octets_copy)[0].value[0], 1);
}

TEST(BuiltinSequence, AnElementThatCannotBeCopiedLeavesTheFormerOne) {
  char key[] = "key";
  char value[] = "value";
  DDS_KeyedString source{key, value};
  DDS_KeyedString target;
  fail_each_allocation([&] { return DDSBuiltinElement::copy(target, source); },
                       [&] { EXPECT_EQ(target.key, nullptr); });
  source.value = nullptr;
  EXPECT_TRUE(DDSBuiltinElement::copy(target, source));
  EXPECT_STREQ(target.key, "key");
  EXPECT_EQ(target.value, nullptr);
  DDSBuiltinElement::finalize(target);
  EXPECT_EQ(target.key, nullptr);

  DDS_Octets octets;
  EXPECT_FALSE(DDSBuiltinElement::copy(octets, DDS_Octets{-1, nullptr}));
  EXPECT_TRUE(DDSBuiltinElement::copy(octets, DDS_Octets{0, nullptr}));
}

}  // namespace
