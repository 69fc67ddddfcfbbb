// SPDX-License-Identifier: MIT

// The block kernels, which are not exported, beside memcpy, memmove and memset.

#include "bench/inputs.h"
#include "bench/ratios.h"
#include "strings/block_routines.h"

#include <string.h>

#include <memory>

namespace vekch_bench {
namespace {

using vekch::BlockCopy;
using vekch::BlockFill;
using vekch::BlockMove;

void RunCopy(const char* name, int64_t bytes, int64_t sourceOffset, int64_t destinationOffset) {
  const Input source = RandomBytes(bytes, sourceOffset);
  const Input destination(bytes, destinationOffset);
  const uint8_t* from = source.data();
  uint8_t* to = destination.data();
  const int32_t length = source.length();
  const auto written = [=] { return Digest(to, bytes); };
  Case("block_copy", name, bytes)
      .Ours([=] { return BlockCopy(from, to, length); }, written)
      .Peer(
          "memcpy", [=] { return memcpy(to, from, static_cast<size_t>(length)) != nullptr; },
          written)
      .Run();
}

// Every call moves the string by one byte and the next call moves it back.
void RunMove(const char* name, int64_t bytes, int64_t shift) {
  const Input buffer = RandomBytes(bytes + shift);
  uint8_t* low = buffer.data();
  uint8_t* high = low + shift;
  const auto length = static_cast<int32_t>(bytes);
  const auto size = static_cast<size_t>(bytes);
  const auto written = [=] { return Digest(low + shift, bytes - shift); };
  Case("block_move", name, bytes)
      .Calls(2)
      .Ours(
          [=] {
            BlockMove(low, high, length);
            return BlockMove(high, low, length);
          },
          written)
      .Peer(
          "memmove",
          [=] {
            memmove(high, low, size);
            return memmove(low, high, size) != nullptr;
          },
          written)
      .Run();
}

void RunFill(const char* name, int64_t bytes, int64_t offset) {
  const Input destination(bytes, offset);
  uint8_t* to = destination.data();
  const auto length = static_cast<int32_t>(bytes);
  const auto written = [=] { return Digest(to, bytes); };
  Case("block_fill", name, bytes)
      .Ours([=] { return BlockFill('v', to, length); }, written)
      .Peer(
          "memset", [=] { return memset(to, 'v', static_cast<size_t>(length)) != nullptr; },
          written)
      .Run();
}

// A new length each time: what the branches cost that a steady length hides.
void RunMixedLengths(int32_t highest) {
  constexpr size_t kCount = 1024;
  const auto lengths = std::make_shared<std::vector<int32_t>>(RandomLengths(kCount, 1, highest));
  const Input source = RandomBytes(highest);
  const Input destination(highest);
  const uint8_t* from = source.data();
  uint8_t* to = destination.data();
  const int32_t* each = lengths->data();
  const auto written = [=] { return Digest(to, highest); };
  const auto forEach = [=](auto run) {
    return [=, keep = lengths] {
      for (size_t i = 0; i < kCount; ++i) {
        run(each[i]);
      }
      return 0;
    };
  };
  const std::string name = "mixed to " + std::to_string(highest);
  Case("block_copy", name, highest / 2)
      .Calls(kCount)
      .Ours(forEach([=](int32_t length) { BlockCopy(from, to, length); }), written)
      .Peer("memcpy",
            forEach([=](int32_t length) { memcpy(to, from, static_cast<size_t>(length)); }),
            written)
      .Run();
  Case("block_fill", name, highest / 2)
      .Calls(kCount)
      .Ours(forEach([=](int32_t length) { BlockFill('v', to, length); }), written)
      .Peer("memset",
            forEach([=](int32_t length) { memset(to, 'v', static_cast<size_t>(length)); }), written)
      .Run();
}

const Family kBlocks([] {
  for (int64_t bytes :
       {1,   2,       3,       4,        7,        8,         12,        15,      16,      17,  24,
        31,  32,      48,      63,       64,       65,        96,        127,     128,     200, 256,
        500, 1 << 10, 4 << 10, 16 << 10, 64 << 10, 256 << 10, 512 << 10, 4 << 20, 64 << 20}) {
    RunCopy("aligned", bytes, 0, 0);
    RunCopy("unaligned", bytes, 5, 11);
    RunMove("by 1", bytes, 1);
    RunMove("by 40", bytes, 40);
    RunFill("aligned", bytes, 0);
    RunFill("unaligned", bytes, 3);
  }
  RunMixedLengths(32);
  RunMixedLengths(256);
});

}  // namespace
}  // namespace vekch_bench
