#include <dds/fast_buffer_pool.hpp>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <memory>
#include <set>
#include <thread>
#include <vector>

#include "allocations.hpp"
#include "recorded_log.hpp"

namespace {

/// What the callbacks of a pool have done.
struct Objects {
  std::atomic<int> alive{0};
  std::atomic<int> may_be_built{1000000};
};

int build(void* buffer, void* param) {
  auto* objects = static_cast<Objects*>(param);
  if (objects->may_be_built-- <= 0) { return 0; }
  *static_cast<int*>(buffer) = 0;
  ++objects->alive;
  return 1;
}

void destroy(void* /*buffer*/, void* param) { --static_cast<Objects*>(param)->alive; }

struct Delete {
  void operator()(MORAFastBufferPool* pool) const { MORAFastBufferPool_delete(pool); }
};
using Pool = std::unique_ptr<MORAFastBufferPool, Delete>;

class FastBufferPool : public testing::Test {
 protected:
  Pool make(const MORAFastBufferPoolProperty& property, std::size_t size = 24, std::size_t alignment = 8,
            int initialize_once = 1) {
    return Pool(MORAFastBufferPool_newWithParams(size, alignment, &build, &objects_, &destroy, &objects_, &property,
                                                 "test pool", initialize_once));
  }
  static MORAFastBufferPoolProperty growing(int initial, int maximal, int increment) {
    return {initial, maximal, increment, 1, {0, 0, 0}};
  }
  static void* take(const Pool& pool) { return MORAFastBufferPool_getBufferWithSize(pool.get(), -1); }
  static void give_back(const Pool& pool, void* buffer) { MORAFastBufferPool_returnBuffer(pool.get(), buffer); }
  static int idle(const Pool& pool) { return MORAFastBufferPool_getIdleCount(pool.get()); }

  Objects objects_;
  RecordedLog log_;
};

TEST_F(FastBufferPool, MakesItsInitialBuffersAtOnceAndDestroysThemAtTheEnd) {
  for (const std::size_t alignment : {1u, 8u, 64u, 4096u}) {
    const Pool aligned = make(growing(0, -1, 3), 5, alignment);
    void* buffer = take(aligned);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(buffer) % alignment, 0u);
    give_back(aligned, buffer);
  }
  Pool pool = make(growing(3, -1, -1));
  EXPECT_EQ(idle(pool), 3);
  EXPECT_EQ(objects_.alive, 3);
  pool.reset();
  EXPECT_EQ(objects_.alive, 0);
  MORAFastBufferPool_delete(nullptr);
  EXPECT_TRUE(log_.take_lines().empty());
}

TEST_F(FastBufferPool, GivesOutTheBufferThatCameBackLastWithItsObjectAsItWasAndAllocatesNothing) {
  const Pool pool = make(growing(0, -1, 1));
  void* a = take(pool);
  void* b = take(pool);
  *static_cast<int*>(a) = 42;
  const int before = allocation_count();
  for (int i = 0; i < 100; ++i) {
    give_back(pool, b);
    give_back(pool, a);
    EXPECT_EQ(take(pool), a);
    EXPECT_EQ(take(pool), b);
  }
  EXPECT_EQ(*static_cast<int*>(a), 42);
  EXPECT_EQ(allocation_count(), before);
  EXPECT_EQ(objects_.alive, 2);
  give_back(pool, a);
  give_back(pool, b);
}

TEST_F(FastBufferPool, GrowsByItsIncrementUpToItsMaximum) {
  struct Case {
    int initial, maximal, increment;
    std::vector<int> made;  // after each taking
  };
  for (const Case& c : {Case{2, -1, -1, {2, 2, 4, 4, 8}}, Case{0, -1, -1, {1, 2, 4, 4, 8}}, Case{1, 4, 2, {1, 3, 3, 4}},
                        Case{2, 2, -1, {2, 2}}, Case{1, -1, 0, {1}}}) {
    const Pool pool = make(growing(c.initial, c.maximal, c.increment));
    std::vector<void*> taken;
    for (const int made : c.made) {
      taken.push_back(take(pool));
      ASSERT_NE(taken.back(), nullptr);
      EXPECT_EQ(objects_.alive, made);
    }
    if (c.maximal > 0 || c.increment == 0) { EXPECT_EQ(take(pool), nullptr); }
    EXPECT_EQ(std::set<void*>(taken.begin(), taken.end()).size(), taken.size());
    for (void* buffer : taken) { give_back(pool, buffer); }
  }
  EXPECT_TRUE(log_.take_lines().empty()) << "an exhausted pool is no fault";
}

