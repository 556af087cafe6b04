#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <random>
#include <set>
#include <vector>

#include "cache/reader_cache.hpp"
#include "condition/condition_core.hpp"
#include "types/builtin_plugins.hpp"

namespace {

// In any order, at both ends of the range and somewhere between, also across the borders of blocks.
TEST(DiscardedKeys, AreASet) {
  constexpr std::uint64_t size = dds::DiscardedKeys::block_size, width = 2 * size;
  const std::uint64_t bases[] = {0, 5 * size, std::numeric_limits<std::uint64_t>::max() - width + 1};
  std::vector<std::uint64_t> keys;
  for (const std::uint64_t base : bases) {
    for (std::uint64_t i = 0; i < width; ++i) { keys.push_back(base + i); }
  }
  std::mt19937_64 random(1);
  std::shuffle(keys.begin(), keys.end(), random);
  dds::DiscardedKeys discarded;
  std::set<std::uint64_t> model;
  for (const std::uint64_t key : keys) {
    ASSERT_FALSE(discarded.contains(key));
    discarded.add(key);
    discarded.add(key);
    model.insert(key);
    const std::uint64_t other = keys[random() % keys.size()];
    ASSERT_EQ(discarded.contains(other), model.count(other) > 0) << other;
  }
  EXPECT_FALSE(discarded.contains(3 * size));
  for (const std::uint64_t key : keys) { ASSERT_TRUE(discarded.contains(key)) << key; }
  EXPECT_EQ(discarded.part_count(), 7u) << "three runs of full blocks, and four blocks that begin or end beyond";
}

TEST(DiscardedKeys, TakeNextToNothingInOrderAndABitEachWithGaps) {
  constexpr std::uint64_t count = 1000000;
  dds::DiscardedKeys all, every_other;
  for (std::uint64_t key = 1; key <= count; ++key) {
    all.add(key);
    ASSERT_LE(all.part_count(), 2u);
    if (key % 2 == 0) { every_other.add(key); }
  }
  EXPECT_LE(every_other.part_count(), count / dds::DiscardedKeys::block_size + 1);
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
    const auto reserve = [&](std::uint32_t number, dds::MessageKind kind = dds::MessageKind::data) {
      dds::RefPtr<dds::Message> message = pool->acquire();
      message->kind = kind;
      message->related_identity.sequence_number = {0, number};
      return cache.reserve(message, writer, why);
    };

    dds::Entry* entry = reserve(7);
    ASSERT_NE(entry, nullptr);
    EXPECT_EQ(cache.discard(dds::CorrelationIndex::key({0, 7}), none, 1, notifications), 0u);
    EXPECT_FALSE(cache.commit(entry, notifications));
    EXPECT_FALSE(writer.registration.in_force);
    EXPECT_EQ(cache.discarded_count(), 1);
    EXPECT_EQ(reserve(7), nullptr);
    EXPECT_EQ(why, dds::ReaderCache::Refusal::discarded);

    entry = reserve(8);
    ASSERT_NE(entry, nullptr) << "the place is free again";
    EXPECT_TRUE(cache.commit(entry, notifications));
    EXPECT_EQ(reserve(9), nullptr);
    EXPECT_EQ(why, dds::ReaderCache::Refusal::samples);

    entry = reserve(7, dds::MessageKind::dispose);
    ASSERT_NE(entry, nullptr) << "what only takes effect needs no place";
    EXPECT_FALSE(cache.commit(entry, notifications));
    EXPECT_EQ(cache.instances().find("")->state, dds::InstanceState::disposed);
    EXPECT_EQ(cache.discarded_count(), 2);
  }
  pool->close();
}

// Any of them may come to nothing, and the writer may have unregistered the instance before another takes effect.
TEST(ReaderCache, AWriterIsOneOfAnInstancesFromItsFirstSampleThatTakesEffect) {
  for (const DDS_TypePlugin& type : {dds::string_plugin, dds::keyed_string_plugin}) {
    auto* pool = new dds::MessagePool(type);
    {
      const dds::ReaderCache::Limits limits{true, 1, SIZE_MAX, SIZE_MAX, SIZE_MAX};
      dds::ReaderCache cache(type, limits, false);
      dds::RemoteWriter writer, other;
      dds::Notifications notifications;
      const auto reserve = [&](dds::RemoteWriter& from, dds::MessageKind kind = dds::MessageKind::data) {
        dds::RefPtr<dds::Message> message = pool->acquire();
        message->kind = kind;
        message->key = type.key == nullptr ? "" : "key";
        dds::ReaderCache::Refusal why = dds::ReaderCache::Refusal::none;
        return cache.reserve(message, from, why);
      };
      const auto unregister = [&](dds::RemoteWriter& from) {
        cache.commit(reserve(from, dds::MessageKind::unregister), notifications);
      };
      const auto instance = [&] { return cache.instances().find(type.key == nullptr ? "" : "key"); };

      dds::Entry* first = reserve(writer);
      dds::Entry* second = reserve(writer);
      EXPECT_EQ(instance()->writer_count, 0u);
      cache.cancel(first);
      EXPECT_TRUE(cache.commit(second, notifications));
      EXPECT_EQ(instance()->writer_count, 1u);
      unregister(writer);
      EXPECT_EQ(instance()->state, dds::InstanceState::no_writers);

      cache.commit(reserve(other), notifications);
      first = reserve(writer);
      second = reserve(writer);
      EXPECT_TRUE(cache.commit(first, notifications));
      EXPECT_EQ(instance()->writer_count, 2u);
      unregister(writer);
      cache.cancel(second);
      EXPECT_EQ(instance()->writer_count, 1u);
      first = reserve(writer);
      unregister(other);
      EXPECT_EQ(instance()->state, dds::InstanceState::no_writers) << "who may yet write it is no writer of it";
      EXPECT_TRUE(cache.commit(first, notifications));
      EXPECT_EQ(instance()->state, dds::InstanceState::alive);
      EXPECT_EQ(instance()->writer_count, 1u);
    }
    pool->close();
  }
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
