// SPDX-License-Identifier: MIT

// Targets that check by the tests' assertions stop where one of them fails, as by an abort: signals
// of GoogleTest's own choice the fuzzer takes no notice of.

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

namespace {

class Stop : public testing::EmptyTestEventListener {
  void OnTestPartResult(const testing::TestPartResult& result) override {
    if (result.failed()) {
      std::fprintf(stderr, "%s\n", result.message());
      std::abort();
    }
  }
};

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  testing::UnitTest::GetInstance()->listeners().Append(new Stop);
  return 0;
}