TEST_F(FastBufferPool, RefusesArgumentsOutOfRangeWithALogLineThatNamesThem) {
  const MORAFastBufferPoolProperty good = growing(2, -1, -1);
  const auto refused = [this](const Pool& pool, const char* argument) {
    EXPECT_EQ(pool, nullptr);
    EXPECT_EQ(log_.take_text(), std::string("bad parameter: ") + argument);
  };
  refused(make(good, 0), "buffer_size");
  refused(make(good, 24, 0), "alignment");
  refused(make(good, 24, 24), "alignment");
  refused(make(good, 24, 8, 0), "initialize_once");
  refused(make(growing(-1, -1, -1)), "initial");
  refused(make(growing(3, 2, -1)), "initial");
  refused(make(growing(0, 0, -1)), "maximal");
  refused(make(growing(0, -2, -1)), "maximal");
  refused(make(growing(2, -1, -2)), "increment");
  refused(make({2, -1, -1, 0, {0, 0, 0}}), "multi_thread_access");
  refused(make({2, -1, -1, 1, {0, 0, 1}}), "reserved");
  refused(Pool(MORAFastBufferPool_newWithParams(8, 8, nullptr, nullptr, &destroy, nullptr, &good, "p", 1)),
          "initialize or finalize");
  refused(Pool(MORAFastBufferPool_newWithParams(8, 8, &build, &objects_, &destroy, &objects_, nullptr, "p", 1)),
          "property");
  EXPECT_EQ(objects_.alive, 0);
}

TEST_F(FastBufferPool, RefusesALargerSizeThanItsBuffersHaveAndABufferThatItHasNotGivenOut) {
  const Pool pool = make(growing(1, -1, -1));
  void* buffer = MORAFastBufferPool_getBufferWithSize(pool.get(), 24);
  EXPECT_NE(buffer, nullptr);
  EXPECT_EQ(MORAFastBufferPool_getBufferWithSize(pool.get(), 25), nullptr);
  EXPECT_EQ(log_.take_text(), "bad parameter: size 25 for pool test pool");
  EXPECT_EQ(MORAFastBufferPool_getBufferWithSize(pool.get(), -2), nullptr);
  give_back(pool, buffer);
  for (void* not_given_out : {static_cast<void*>(nullptr), buffer}) {
    log_.take_lines();
    give_back(pool, not_given_out);
    EXPECT_EQ(log_.take_text(), "bad parameter: no buffer that pool test pool has given out");
  }
  EXPECT_EQ(idle(pool), 1);
}

TEST_F(FastBufferPool, GrowsAsFarAsObjectsCanBeBuiltAndIsNotCreatedWithoutItsInitialOnes) {
  objects_.may_be_built = 3;
  EXPECT_EQ(make(growing(4, -1, -1)), nullptr);
  EXPECT_EQ(objects_.alive, 0);
  EXPECT_EQ(log_.take_text(), "failed to create: pool test pool");
  objects_.may_be_built = 5;
  const Pool pool = make(growing(4, -1, -1));
  std::vector<void*> taken;
  for (int i = 0; i < 5; ++i) { taken.push_back(take(pool)); }
  EXPECT_EQ(std::count(taken.begin(), taken.end(), nullptr), 0);
  EXPECT_TRUE(log_.take_lines().empty());
  EXPECT_EQ(take(pool), nullptr);
  EXPECT_EQ(log_.take_text(), "failed to create: buffer of pool test pool");
  for (void* buffer : taken) { give_back(pool, buffer); }
}

TEST_F(FastBufferPool, ExhaustedMemoryLeavesThePoolUsable) {
  Pool pool;
  fail_each_allocation(
      [&] {
        pool = make(growing(2, -1, -1));
        return pool != nullptr;
      },
      [&] { EXPECT_EQ(objects_.alive, 0); });
  void* taken[3] = {take(pool), take(pool), nullptr};
  fail_each_allocation([&] { return (taken[2] = take(pool)) != nullptr; }, [&] { EXPECT_EQ(idle(pool), 0); });
  for (void* buffer : taken) { give_back(pool, buffer); }
}

TEST_F(FastBufferPool, ABufferIsNeverInTwoHandsWhenThreadsShareThePool) {
  constexpr int threads = 4;
  const Pool pool = make(growing(1, threads, 1));
  std::atomic<int> clashes{0};
  std::vector<std::thread> workers;
  for (int t = 1; t <= threads; ++t) {
    workers.emplace_back([&, t] {
      for (int i = 0; i < 3000; ++i) {
        auto* owner = static_cast<int*>(take(pool));
        if (owner == nullptr || *owner != 0) {
          ++clashes;
          return;
        }
        *owner = t;
        if (i % 64 == 0) { std::this_thread::yield(); }
        if (*owner != t) { ++clashes; }
        *owner = 0;
        give_back(pool, owner);
      }
    });
  }
  for (std::thread& worker : workers) { worker.join(); }
  EXPECT_EQ(clashes, 0);
  EXPECT_EQ(idle(pool), objects_.alive);
}

}  // namespace
