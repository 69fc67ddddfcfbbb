// SPDX-License-Identifier: MIT

// The string hashes beside their plain loops. No other implementation gives the same values.

#include "bench/inputs.h"
#include "bench/plain_loops.h"
#include "bench/ratios.h"
#include "vekch/vekch.h"

namespace vekch_bench {
namespace {

template <auto kOurs, auto kPlain, class Element>
void RunHash(const char* name, const Input& input) {
  const auto* string = reinterpret_cast<const Element*>(input.data());
  const auto count = static_cast<int32_t>(input.size() / sizeof(Element));
  Case("hash", name, input.length())
      .Ours([=] {
        uint32_t hash;
        kOurs(string, count, &hash);
        return hash;
      })
      .Peer("plain loop", [=] { return kPlain(string, count); })
      .Run();
}

// Letters, so that no zero element ends the multiply-33 hash. Sizes are bytes in both forms.
const Family kHashes([] {
  for (int64_t bytes :
       {1, 2, 3, 4, 6, 8, 12, 16, 24, 32, 48, 64, 128, 256, 1 << 10, 16 << 10, 1 << 20}) {
    const Input text = RandomLetters(bytes, 3);
    RunHash<veksHash_8u32u, PlainShiftXor8, uint8_t>("shift-xor, bytes", text);
    RunHash<veksHashSJ2_8u32u, PlainMultiply31For8, uint8_t>("multiply-31, bytes", text);
    RunHash<veksHashMSCS_8u32u, PlainMultiply33For8, uint8_t>("multiply-33, bytes", text);
    if (bytes % 2 == 0) {
      const Input units = RandomLetters(bytes, 2);
      RunHash<veksHash_16u32u, PlainShiftXor16, uint16_t>("shift-xor, units", units);
      RunHash<veksHashSJ2_16u32u, PlainMultiply31For16, uint16_t>("multiply-31, units", units);
      RunHash<veksHashMSCS_16u32u, PlainMultiply33For16, uint16_t>("multiply-33, units", units);
    }
  }
});

}  // namespace
}  // namespace vekch_bench
