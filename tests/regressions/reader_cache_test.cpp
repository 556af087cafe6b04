#include <gtest/gtest.h>

#include <cstdint>

#include "cache/reader_cache.hpp"
#include "condition/condition_core.hpp"
#include "types/builtin_plugins.hpp"

namespace {

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
