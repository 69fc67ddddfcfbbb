// SPDX-License-Identifier: MIT

// UTF-8 to UTF-16. Far from both ends 16 bytes are taken a step where they are ASCII, or ASCII and
// well-formed characters of two bytes, and 24 where they are eight of three bytes; all else, and
// what is near the ends, is taken one character at a time, by the common reading rule where it is
// not well-formed.
//
// There is no instruction here that moves bytes freely, so a step on a mix goes without: it
// computes a unit at every byte as if the byte were the first of its character, then packs those
// that are.
//
// A step stores up to four units more than it makes. That is harmless where the text still to come
// must fill them; where little is left, characters are taken one by one. (Steps that work beside
// the destination, with a copy of what they made, took longer than that.)

#include "strings/kernels/byte_range.h"
#include "strings/kernels/lanes.h"
#include "unicode/cursor.h"
#include "unicode/utf8.h"
#include "unicode/utf_kernels.h"

namespace vekch::kernels {
namespace {

constexpr ptrdiff_t kStepRoom = kBlock * kUnit;  // that a step may fill

// With so much of the source a step may store into the destination: after its 16 bytes are 12
// more, which make at least four units, since no character takes more than three bytes for a unit.
constexpr ptrdiff_t kDirectSource = kBlock + 12;

// ---- One character.

// A value above 0xFFFF; one above 0x10FFFF loses its upper bits. In swapped order the pair comes
// low first, and its bytes are not swapped; and it is written whole also where one unit of room is
// left.
template <bool kSwapped>
VEK_INLINE void StorePair(uint8_t* to, uint32_t value) {
  const uint32_t high = 0xD800 + (((value - 0x10000) >> 10) & 0x3FF);
  const uint32_t low = 0xDC00 + (value & 0x3FF);
  StoreWord<uint32_t>(to, kSwapped ? low | (high << 16) : high | (low << 16));
}

// Out of line, as few characters need it.
VEK_KERNEL __attribute__((noinline)) Utf8Character ReadByRule(const uint8_t* p,
                                                              const uint8_t* end) {
  return ReadUtf8(p, end);
}

template <bool kSwapped>
VEK_INLINE void ConvertCharacter(Cursor& at) {
  const Utf8Character character = ReadByRule(at.from, at.fromEnd);
  if (character.value <= 0xFFFF) {
    StoreUnit<kSwapped>(at.to, character.value);
    at.Advance(character.length, kUnit);
  } else {
    StorePair<kSwapped>(at.to, character.value);
    at.Advance(character.length, 2 * kUnit);
  }
}

// ---- ASCII.

// The low and the high bytes of 16 units.
struct UnitBytes {
  Block low;
  Block high;
};

template <bool kSwapped>
VEK_INLINE Block FirstUnits(const UnitBytes& units) {
  return kSwapped ? InterleaveLow(units.high, units.low) : InterleaveLow(units.low, units.high);
}

template <bool kSwapped>
VEK_INLINE Block LastUnits(const UnitBytes& units) {
  return kSwapped ? InterleaveHigh(units.high, units.low) : InterleaveHigh(units.low, units.high);
}

template <bool kSwapped>
VEK_INLINE void StoreAscii(uint8_t* to, Block bytes) {
  StoreAny(to, FirstUnits<kSwapped>({bytes, ZeroBlock()}));
  StoreAny(to + kBlock, LastUnits<kSwapped>({bytes, ZeroBlock()}));
}

// 64 bytes a step, as long as they are ASCII.
template <bool kSwapped>
VEK_INLINE void ConvertAsciiRun(Cursor& at) {
  while (at.Left() >= 4 * kBlock && at.Room() >= 4 * kStepRoom) {
    const Block b0 = LoadAny(at.from);
    const Block b1 = LoadAny(at.from + kBlock);
    const Block b2 = LoadAny(at.from + 2 * kBlock);
    const Block b3 = LoadAny(at.from + 3 * kBlock);
    if (LaneBits((b0 | b1) | (b2 | b3)) != 0) {
      return;
    }
    StoreAscii<kSwapped>(at.to, b0);
    StoreAscii<kSwapped>(at.to + kStepRoom, b1);
    StoreAscii<kSwapped>(at.to + 2 * kStepRoom, b2);
    StoreAscii<kSwapped>(at.to + 3 * kStepRoom, b3);
    at.Advance(4 * kBlock, 4 * kStepRoom);
  }
}

// ---- Packing: the kept ones of eight units, in their order, to the front.
//
// Four units are packed in two rounds. A unit with d dropped ones before it moves
// down by one position in the first round if d is odd, and by two in the second if d is 2 or 3:
//
//   kept    . B . D      round 1   B . D .  (B and D have d = 1 and 2)
//                        round 2   B D . .

struct PackRow {
  uint64_t byOne;  // positions to which the unit one position above moves
  uint64_t byTwo;
  uint64_t bytes;  // that the kept units fill
  uint64_t unused;
};

struct PackTable {
  alignas(32) PackRow rows[16];  // for each set of kept positions
};

constexpr PackRow MakePackRow(int kept) {
  PackRow row = {};
  int dropped = 0;
  for (int position = 0; position < 4; ++position) {
    if ((kept >> position & 1) == 0) {
      ++dropped;
      continue;
    }
    row.bytes += kUnit;
    if ((dropped & 1) != 0) {
      row.byOne |= uint64_t{0xFFFF} << (16 * (position - 1));
    }
    if ((dropped & 2) != 0) {
      row.byTwo |= uint64_t{0xFFFF} << (16 * (position - dropped));
    }
  }
  return row;
}

constexpr PackTable MakePackTable() {
  PackTable table = {};
  for (int kept = 0; kept < 16; ++kept) {
    table.rows[kept] = MakePackRow(kept);
  }
  return table;
}

constexpr PackTable kPack = MakePackTable();

VEK_INLINE Halves LoadMoves(const PackRow& row) {
  return As<Halves>(LoadAligned(reinterpret_cast<const uint8_t*>(&row)));
}

// Returns where the next unit goes. Stores up to 8 units.
VEK_INLINE uint8_t* StoreKept(uint8_t* to, Halves units, uint32_t kept) {
  const PackRow& first = kPack.rows[kept & 15];
  const PackRow& second = kPack.rows[kept >> 4 & 15];
  const Halves moves = LoadMoves(first);
  const Halves movesOfSecond = LoadMoves(second);
  units = Select(LowHalves(moves, movesOfSecond), units >> 16, units);
  units = Select(HighHalves(moves, movesOfSecond), units >> 32, units);
  StoreLowHalf(to, units);
  to += first.bytes;
  StoreHighHalf(to, units);
  return to + second.bytes;
}

// ---- A mix of ASCII and well-formed characters of two bytes.

// The units at all bytes, of which those at first bytes count: 110aaabb 10cccccc gives bbcccccc and
// 00000aaa.
VEK_INLINE UnitBytes UnitsOfTwos(Block bytes, Block leads) {
  const Block low = BitsUp<6>(bytes) | (LanesDown<1>(bytes) & Splat(0x3F));
  const Block high = As<Block>(As<Units>(bytes) >> 2);
  return {Select(leads, low, bytes), high & leads & Splat(0x07)};
}

// False where a byte is neither ASCII nor in its position in a character of two bytes.
template <bool kSwapped>
VEK_INLINE bool ConvertTwos(Cursor& at, Block bytes) {
  const Block leads = InRange(bytes, MakeRange(0xC2, 0xDF));
  const uint32_t lead = LaneBits(leads);
  const uint32_t continuation = LaneBits(SignedBelow(bytes, Splat(0xC0)));
  const uint32_t ascii = LaneBits(bytes) ^ 0xFFFF;
  if ((lead ^ continuation ^ ascii) != 0xFFFF || ((lead << 1) & 0xFFFF) != continuation) {
    return false;
  }
  // What comes after the block is not looked at: a lead at its end waits for the next step. Its
  // byte is asked in memory again, not in the bits, since the next step waits for the answer.
  const uint32_t kept = ascii | (lead & 0x7FFF);
  const UnitBytes units = UnitsOfTwos(bytes, leads);
  at.to = StoreKept(at.to, As<Halves>(FirstUnits<kSwapped>(units)), kept);
  at.to = StoreKept(at.to, As<Halves>(LastUnits<kSwapped>(units)), kept >> 8);
  at.from += kBlock - static_cast<ptrdiff_t>(at.from[kBlock - 1] >= 0xC0);
  return true;
}

// ---- Runs of characters of three bytes, as all of East Asia writes.

// The first two of the three-byte characters in both halves of a block, one in each 32 bits:
//
//   1110aaaa 10bbbbcc 10dddddd  ........  aaaabbbb ccdddddd, times 0x10000
struct FourOfThree {
  Halves spread;

