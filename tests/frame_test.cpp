// SPDX-License-Identifier: MIT

// The version record and the texts of the statuses.

#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <string>

#include "vekch/vekch.h"

namespace vekch::test {
namespace {

TEST(FrameTest, VersionRecord) {
  const LibraryVersion* version = vekchGetLibVersion();
  EXPECT_EQ(version->major, 2021);
  EXPECT_EQ(version->minor, 12);
  EXPECT_EQ(version->update, 0);
  EXPECT_EQ(version->build, 0x9b172c15U);
  EXPECT_EQ(std::memcmp(version->targetCpu, "m7\0\0", 4), 0);
  EXPECT_STREQ(version->name, "vekCH SSE3 (m7)");
  EXPECT_STREQ(version->version, "2021.12.0 (r0x9b172c15)");
  EXPECT_STREQ(version->buildDate, "Apr 25 2024");
  EXPECT_EQ(vekchGetLibVersion(), version);
}

TEST(FrameTest, EveryStatusHasATextOfItsOwn) {
  std::set<std::string> texts;
  std::set<vekStatus> known;
  for (vekStatus status = -300; status <= 300; ++status) {
    ASSERT_NE(vekStatusText(status), nullptr);
    if (std::strcmp(vekStatusText(status), "unknown status") != 0) {
      known.insert(status);
      texts.insert(vekStatusText(status));
    }
  }
  EXPECT_EQ(known, (std::set<vekStatus>{27, 26, 12, 0, -6, -7, -8, -15, -183, -184, -185, -186,
                                        -187, -188, -189, -190}));
  EXPECT_EQ(texts.size(), known.size());
  EXPECT_STREQ(vekStatusText(INT32_MIN), "unknown status");
  EXPECT_STREQ(vekStatusText(StatusNoError), "success");
}

}  // namespace
}  // namespace vekch::test
