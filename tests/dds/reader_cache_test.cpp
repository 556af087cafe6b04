#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <random>
#include <set>

#include "cache/reader_cache.hpp"
#include "condition/condition_core.hpp"
#include "types/builtin_plugins.hpp"

namespace {

std::size_t runs(const std::set<std::uint64_t>& keys) {
  std::size_t count = 0;
  for (const std::uint64_t key : keys) { count += key == 0 || keys.count(key - 1) == 0 ? 1u : 0u; }
  return count;
}

TEST(DiscardedKeys, AreASetThatKeepsOneIntervalForEachRunOfKeys) {
  constexpr std::uint64_t last = std::numeric_limits<std::uint64_t>::max();
  for (unsigned seed = 1; seed <= 20; ++seed) {
    std::mt19937_64 random(seed);
    const std::uint64_t bases[] = {0, 1000, last - 63};  // both ends of the range, and somewhere between
    dds::DiscardedKeys discarded;
    std::set<std::uint64_t> model;
    for (int i = 0; i < 300; ++i) {
      const std::uint64_t key = bases[random() % 3] + random() % 64;
      discarded.add(key);
      model.insert(key);
      ASSERT_EQ(discarded.interval_count(), runs(model));
    }
    for (const std::uint64_t base : bases) {
      for (std::uint64_t key = base; key - base < 64; ++key) {
        ASSERT_EQ(discarded.contains(key), model.count(key) > 0) << key;
      }
    }
    ASSERT_FALSE(discarded.contains(500));
  }
}

TEST(DiscardedKeys, InNearlyAscendingOrderStayOneInterval) {
  constexpr std::uint64_t count = 1000000, shuffled = 16;
  std::mt19937_64 random(1);
  dds::DiscardedKeys discarded;
  std::uint64_t block[shuffled];
  for (std::uint64_t first = 1; first <= count; first += shuffled) {
    for (std::uint64_t i = 0; i < shuffled; ++i) { block[i] = first + i; }
    std::shuffle(std::begin(block), std::end(block), random);
    for (const std::uint64_t key : block) {
      discarded.add(key);
      ASSERT_LE(discarded.interval_count(), shuffled / 2 + 1);
    }
    ASSERT_EQ(discarded.interval_count(), 1u);
  }
}

TEST(ReaderCache, RefusesAtCommitWhatWasDiscardedSinceItWasReserved) {
  auto* pool = new dds::MessagePool(dds::string_plugin);
  {
    const dds::ReaderCache::Limits one_sample{true, 1, 1, SIZE_MAX, SIZE_MAX};
    dds::ReaderCache cache(dds::string_plugin, one_sample, false);
    cache.enable_index();
    dds::RemoteWriter writer;
    dds::Notifications notifications;
    dds::Message* none[1];
    dds::ReaderCache::Refusal why = dds::ReaderCache::Refusal::none;
    const auto reserve = [&](std::uint32_t number) {
      dds::RefPtr<dds::Message> message = pool->acquire();
      message->related_identity.sequence_number = {0, number};
      return cache.reserve(message, writer, why);
    };

    dds::Entry* entry = reserve(7);
    ASSERT_NE(entry, nullptr);
    EXPECT_EQ(cache.discard(dds::CorrelationIndex::key({0, 7}), none, 1, notifications), 0u);
    EXPECT_FALSE(cache.commit(entry, notifications));
    EXPECT_FALSE(writer.registered);
    EXPECT_EQ(cache.discarded_count(), 1);
    EXPECT_EQ(reserve(7), nullptr);
    EXPECT_EQ(why, dds::ReaderCache::Refusal::discarded);

    entry = reserve(8);
    ASSERT_NE(entry, nullptr) << "the place is free again";
    EXPECT_TRUE(cache.commit(entry, notifications));
    EXPECT_EQ(cache.get({dds::kAnyState, nullptr}, 2, false, notifications)->count, 1u);
  }
  pool->close();
}

// Once there was no way from the index to such a sample.
TEST(ReaderCache, ASampleThatWasReservedBeforeTheIndexWasMadeIsFoundThroughTheIndex) {
  auto* pool = new dds::MessagePool(dds::string_plugin);
  {
    const dds::ReaderCache::Limits limits{true, 1, SIZE_MAX, SIZE_MAX, SIZE_MAX};
    dds::ReaderCache cache(dds::string_plugin, limits, false);
    dds::RefPtr<dds::Message> message = pool->acquire();
    message->related_identity.sequence_number = {0, 7};
    dds::RemoteWriter writer;
    dds::ReaderCache::Refusal why = dds::ReaderCache::Refusal::none;
    dds::Notifications notifications;

    dds::Entry* entry = cache.reserve(message, writer, why);
    ASSERT_NE(entry, nullptr);
    cache.enable_index();
    EXPECT_TRUE(cache.commit(entry, notifications));

    const auto owner = dds::RefPtr<dds::OwnerLock>::adopt(new dds::OwnerLock);
    auto* condition = new dds::ConditionCore(*owner);
    dds::Watch watch;
    watch.condition = condition;
    const std::uint64_t key = dds::CorrelationIndex::key({0, 7});
    cache.add_watch(watch, dds::kAnyState, &key, notifications);
    EXPECT_TRUE(condition->triggered());
    cache.remove_watch(watch);
    condition->unref();
  }
  pool->close();
}

}  // namespace
