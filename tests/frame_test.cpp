// The version record and the texts of the statuses.

#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <string>

#include "vekch/vekch.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <fstream>
#endif

namespace vekch::test {
namespace {

// May the page that holds this address be written? Asked of the system, so that the test doesn't
// depend on how the library was linked.
bool IsWritable(const void* address) {
#ifdef _WIN32
  MEMORY_BASIC_INFORMATION page{};
  return VirtualQuery(address, &page, sizeof page) == 0 ||
         (page.Protect & (PAGE_READONLY | PAGE_EXECUTE_READ)) == 0;
#else
  std::ifstream maps("/proc/self/maps");
  for (std::string line; std::getline(maps, line);) {
    uintptr_t first = 0;
    uintptr_t last = 0;
    char mode[5] = {};
    if (std::sscanf(line.c_str(), "%zx-%zx %4s", &first, &last, mode) == 3 &&
        first <= reinterpret_cast<uintptr_t>(address) &&
        reinterpret_cast<uintptr_t>(address) < last) {
      return mode[1] == 'w';
    }
  }
  return true;
#endif
}

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

TEST(FrameTest, VersionRecordCannotBeWritten) {
  int control = 0;
  EXPECT_TRUE(IsWritable(&control));
  const LibraryVersion* version = vekchGetLibVersion();
  for (const void* part :
       {static_cast<const void*>(version), static_cast<const void*>(version + 1),
        static_cast<const void*>(version->name), static_cast<const void*>(version->version),
        static_cast<const void*>(version->buildDate)}) {
    EXPECT_FALSE(IsWritable(part));
  }
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
