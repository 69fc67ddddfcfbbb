// SPDX-License-Identifier: MIT

// Converts any bytes, as UTF-8 and as UTF-16, in both unit orders: into every capacity beside the
// model, between pages that can't be touched; there and back; and in pieces, each begun where the
// one before it ended.
//
// An input's head is the position in two bytes, a capacity in two, the unit order, and how often
// the text is repeated; the rest is the text.

#include "fuzz/fuzz_input.h"
#include "tests/utf_model.h"

namespace vekch::fuzz {
namespace {

using test::Function;

constexpr size_t kMostText = 1024;
constexpr int32_t kPlenty = 4 * kMostText;
constexpr size_t kEveryCapacity = 48;  // so long is a text that is converted into each of them
constexpr int32_t kFurther = 15;       // and others into so many more

struct Conversion {
  size_t read;  // bytes
  test::Bytes written;
};

// Between blocks of just the size that is needed.
Conversion Convert(const Function& function, const test::Bytes& text, int32_t swapped,
                   int32_t capacity) {
  const bool toBytes = &function == &test::kToBytes;
  const Block<uint8_t> from = MakeBlock<uint8_t>(text.size());
  std::copy(text.begin(), text.end(), from.get());
  // A pair that meets one unit of room is written whole.
  const auto room = static_cast<size_t>(toBytes ? capacity : 2 * (capacity + 1));
  const Block<uint8_t> to = MakeBlock<uint8_t>(room);
  test::Call call = {from.get(), test::Size(text), nullptr, 0, swapped, capacity, to.get()};
  function.run(call);
  const auto [read, written] = test::Parts(call.number);
  return {static_cast<size_t>(toBytes ? 2 * read : read),
          test::Bytes(to.get(), static_cast<size_t>(toBytes ? written : 2 * written))};
}

// Pieces of at least one character make up the whole.
void ExpectPieces(const Function& function, const test::Bytes& text, int32_t swapped,
                  int32_t capacity, const test::Bytes& whole) {
  test::Bytes pieces;
  for (test::Bytes rest = text; !rest.empty();) {
    const Conversion piece = Convert(function, rest, swapped, capacity);
    Require(piece.read > 0, "a piece without a character");
    pieces += piece.written;
    rest.erase(0, piece.read);
  }
  Require(pieces == whole, "the pieces are not the whole");
}

void TryInput(const uint8_t* data, size_t size) {
  static test::Sweep sweep(8 * kMostText);
  const Input input(data, size);
  const std::string rest = input.Rest(kMostText);
  test::Bytes text;
  for (int i = 0; i <= input.Head(5) % 16; ++i) {  // steps are for runs of one kind
    text.append(rest.begin(), rest.end());
  }
  text.resize(std::min(text.size(), kMostText));
  const test::Bytes units = text.substr(0, text.size() / 2 * 2);
  const size_t position = input.Head(0) + 256 * (input.Head(1) % 2);
  const int32_t given = input.Head(2) + 256 * (input.Head(3) % 8);
  const int32_t swapped = input.Head(4) % 2;
  for (const Function* function : {&test::kToUnits, &test::kToBytes}) {
    const test::Bytes& from = function == &test::kToUnits ? text : units;
    const bool isShort = from.size() <= kEveryCapacity;
    const int32_t first = isShort ? 0 : given;
    const int32_t last = isShort ? 2 * test::Size(from) : given + kFurther;
    for (int32_t capacity = first; capacity <= last; ++capacity) {
      sweep.Expect(*function, {from, {}, swapped, capacity}, position);
    }
    ExpectPieces(*function, from, swapped, 4 + given,
                 Convert(*function, from, swapped, kPlenty).written);
  }
  // Each text of units comes back, unpaired surrogates too; those of pairs only in native order.
  const test::Bytes bytes = Convert(test::kToBytes, units, swapped, kPlenty).written;
  const bool hasPairs =
      std::any_of(bytes.begin(), bytes.end(), [](uint8_t b) { return b >= 0xF0; });
  if (swapped == 0 || !hasPairs) {
    Require(Convert(test::kToUnits, bytes, swapped, kPlenty).written == units,
            "units don't come back");
  }
}

}  // namespace
}  // namespace vekch::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  vekch::fuzz::TryInput(data, size);
  return 0;
}
