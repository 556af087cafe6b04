#include <dds/sequence.hpp>

#include <gtest/gtest.h>

#include <initializer_list>
#include <limits>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include <dds/builtin_types.hpp>

#include "allocations.hpp"

namespace {

using LongSeq = DDSSequence<int>;

template <class Seq>
Seq sequence_of(std::initializer_list<int> values) {
  Seq sequence(static_cast<int>(values.size()));
  EXPECT_TRUE(sequence.length(static_cast<int>(values.size())));
  int i = 0;
  for (const int value : values) { sequence[i++] = value; }
  return sequence;
}
LongSeq longs(std::initializer_list<int> values) { return sequence_of<LongSeq>(values); }

DDS_StringSeq strings(std::initializer_list<const char*> values) {
  DDS_StringSeq sequence(static_cast<int>(values.size()));
  EXPECT_TRUE(sequence.length(static_cast<int>(values.size())));
  int i = 0;
  for (const char* value : values) { DDS_String_replace(&sequence[i++], value); }
  return sequence;
}

std::vector<int> values(const LongSeq& sequence) {
  std::vector<int> result;
  for (int i = 0; i < sequence.length(); ++i) { result.push_back(sequence[i]); }
  return result;
}

std::vector<std::string> values(const DDS_StringSeq& sequence) {
  std::vector<std::string> result;
  for (int i = 0; i < sequence.length(); ++i) { result.push_back(sequence[i] == nullptr ? "null" : sequence[i]); }
  return result;
}

TEST(Sequence, IsEmptyAndOwnsItsBufferAtFirst) {
  const LongSeq sequence;
  EXPECT_EQ(sequence.length(), 0);
  EXPECT_EQ(sequence.maximum(), 0);
  EXPECT_TRUE(sequence.has_ownership());
  EXPECT_EQ(sequence.get_contiguous_buffer(), nullptr);
  EXPECT_EQ(sequence.get_discontiguous_buffer(), nullptr);
}

TEST(Sequence, TheLengthStaysWithinTheMaximum) {
  LongSeq sequence(3);
  EXPECT_EQ(sequence.length(), 0);
  EXPECT_TRUE(sequence.length(3));
  EXPECT_EQ(values(sequence), (std::vector<int>{0, 0, 0}));
  EXPECT_FALSE(sequence.length(4));
  EXPECT_FALSE(sequence.length(-1));
  EXPECT_EQ(sequence.length(), 3);
}

TEST(Sequence, ChangingTheMaximumKeepsTheElementsThatFit) {
  LongSeq sequence = longs({1, 2, 3});
  EXPECT_TRUE(sequence.maximum(5));
  EXPECT_EQ(values(sequence), (std::vector<int>{1, 2, 3}));
  EXPECT_TRUE(sequence.maximum(2));
  EXPECT_EQ(values(sequence), (std::vector<int>{1, 2}));
  EXPECT_FALSE(sequence.maximum(-1));
  EXPECT_EQ(sequence.maximum(), 2);
  EXPECT_TRUE(sequence.maximum(0));
  EXPECT_EQ(sequence.get_contiguous_buffer(), nullptr);
}

TEST(Sequence, EnsuringALengthGrowsOnlyWhenItMust) {
  LongSeq sequence = longs({1, 2, 3});
  const int* buffer = sequence.get_contiguous_buffer();
  EXPECT_TRUE(sequence.ensure_length(1, 8));
  EXPECT_EQ(sequence.maximum(), 3);
  EXPECT_EQ(sequence.get_contiguous_buffer(), buffer);
  EXPECT_FALSE(sequence.ensure_length(9, 8));
  EXPECT_FALSE(sequence.ensure_length(-1, 8));
  EXPECT_EQ(values(sequence), (std::vector<int>{1}));
  EXPECT_TRUE(sequence.ensure_length(5, 8));
  EXPECT_EQ(sequence.maximum(), 8);
  EXPECT_EQ(sequence[0], 1);
}

TEST(Sequence, ACopyIsDeepAndOwned) {
  DDS_StringSeq source = strings({"a", nullptr, "c"});
  const DDS_StringSeq copy(source);
  DDS_String_replace(&source[0], "changed");
  EXPECT_EQ(values(copy), (std::vector<std::string>{"a", "null", "c"}));
  EXPECT_TRUE(copy.has_ownership());
  DDS_StringSeq assigned = strings({"former"});
  assigned = copy;
  const DDS_StringSeq& same = assigned;
  assigned = same;
  EXPECT_EQ(values(assigned), (std::vector<std::string>{"a", "null", "c"}));
}

TEST(Sequence, MovingHandsTheBufferOverAndLeavesAnEmptySequence) {
  LongSeq source = longs({1, 2});
  const int* buffer = source.get_contiguous_buffer();
  LongSeq moved(std::move(source));
  EXPECT_EQ(moved.get_contiguous_buffer(), buffer);
  EXPECT_EQ(source.maximum(), 0);
  LongSeq assigned = longs({9});
  assigned = std::move(moved);
  EXPECT_EQ(assigned.get_contiguous_buffer(), buffer);
  EXPECT_EQ(moved.maximum(), 0);
  LongSeq& same = assigned;
  assigned = std::move(same);
  EXPECT_EQ(values(assigned), (std::vector<int>{1, 2}));
}

TEST(Sequence, AssigningReusesTheMemoryThatIsThere) {
  LongSeq sequence = longs({1, 2, 3});
  const int* buffer = sequence.get_contiguous_buffer();
  const LongSeq shorter = longs({7, 8});
  const int before = allocation_count();
  EXPECT_TRUE(sequence.assign(shorter));
  EXPECT_TRUE(sequence.assign(sequence));
  EXPECT_EQ(allocation_count(), before);
  EXPECT_EQ(values(sequence), (std::vector<int>{7, 8}));
  EXPECT_EQ(sequence.get_contiguous_buffer(), buffer);
  EXPECT_EQ(sequence.maximum(), 3);
  EXPECT_TRUE(sequence.assign(longs({1, 2, 3, 4})));
  EXPECT_EQ(values(sequence), (std::vector<int>{1, 2, 3, 4}));
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
  EXPECT_EQ(values(sequence), (std::vector<int>{1, 20, 3}));
  EXPECT_TRUE(sequence.unloan());
  EXPECT_TRUE(sequence.has_ownership());
  EXPECT_EQ(sequence.maximum(), 0);
  EXPECT_FALSE(sequence.unloan()) << "there is no loan any more";
  EXPECT_EQ(lent[1], 20);
}

TEST(SequenceLoan, ADiscontiguousLoanIsReadThroughItsPointers) {
  int first = 1;
  int second = 2;
  int* lent[2] = {&second, &first};
  LongSeq sequence;
  ASSERT_TRUE(sequence.loan_discontiguous(lent, 2, 2));
  EXPECT_EQ(values(sequence), (std::vector<int>{2, 1}));
  EXPECT_EQ(sequence.get_discontiguous_buffer(), lent);
  EXPECT_EQ(sequence.get_contiguous_buffer(), nullptr);
  LongSeq copy(sequence);
  EXPECT_TRUE(copy.has_ownership());
  EXPECT_EQ(values(copy), (std::vector<int>{2, 1}));
  LongSeq moved(std::move(sequence));
  EXPECT_EQ(moved.get_discontiguous_buffer(), lent);
  EXPECT_TRUE(sequence.has_ownership());
  EXPECT_FALSE(moved.maximum(0));
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
  EXPECT_EQ(values(sequence), (std::vector<int>{1, 2}));
}

TEST(SequenceLoan, AssigningWritesThroughALoanThatIsLargeEnough) {
  int first = 0;
  int second = 0;
  int* lent[2] = {&first, &second};
  LongSeq sequence;
  ASSERT_TRUE(sequence.loan_discontiguous(lent, 0, 2));
  EXPECT_TRUE(sequence.assign(longs({5, 6})));
  EXPECT_EQ(first, 5);
  EXPECT_EQ(second, 6);
  EXPECT_FALSE(sequence.assign(longs({7, 8, 9})));
  EXPECT_EQ(values(sequence), (std::vector<int>{5, 6}));
  EXPECT_FALSE(sequence.has_ownership());
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
  EXPECT_EQ(values(sequence), (std::vector<int>{1, 2}));
  EXPECT_EQ(sequence.maximum(), 2);
}

TEST(SequenceMemory, AFailedCopyOfElementsWithMemoryLosesNothing) {
  const DDS_StringSeq source = strings({"a", "b", "c"});
  DDS_StringSeq assigned = strings({"former"});
  const auto assign = [&] {
    try {
      assigned = source;
      return true;
    } catch (const std::bad_alloc&) { return false; }
  };
  fail_each_allocation(assign, [&] { EXPECT_EQ(values(assigned), (std::vector<std::string>{"former"})); });
  EXPECT_EQ(values(assigned), (std::vector<std::string>{"a", "b", "c"}));

  DDS_StringSeq target;
  fail_each_allocation([&] { return target.assign(source); }, [&] { EXPECT_EQ(target.length(), 0); });
  EXPECT_EQ(values(target), (std::vector<std::string>{"a", "b", "c"}));
}

TEST(SequenceMemory, AFailedCopyOfPropertiesLosesNothing) {
  DDS_PropertySeq source(2);
  ASSERT_TRUE(source.length(2));
  for (int i = 0; i < 2; ++i) {
    source[i].name = DDS_String_dup("name");
    source[i].value = DDS_String_dup("value");
  }
  DDS_PropertySeq target;
  fail_each_allocation([&] { return target.assign(source); }, [&] { EXPECT_EQ(target.length(), 0); });
  EXPECT_STREQ(target[1].value, "value");
  const auto copy = [&] {
    try {
      const DDS_PropertySeq copied(source);
      return copied.length() == 2;
    } catch (const std::bad_alloc&) { return false; }
  };
  fail_each_allocation(copy, [] {});
}

TEST(BuiltinSequence, OwnsItsElementsDeeply) {
  char key[] = "key";
  char value[] = "value";
  DDS_Octet octets[2] = {1, 2};
  DDS_KeyedString keyed_string{key, value};
  DDS_KeyedString* keyed_strings[1] = {&keyed_string};
  DDS_KeyedOctets keyed_octet{key, 2, octets};
  DDS_KeyedOctets* keyed_octets[1] = {&keyed_octet};
  DDS_Octets octet{2, octets};
  DDS_Octets* octet_pointers[1] = {&octet};
  DDS_KeyedStringSeq lent_strings;
  DDS_KeyedOctetsSeq lent_keyed;
  DDS_OctetsSeq lent_octets;
  ASSERT_TRUE(lent_strings.loan_discontiguous(keyed_strings, 1, 1));
  ASSERT_TRUE(lent_keyed.loan_discontiguous(keyed_octets, 1, 1));
  ASSERT_TRUE(lent_octets.loan_discontiguous(octet_pointers, 1, 1));

  const DDS_KeyedStringSeq string_copy(lent_strings);
  const DDS_KeyedOctetsSeq keyed_copy(lent_keyed);
  const DDS_OctetsSeq octets_copy(lent_octets);
  key[0] = value[0] = 'X';
  octets[0] = 9;
  EXPECT_STREQ(string_copy[0].key, "key");
  EXPECT_STREQ(string_copy[0].value, "value");
  EXPECT_STREQ(keyed_copy[0].key, "key");
  EXPECT_EQ(keyed_copy[0].length, 2);
  EXPECT_EQ(keyed_copy[0].value[0], 1);
  EXPECT_EQ(octets_copy[0].length, 2);
  EXPECT_EQ(octets_copy[0].value[0], 1);
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
