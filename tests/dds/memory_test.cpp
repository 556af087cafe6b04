#include <dds/identity.hpp>
#include <dds/memory.hpp>
#include <dds/sample_info.hpp>
#include <dds/write_params.hpp>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>

#include "allocations.hpp"

namespace {

bool is_aligned(const void* buffer) { return reinterpret_cast<std::uintptr_t>(buffer) % 32 == 0; }

TEST(Strings, AreAlignedAndTerminatedWhateverTheirLength) {
  for (const std::size_t length : {0u, 1u, 31u, 32u, 33u, 100000u}) {
    const std::string text(length, 'x');
    char* fresh = DDS_String_alloc(length);
    char* copy = DDS_String_dup(text.c_str());
    ASSERT_TRUE(is_aligned(fresh) && is_aligned(copy));
    EXPECT_TRUE(std::all_of(fresh, fresh + length + 1, [](char c) { return c == '\0'; }));
    EXPECT_EQ(copy, text);
    DDS_String_free(fresh);
    DDS_String_free(copy);
  }
  EXPECT_EQ(DDS_String_dup(nullptr), nullptr);
  EXPECT_EQ(DDS_String_alloc(SIZE_MAX), nullptr);
  EXPECT_EQ(DDS_String_alloc(SIZE_MAX - 1), nullptr);
  DDS_String_free(nullptr);
}

TEST(Strings, ReplacingTakesASourceThatLiesInTheTargetAndLeavesNullWhenMemoryIsExhausted) {
  char* target = nullptr;
  EXPECT_EQ(DDS_String_replace(&target, "request topic"), target);
  EXPECT_STREQ(target, "request topic");
  EXPECT_EQ(DDS_String_replace(&target, target + 8), target);
  EXPECT_STREQ(target, "topic");
  const FailingAllocations failing(0);
  EXPECT_EQ(DDS_String_replace(&target, "new"), nullptr);
  EXPECT_EQ(target, nullptr);
  EXPECT_EQ(DDS_String_replace(&target, nullptr), nullptr);
  EXPECT_EQ(DDS_String_dup("text"), nullptr);
  EXPECT_EQ(DDS_String_alloc(1), nullptr);
}

TEST(OctetBuffers, AreAlignedZeroedAndCopiedWithEmbeddedZerosAndNullOnlyFromNull) {
  for (const std::size_t size : {0u, 1000u}) {
    DDS_Octet* zeros = DDS_OctetBuffer_alloc(size);
    ASSERT_TRUE(zeros != nullptr && is_aligned(zeros));
    EXPECT_TRUE(std::all_of(zeros, zeros + size, [](DDS_Octet octet) { return octet == 0; }));
    if (size > 0) { zeros[size - 1] = 7; }
    DDS_Octet* copy = DDS_OctetBuffer_dup(zeros, size);
    ASSERT_TRUE(copy != nullptr && is_aligned(copy));
    EXPECT_TRUE(std::equal(zeros, zeros + size, copy));
    DDS_OctetBuffer_free(copy);
    DDS_OctetBuffer_free(zeros);
  }
  EXPECT_EQ(DDS_OctetBuffer_dup(nullptr, 10), nullptr);
  EXPECT_EQ(DDS_OctetBuffer_alloc(SIZE_MAX), nullptr);
  DDS_OctetBuffer_free(nullptr);
}

bool same(const DDS_SampleIdentity_t& a, const DDS_SampleIdentity_t& b) {
  return DDS_GUID_equals(&a.writer_guid, &b.writer_guid) && a.sequence_number == b.sequence_number;
}

// Taken before `main`, in the way an application's own constants are.
const DDS_SampleIdentity_t early_auto = DDS_AUTO_SAMPLE_IDENTITY;
const DDS_GUID_t early_guid = DDS_GUID_AUTO;

TEST(Identity, TheConstantsHoldTheirValuesBeforeMain) {
  for (int i = 0; i < 16; ++i) {
    EXPECT_EQ(early_guid.value[i], 0xff);
    EXPECT_EQ(DDS_GUID_UNKNOWN.value[i], 0);
  }
  EXPECT_TRUE(same(early_auto, {DDS_GUID_AUTO, DDS_AUTO_SEQUENCE_NUMBER}));
  EXPECT_TRUE(same(DDS_UNKNOWN_SAMPLE_IDENTITY, {DDS_GUID_UNKNOWN, DDS::SEQUENCE_NUMBER_UNKNOWN}));
}

TEST(Identity, EveryOctetAndBothHalvesCount) {
  DDS_GUID_t guid;
  for (int i = 0; i < 16; ++i) {
    DDS_GUID_copy(&guid, &DDS_GUID_UNKNOWN);
    EXPECT_TRUE(DDS_GUID_equals(&guid, &DDS_GUID_UNKNOWN));
    guid.value[i] = 1;
    EXPECT_FALSE(DDS_GUID_equals(&guid, &DDS_GUID_UNKNOWN));
  }
  EXPECT_NE((DDS_SequenceNumber_t{0, 1}), (DDS_SequenceNumber_t{1, 1}));
  EXPECT_NE((DDS_SequenceNumber_t{0, 1}), (DDS_SequenceNumber_t{0, 2}));
  DDS_SampleIdentity_t identity = DDS_AUTO_SAMPLE_IDENTITY;
  DDS_SampleIdentity_t copy;
  DDS_SampleIdentity_t_copy(&copy, &identity);
  EXPECT_TRUE(same(copy, DDS_AUTO_SAMPLE_IDENTITY));
  DDS_SampleIdentity_t_initialize(&identity);
  EXPECT_TRUE(same(identity, DDS_UNKNOWN_SAMPLE_IDENTITY));
  DDS_SampleIdentity_t_finalize(&identity);
}

TEST(SampleInfo, InitializingForgetsWhatWasThere) {
  DDS_SampleInfo info, copy;
  info.sample_state = DDS_READ_SAMPLE_STATE;
  info.valid_data = true;
  info.sample_rank = 4;
  info.related_sample_identity.sequence_number = {1, 2};
  DDS_SampleInfo_copy(&copy, &info);
  DDS_SampleInfo_initialize(&info);
  EXPECT_TRUE(copy.valid_data && !info.valid_data);
  EXPECT_TRUE(copy.sample_rank == 4 && info.sample_rank == 0);
  EXPECT_EQ(copy.related_sample_identity.sequence_number, (DDS_SequenceNumber_t{1, 2}));
  EXPECT_TRUE(same(info.related_sample_identity, DDS_UNKNOWN_SAMPLE_IDENTITY));
  EXPECT_EQ(info.sample_state, DDS_NOT_READ_SAMPLE_STATE);
  DDS_SampleInfo_finalize(&info);
}

void fill(DDS_WriteParams_t& params) {
  params.identity.sequence_number = {3, 4};
  params.related_sample_identity.sequence_number = {5, 6};
  params.source_timestamp = {7, 8};
  params.handle = 9;
  ASSERT_TRUE(params.cookie.value.ensure_length(2, 2));
  params.cookie.value[0] = 10;
  params.cookie.value[1] = 11;
}

TEST(WriteParams, AreCopiedDeeplyOrNotAtAllAndInitializedToAskForAnAutomaticIdentity) {
  const int before = allocation_count();
  DDS_WriteParams_t params, copy;
  DDS_WriteParams_t_initialize(&params);
  ASSERT_EQ(DDS_WriteParams_t_copy(&copy, &params), DDS_RETCODE_OK);
  EXPECT_EQ(allocation_count(), before) << "only a cookie takes memory";
  fill(params);
  fail_each_allocation([&] { return DDS_WriteParams_t_copy(&copy, &params) == DDS_RETCODE_OK; },
                       [&] {
                         EXPECT_TRUE(same(copy.identity, DDS_AUTO_SAMPLE_IDENTITY));
                         EXPECT_EQ(copy.handle, DDS_HANDLE_NIL);
                         EXPECT_EQ(copy.cookie.value.length(), 0);
                       });
  DDS_WriteParams_t_initialize(&params);
  EXPECT_EQ(copy.identity.sequence_number, (DDS_SequenceNumber_t{3, 4}));
  EXPECT_EQ(copy.related_sample_identity.sequence_number, (DDS_SequenceNumber_t{5, 6}));
  EXPECT_EQ(copy.source_timestamp, (DDS_Time_t{7, 8}));
  EXPECT_EQ(copy.handle, 9u);
  ASSERT_EQ(copy.cookie.value.length(), 2);
  EXPECT_TRUE(copy.cookie.value[0] == 10 && copy.cookie.value[1] == 11);

  EXPECT_TRUE(same(params.identity, DDS_AUTO_SAMPLE_IDENTITY));
  EXPECT_TRUE(same(params.related_sample_identity, DDS_UNKNOWN_SAMPLE_IDENTITY));
  EXPECT_EQ(params.source_timestamp, DDS_TIME_INVALID);
  EXPECT_EQ(params.handle, DDS_HANDLE_NIL);
  EXPECT_EQ(params.cookie.value.maximum(), 0);
}

TEST(WriteParams, FinalizingTwiceIsHarmlessAndALentCookieIsLetGo) {
  DDS_Octet lent[2] = {1, 2};
  DDS_WriteParams_t params;
  ASSERT_TRUE(params.cookie.value.loan_contiguous(lent, 2, 2));
  DDS_WriteParams_t_finalize(&params);
  EXPECT_TRUE(params.cookie.value.has_ownership());
  DDS_WriteParams_t_finalize(&params);
  DDS_Cookie_t_initialize(&params.cookie);
  EXPECT_EQ(params.cookie.value.length(), 0);
}

}  // namespace
