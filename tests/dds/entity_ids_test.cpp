#include "util/entity_ids.hpp"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>

namespace {

// Handles go on from where they were in both, so that the rest of the GUIDs is the same.
TEST(EntityIds, AProcessThatBranchesOffHasGuidsOfItsOwn) {
  const DDS_GUID_t before = dds::make_guid(1);
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  const pid_t child = fork();
  if (child == 0) {
    const DDS_GUID_t own = dds::make_guid(1);
    _exit(write(ends[1], own.value, sizeof(own.value)) == sizeof(own.value) ? 0 : 1);
  }
  ASSERT_GT(child, 0);
  DDS_GUID_t of_child;
  ASSERT_EQ(read(ends[0], of_child.value, sizeof(of_child.value)), static_cast<ssize_t>(sizeof(of_child.value)));
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  for (const int end : ends) { close(end); }

  const DDS_GUID_t after = dds::make_guid(1);
  EXPECT_TRUE(DDS_GUID_equals(&after, &before));
  EXPECT_NE(std::memcmp(of_child.value, before.value, 8), 0);
  EXPECT_EQ(std::memcmp(of_child.value + 8, before.value + 8, 8), 0) << "the handle";
}

}  // namespace
