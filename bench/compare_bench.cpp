// The comparisons beside memcmp, strncasecmp and std::string_view.

#include "bench/inputs.h"
#include "bench/ratios.h"
#include "vekch/vekch.h"

#include <string.h>
#include <strings.h>

namespace vekch_bench {
namespace {

void RunEqualStrings(int64_t bytes) {
  const Input first = RandomLetters(bytes);
  const Input second = RandomLetters(bytes);
  const uint8_t* a = first.data();
  const uint8_t* b = second.data();
  const int32_t length = first.length();
  const size_t size = first.size();
  Case("compare", "equal", bytes)
      .Ours([=] {
        int32_t result;
        veksCompare_8u(a, b, length, &result);
        return Sign(result);
      })
      .Peer("memcmp", [=] { return Sign(memcmp(a, b, size)); })
      .Run();
}

const Family kCompare([] {
  for (int64_t bytes : {8, 64, 1 << 10}) {
    RunEqualStrings(bytes);
  }
});

}  // namespace
}  // namespace vekch_bench