  static VEK_INLINE FourOfThree Load(const uint8_t* p) {
    const Halves halves = As<Halves>(LowHalves(LoadHalf(p), LoadHalf(p + 6)));
    return {(halves & SplatHalf(0x0000000000FFFFFF)) |
            ((halves << 8) & SplatHalf(0x00FFFFFF00000000))};
  }

  VEK_INLINE Block HaveForm() const {
    return As<Block>(spread & SplatHalf(0x00C0C0F000C0C0F0)) ==
           As<Block>(SplatHalf(0x008080E0008080E0));
  }

  VEK_INLINE Quads Values() const {
    const Quads quads = As<Quads>(spread);
    return (quads << 28) | ((quads & SplatQuad(0x3F00)) << 14) | (quads & SplatQuad(0x3F0000));
  }
};

constexpr ptrdiff_t kRunReach = 26;  // eight characters, and what is loaded after the last

// Eight characters a step; false if there were not that many.
template <bool kSwapped>
VEK_INLINE bool ConvertThreeByteRun(Cursor& at) {
  bool any = false;
  while (at.Left() >= kRunReach && at.Room() >= kBlock) {
    const FourOfThree first = FourOfThree::Load(at.from);
    const FourOfThree second = FourOfThree::Load(at.from + 12);
    const Units units = HighUnits(first.Values(), second.Values());
    const Units overlong = (units & SplatUnit(0xF800)) == SplatUnit(0);
    const Block formed = first.HaveForm() & second.HaveForm();
    if (LaneBits(formed) != 0xFFFF || LaneBits(overlong) != 0) {
      break;
    }
    StoreAny(at.to, As<Block>(kSwapped ? SwapBytes(units) : units));
    at.Advance(24, kBlock);
    any = true;
  }
  return any;
}

constexpr ptrdiff_t kFourReach = 14;  // four characters, and what is loaded after the last

// Four characters a step, for what is too short for a run.
template <bool kSwapped>
VEK_INLINE void ConvertThreesByFour(Cursor& at) {
  while (at.Left() >= kFourReach && at.Room() >= 4 * kUnit && *at.from >= 0xE0) {
    const FourOfThree four = FourOfThree::Load(at.from);
    const Units units = HighUnits(four.Values(), four.Values());
    const Units overlong = (units & SplatUnit(0xF800)) == SplatUnit(0);
    if (LaneBits(four.HaveForm()) != 0xFFFF || LaneBits(overlong) != 0) {
      return;
    }
    StoreLowHalf(at.to, kSwapped ? SwapBytes(units) : units);
    at.Advance(12, 4 * kUnit);
  }
}

// ---- One by one.

// Whether bytes, joined after an exclusive-or with 0x80 each, all have the form of a continuation.
VEK_INLINE bool AllContinue(uint32_t toggled) { return toggled < 0x40; }

// A well-formed character of two bytes; false for anything else.
template <bool kSwapped>
VEK_INLINE bool ConvertTwo(Cursor& at, uint32_t first) {
  const uint8_t* const p = at.from;
  if (first < 0xC2 || first > 0xDF || p + 1 == at.fromEnd) {
    return false;
  }
  const uint32_t second = p[1] ^ 0x80U;
  if (__builtin_expect(!AllContinue(second), 0)) {
    return false;
  }
  StoreUnit<kSwapped>(at.to, (first & 0x1F) << 6 | second);
  at.Advance(2, kUnit);
  return true;
}

// The same of three and four bytes.
template <bool kSwapped>
VEK_INLINE bool ConvertThreeOrFour(Cursor& at, uint32_t first) {
  const uint8_t* const p = at.from;
  const ptrdiff_t left = at.Left();
  if (first < 0xE0 || left < 3) {
    return false;
  }
  const uint32_t second = p[1] ^ 0x80U;
  const uint32_t third = p[2] ^ 0x80U;
  const uint32_t twoMore = second << 6 | third;
  if (first < 0xF0) {
    const uint32_t value = (first & 0x0F) << 12 | twoMore;
    if (!AllContinue(second | third) || value < 0x800) {
      return false;
    }
    StoreUnit<kSwapped>(at.to, value);
    at.Advance(3, kUnit);
    return true;
  }
  if (left < 4) {
    return false;
  }
  const uint32_t fourth = p[3] ^ 0x80U;
  const uint32_t value = (first & 0x07) << 18 | twoMore << 6 | fourth;
  if (first >= 0xF8 || !AllContinue(second | third | fourth) || value < 0x10000) {
    return false;
  }
  StorePair<kSwapped>(at.to, value);
  at.Advance(4, 2 * kUnit);
  return true;
}

// The characters that begin before `stop`; there is a unit of room for every byte.
template <bool kSwapped>
VEK_INLINE void ConvertFreely(Cursor& at, const uint8_t* stop) {
  while (at.from < stop) {
    const uint32_t first = *at.from;
    if (first < 0x80) {
      StoreUnit<kSwapped>(at.to, first);
      at.Advance(1, kUnit);
    } else if (!ConvertTwo<kSwapped>(at, first) && !ConvertThreeOrFour<kSwapped>(at, first)) {
      ConvertCharacter<kSwapped>(at);
    }
  }
}

// The same as far as there is room. No character makes more units than it has bytes, so that as
// many bytes as there are units of room need no look at it.
template <bool kSwapped>
VEK_INLINE void ConvertCharacters(Cursor& at, const uint8_t* stop) {
  while (at.from < stop && at.Room() > 0) {
    const ptrdiff_t free = at.Room() / kUnit;
    ConvertFreely<kSwapped>(at, free < stop - at.from ? at.from + free : stop);
  }
}

// ---- All together.

// One step on 16 bytes that are not all ASCII, or more. Mixes with characters of three and four
// bytes are taken one by one: computing a unit at every byte for them too, as for two, took a third
// longer for four bytes, and for three it kept the runs from being met.
template <bool kSwapped>
VEK_INLINE void ConvertBlock(Cursor& at, Block bytes) {
  const uint8_t first = *at.from;
  const bool done = first < 0xE0   ? ConvertTwos<kSwapped>(at, bytes)
                    : first < 0xF0 ? ConvertThreeByteRun<kSwapped>(at)
                                   : false;
  if (!done) {
    ConvertCharacters<kSwapped>(at, at.from + kBlock);
  }
}

template <bool kSwapped>
VEK_INLINE void ConvertSteps(Cursor& at) {
  while (at.Left() >= kDirectSource && at.Room() >= kStepRoom) {
    const Block bytes = LoadAny(at.from);
    if (LaneBits(bytes) == 0) {
      StoreAscii<kSwapped>(at.to, bytes);
      at.Advance(kBlock, kStepRoom);
      ConvertAsciiRun<kSwapped>(at);
    } else {
      ConvertBlock<kSwapped>(at, bytes);
    }
  }
}

// ---- The rest.

// 8 to 15 bytes, by two halves that overlap; false where they aren't ASCII.
template <bool kSwapped>
VEK_INLINE bool ConvertAsciiHalves(Cursor& at) {
  const Block first = LoadHalf(at.from);
  const Block last = LoadHalf(at.fromEnd - kBlock / 2);
  if (LaneBits(first | last) != 0) {
    return false;
  }
  const ptrdiff_t count = at.Left();
  StoreAny(at.to, FirstUnits<kSwapped>({first, ZeroBlock()}));
  StoreAny(at.to + kUnit * count - kBlock, FirstUnits<kSwapped>({last, ZeroBlock()}));
  at.Advance(count, kUnit * count);
  return true;
}

// 16 to 32 bytes, by two blocks that overlap.
template <bool kSwapped>
VEK_INLINE bool ConvertAsciiBlocks(Cursor& at) {
  const Block first = LoadAny(at.from);
  const Block last = LoadAny(at.fromEnd - kBlock);
  if (LaneBits(first | last) != 0) {
    return false;
  }
  const ptrdiff_t count = at.Left();
  StoreAscii<kSwapped>(at.to, first);
  StoreAscii<kSwapped>(at.to + kUnit * count - kStepRoom, last);
  at.Advance(count, kUnit * count);
  return true;
}

// The same for 4 to 7 bytes.
template <bool kSwapped>
VEK_INLINE bool ConvertAsciiFew(Cursor& at) {
  const Block ends = As<Block>(LoadQuads(at.from, at.fromEnd - 4));
  if (LaneBits(ends) != 0) {
    return false;
  }
  const ptrdiff_t count = at.Left();
  const Block units = FirstUnits<kSwapped>({ends, ZeroBlock()});
  StoreLowHalf(at.to, units);
  StoreHighHalf(at.to + kUnit * count - kBlock / 2, units);
  at.Advance(count, kUnit * count);
  return true;
}

// The rest of a text that has 16 bytes in all. The last step reaches back over bytes that
// are converted already: where all of it is ASCII, so were they, and their units stay the same.
template <bool kSwapped>
VEK_INLINE void ConvertRest(Cursor& at) {
  ConvertThreesByFour<kSwapped>(at);
  while (at.Left() >= kBlock && at.Room() > 0) {
    const Block bytes = LoadAny(at.from);
    if (LaneBits(bytes) == 0 && at.Room() >= kStepRoom) {
      StoreAscii<kSwapped>(at.to, bytes);
      at.Advance(kBlock, kStepRoom);
    } else {
      ConvertCharacters<kSwapped>(at, at.from + kBlock);
    }
  }
  const ptrdiff_t count = at.Left();
  if (count >= 4 && at.Room() >= kUnit * count) {
    const Block bytes = LoadAny(at.fromEnd - kBlock);
    if (LaneBits(bytes) == 0) {
      StoreAscii<kSwapped>(at.to + kUnit * count - kStepRoom, bytes);
      at.Advance(count, kUnit * count);
      return;
    }
  }
  ConvertCharacters<kSwapped>(at, at.fromEnd);
}

VEK_INLINE Cursor MakeCursor(const uint8_t* source, int32_t length, uint8_t* destination,
                             int32_t capacity) {
  return {source, source + length, destination, destination + kUnit * capacity};
}

VEK_INLINE vekStatus Report(const Cursor& at, const uint8_t* source, int32_t* length,
                            const uint8_t* destination, int32_t* capacity) {
  *length = static_cast<int32_t>(at.from - source);
  *capacity = static_cast<int32_t>((at.to - destination) / kUnit);
  return StatusNoError;
}

template <bool kSwapped>
VEK_INLINE vekStatus ConvertText(const uint8_t* source, int32_t* length, uint8_t* destination,
                                 int32_t* capacity) {
  Cursor at = MakeCursor(source, *length, destination, *capacity);
  ConvertSteps<kSwapped>(at);
  ConvertRest<kSwapped>(at);
  return Report(at, source, length, destination, capacity);
}

template <bool kSwapped>
VEK_INLINE vekStatus ConvertShortText(const uint8_t* source, int32_t* length, uint8_t* destination,
                                      int32_t* capacity) {
  Cursor at = MakeCursor(source, *length, destination, *capacity);
  ConvertThreesByFour<kSwapped>(at);
  ConvertCharacters<kSwapped>(at, at.fromEnd);
  return Report(at, source, length, destination, capacity);
}

VEK_KERNEL __attribute__((noinline)) vekStatus ConvertShortNative(const uint8_t* source,
                                                                  int32_t* length,
                                                                  uint8_t* destination,
                                                                  int32_t* capacity) {
  return ConvertShortText<false>(source, length, destination, capacity);
}

VEK_KERNEL __attribute__((noinline)) vekStatus ConvertShortSwapped(const uint8_t* source,
                                                                   int32_t* length,
                                                                   uint8_t* destination,
                                                                   int32_t* capacity) {
  return ConvertShortText<true>(source, length, destination, capacity);
}

VEK_KERNEL __attribute__((noinline)) vekStatus ConvertNative(const uint8_t* source, int32_t* length,
                                                             uint8_t* destination,
                                                             int32_t* capacity) {
  return ConvertText<false>(source, length, destination, capacity);
}

VEK_KERNEL __attribute__((noinline)) vekStatus ConvertSwapped(const uint8_t* source,
                                                              int32_t* length, uint8_t* destination,
                                                              int32_t* capacity) {
  return ConvertText<true>(source, length, destination, capacity);
}

// ASCII of 1 to 3 bytes, of which the middle one may be the first or the last.
template <bool kSwapped>
VEK_INLINE bool ConvertAsciiThree(Cursor& at) {
  const ptrdiff_t count = at.Left();
  const uint32_t first = at.from[0];
  const uint32_t middle = at.from[count >> 1];
  const uint32_t last = at.from[count - 1];
  if (((first | middle | last) & 0x80) != 0) {
    return false;
  }
  StoreUnit<kSwapped>(at.to, first);
  StoreUnit<kSwapped>(at.to + kUnit * (count >> 1), middle);
  StoreUnit<kSwapped>(at.to + kUnit * (count - 1), last);
  at.Advance(count, kUnit * count);
  return true;
}

// A short text, if it is ASCII.
template <bool kSwapped>
VEK_INLINE bool ConvertShortAscii(Cursor& at) {
  const ptrdiff_t count = at.Left();
  return count < 4            ? ConvertAsciiThree<kSwapped>(at)
         : count < kBlock / 2 ? ConvertAsciiFew<kSwapped>(at)
         : count < kBlock     ? ConvertAsciiHalves<kSwapped>(at)
                              : ConvertAsciiBlocks<kSwapped>(at);
}

// Short ASCII needs no more than the registers that a call may change.
template <bool kSwapped, class Text>
VEK_INLINE vekStatus Convert(const uint8_t* source, int32_t* length, uint8_t* destination,
                             int32_t* capacity, Text convertShort, Text convertLong) {
  if (*length <= 2 * kBlock && *capacity >= *length) {
    Cursor at = MakeCursor(source, *length, destination, *capacity);
    if (ConvertShortAscii<kSwapped>(at)) {
      return Report(at, source, length, destination, capacity);
    }
  }
  return *length < kDirectSource ? convertShort(source, length, destination, capacity)
                                 : convertLong(source, length, destination, capacity);
}

}  // namespace

VEK_KERNEL vekStatus Utf8ToUtf16(const uint8_t* source, int32_t* length, uint8_t* destination,
                                 int32_t* capacity) {
  return Convert<false>(source, length, destination, capacity, ConvertShortNative, ConvertNative);
}

VEK_KERNEL vekStatus Utf8ToUtf16Swapped(const uint8_t* source, int32_t* length,
                                        uint8_t* destination, int32_t* capacity) {
  return Convert<true>(source, length, destination, capacity, ConvertShortSwapped, ConvertSwapped);
}

}  // namespace vekch::kernels
