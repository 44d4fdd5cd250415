// Handles and indices outside their tables are caught in a debug build.
#include <gtest/gtest.h>

#include "toolkit/base/check.h"

namespace {

TEST(CheckedTables, IndicesInsideAreReadAndWritten) {
  zelv::Slots<int, 3> t{};
  t.fill(-1);
  t[2] = 7;
  const auto& c = t;
  EXPECT_EQ(c[2], 7);
  EXPECT_EQ(c[0], -1);
}

#ifndef NDEBUG
TEST(CheckedTablesDeathTest, AnIndexOutsideStopsADebugBuild) {
  zelv::Slots<int, 51> t{};
  const int handle = -1;  // what a caller gets back from a failed open
  EXPECT_DEATH(t[handle] = 1, "check failed: i < N");
  EXPECT_DEATH(t[51] = 1, "check failed: i < N");
}
#endif

}  // namespace
