// SPDX-License-Identifier: MIT

// UTF-16 to UTF-8. Far from both ends 32 units of ASCII or 8 units of anything well-formed are
// taken a step; near the ends, and where surrogates are unpaired, one character at a time.
//
// A step computes the bytes of every unit, then stores unit after unit, each where the bytes of the
// one before end, so that the surplus of one store is overwritten by the next. A surrogate makes
// two of the four bytes of its pair:
//
//   unit                         bytes
//   000000000aaaaaaa             0aaaaaaa
//   00000aaaaabbbbbb             110aaaaa 10bbbbbb
//   aaaabbbbbbcccccc             1110aaaa 10bbbbbb 10cccccc
//   110110aaaabbbbbb + 0x40      11110aaa 10abbbbb  (of aaaabbbbbb + 0x40 = aaaabbbbbbb, 11 bits;
//                                                   its last two bits go to the next byte)
//   110111ccccdddddd             10bbcccc 10dddddd
//
// The last store of a step reaches up to three bytes beyond its characters. That is harmless where
// the text still to come must fill them; where little is left, units are taken one by one. (Steps
// that work beside the destination, with a copy of what they made, took longer than that.)

#include "strings/kernels/lanes.h"
#include "unicode/cursor.h"
#include "unicode/utf8.h"
#include "unicode/utf_kernels.h"

namespace vekch::kernels {
namespace {

constexpr ptrdiff_t kStepUnits = 8;
constexpr ptrdiff_t kStepRoom = 3 * kStepUnits;  // that a step may fill
constexpr ptrdiff_t kSurplus = 3;                // that it may store past what it makes

// With so much left on both sides a step may store into the destination: the units after it make
// at least a byte each, and a conversion leaves less than four bytes of a destination free.
constexpr ptrdiff_t kDirectSource = kBlock + kSurplus * kUnit;
constexpr ptrdiff_t kDirectRoom = kStepRoom + kSurplus + 3;

// ---- One character.

VEK_INLINE bool IsHighSurrogate(uint32_t unit) { return (unit & 0xFC00) == 0xD800; }
VEK_INLINE bool IsLowSurrogate(uint32_t unit) { return (unit & 0xFC00) == 0xDC00; }

template <bool kSwapped>
VEK_INLINE uint32_t LoadCharacter(const Cursor& at) {
  const uint32_t unit = LoadUnit<kSwapped>(at.from);
  if (!IsHighSurrogate(unit) || at.Left() < 2 * kUnit) {
    return unit;
  }
  const uint32_t next = LoadUnit<kSwapped>(at.from + kUnit);
  return IsLowSurrogate(next) ? (((unit & 0x3FF) << 10) | (next & 0x3FF)) + 0x10000 : unit;
}

VEK_INLINE uint32_t SixBits(uint32_t value, int32_t from) { return 0x80 | (value >> from & 0x3F); }

VEK_INLINE void StoreCharacter(uint8_t* to, uint32_t value, int32_t length) {
  if (length == 1) {
    *to = static_cast<uint8_t>(value);
  } else if (length == 2) {
    const uint32_t bytes = 0xC0 | (value >> 6) | (SixBits(value, 0) << 8);
    StoreWord(to, static_cast<uint16_t>(bytes));
  } else if (length == 3) {
    const uint32_t bytes = 0xE0 | (value >> 12) | (SixBits(value, 6) << 8);
    StoreWord(to, static_cast<uint16_t>(bytes));
    to[2] = static_cast<uint8_t>(SixBits(value, 0));
  } else {
    StoreWord(to, 0xF0 | (value >> 18) | (SixBits(value, 12) << 8) | (SixBits(value, 6) << 16) |
                      (SixBits(value, 0) << 24));
  }
}

// False, and nothing is written, where the character does not fit.
template <bool kSwapped>
VEK_INLINE bool ConvertCharacter(Cursor& at) {
  const uint32_t value = LoadCharacter<kSwapped>(at);
  const int32_t length = Utf8Length(value);
  if (at.Room() < length) {
    return false;
  }
  StoreCharacter(at.to, value, length);
  at.Advance(length == 4 ? 2 * kUnit : kUnit, length);
  return true;
}

// The characters that begin before `stop`; there is room for whatever they make.
template <bool kSwapped>
VEK_INLINE void ConvertFreely(Cursor& at, const uint8_t* stop) {
  while (at.from < stop) {
    const uint32_t unit = LoadUnit<kSwapped>(at.from);
    if (unit < 0x80) {
      *at.to = static_cast<uint8_t>(unit);
      at.Advance(kUnit, 1);
    } else if (unit < 0x800) {
      StoreCharacter(at.to, unit, 2);
      at.Advance(kUnit, 2);
    } else if (IsHighSurrogate(unit)) {
      ConvertCharacter<kSwapped>(at);
    } else {
      StoreCharacter(at.to, unit, 3);
      at.Advance(kUnit, 3);
    }
  }
}

constexpr ptrdiff_t kMostBytes = 4;  // that a character makes

// The same; false where the room ends before. As many units as there is room for the most bytes
// need no look at it.
template <bool kSwapped>
VEK_INLINE bool ConvertCharacters(Cursor& at, const uint8_t* stop) {
  while (at.from < stop) {
    const ptrdiff_t free = at.Room() / kMostBytes * kUnit;
    if (free == 0) {
      if (!ConvertCharacter<kSwapped>(at)) {
        return false;
      }
      continue;
    }
    ConvertFreely<kSwapped>(at, free < stop - at.from ? at.from + free : stop);
  }
  return true;
}

// ---- Steps.

template <bool kSwapped>
VEK_INLINE Units LoadUnits(const uint8_t* p) {
  const Units units = As<Units>(LoadAny(p));
  return kSwapped ? SwapBytes(units) : units;
}

VEK_INLINE Units BelowMask(Units units, uint16_t mask) {
  return (units & SplatUnit(mask)) == SplatUnit(0);
}

VEK_INLINE Units IsAscii(Units units) { return BelowMask(units, 0xFF80); }
VEK_INLINE Units IsShort(Units units) { return BelowMask(units, 0xF800); }

VEK_INLINE bool All(Units mask) { return LaneBits(mask) == 0xFFFF; }

// 32 units a step, as long as they are ASCII; false if there were not that many.
template <bool kSwapped>
VEK_INLINE bool ConvertAsciiRun(Cursor& at) {
  bool any = false;
  while (at.Left() >= 4 * kBlock && at.Room() >= 2 * kBlock) {
    const Units u0 = LoadUnits<kSwapped>(at.from);
    const Units u1 = LoadUnits<kSwapped>(at.from + kBlock);
    const Units u2 = LoadUnits<kSwapped>(at.from + 2 * kBlock);
    const Units u3 = LoadUnits<kSwapped>(at.from + 3 * kBlock);
    if (!All(IsAscii((u0 | u1) | (u2 | u3)))) {
      break;
    }
    StoreAny(at.to, Narrow(u0, u1));
    StoreAny(at.to + kBlock, Narrow(u2, u3));
    at.Advance(4 * kBlock, 2 * kBlock);
    any = true;
  }
  return any;
}

// Where the bytes of each unit end, counted from the first: byte i of the result is the sum of the
// lengths of the units 0 to i.
VEK_INLINE uint64_t Ends(Units lengths) {
  return LowHalf(Narrow(lengths, lengths)) * 0x0101010101010101U;
}

VEK_INLINE ptrdiff_t EndOf(uint64_t ends, int unit) {
  return static_cast<ptrdiff_t>(ends >> (8 * unit) & 0xFF);
}

// The two bytes of units below 0x800, of which ASCII needs the first only.
VEK_INLINE Units ShortBytes(Units units) {
  return (units >> 6) | ((units << 8) & SplatUnit(0x3F00)) | SplatUnit(0x80C0);
}

// Units below 0x800, two at a time:
//
//   aa..bbbb  ->  aabbbb..    where the first of the two is ASCII
VEK_INLINE void ConvertShort(Cursor& at, Units units) {
  const Units ascii = IsAscii(units);
  const Halves bytes = As<Halves>(Select(ascii, units, ShortBytes(units)));
  const Halves closed =
      (bytes & SplatHalf(0x000000FF000000FF)) | ((bytes >> 8) & SplatHalf(0x00FFFF0000FFFF00));
  const Halves pairs = Select(As<Halves>(RepeatEven(ascii)), closed, bytes);
  const uint64_t ends = Ends(SplatUnit(2) + ascii);
  const uint64_t low = LowHalf(pairs);
  const uint64_t high = HighHalf(pairs);
  StoreWord(at.to, static_cast<uint32_t>(low));
  StoreWord(at.to + EndOf(ends, 1), static_cast<uint32_t>(low >> 32));
  StoreWord(at.to + EndOf(ends, 3), static_cast<uint32_t>(high));
  StoreWord(at.to + EndOf(ends, 5), static_cast<uint32_t>(high >> 32));
  at.Advance(kBlock, EndOf(ends, 7));
}

// The first two bytes of every unit, one unit each, and how many bytes there are.
struct UnitBytes {
  Units firstTwo;
  Units lengths;
};

// The first two of three bytes, and the third.
VEK_INLINE Units LongBytes(Units units) {
  return (units >> 12) | ((units << 2) & SplatUnit(0x3F00)) | SplatUnit(0x80E0);
}

VEK_INLINE Units ThirdBytes(Units units) { return (units & SplatUnit(0x3F)) | SplatUnit(0x80); }

VEK_INLINE UnitBytes BytesOfUnits(Units units) {
  const Units ascii = IsAscii(units);
  const Units isShort = IsShort(units);
  const Units three = LongBytes(units);
  return {Select(ascii, units, Select(isShort, ShortBytes(units), three)),
          SplatUnit(3) + isShort + ascii};
}

VEK_INLINE Units HighSurrogateBytes(Units units) {
  const Units bits = (units & SplatUnit(0x03FF)) + SplatUnit(0x40);
  return (bits >> 8) | ((bits << 6) & SplatUnit(0x3F00)) | SplatUnit(0x80F0);
}

VEK_INLINE Units LowSurrogateBytes(Units units) {
  const Units high = As<Units>(LanesUp<kUnit>(As<Block>(units)));
  return ((high & SplatUnit(0x0003)) << 4) | ((units >> 6) & SplatUnit(0x000F)) |
         ((units << 8) & SplatUnit(0x3F00)) | SplatUnit(0x8080);
}

// Four units' bytes, each in four lanes, to the positions that follow from the ends.
VEK_INLINE void StoreFourUnits(uint8_t* to, Units bytes, uint64_t ends) {
  const uint64_t low = LowHalf(bytes);
  const uint64_t high = HighHalf(bytes);
  StoreWord(to, static_cast<uint32_t>(low));
  StoreWord(to + EndOf(ends, 0), static_cast<uint32_t>(low >> 32));
  StoreWord(to + EndOf(ends, 1), static_cast<uint32_t>(high));
  StoreWord(to + EndOf(ends, 2), static_cast<uint32_t>(high >> 32));
}

VEK_INLINE void StoreBytes(Cursor& at, Units units, const UnitBytes& bytes, int count) {
  const Units third = ThirdBytes(units);
  const uint64_t ends = Ends(bytes.lengths);
  StoreFourUnits(at.to, InterleaveLow(bytes.firstTwo, third), ends);
  // The second four count from the end of the first.
  const ptrdiff_t half = EndOf(ends, 3);
  StoreFourUnits(at.to + half, InterleaveHigh(bytes.firstTwo, third),
                 (ends >> 32) - static_cast<uint64_t>(half) * 0x01010101U);
  at.Advance(count * kUnit, EndOf(ends, count - 1));
}

// Units with surrogates among them; false where one of these is unpaired.
VEK_INLINE bool ConvertPairs(Cursor& at, Units units) {
  const Units kind = units & SplatUnit(0xFC00);
  const Units high = kind == SplatUnit(0xD800);
  const Units low = kind == SplatUnit(0xDC00);
  if (((LaneBits(high) << 2) & 0xFFFF) != LaneBits(low)) {
    return false;
  }
  UnitBytes bytes = BytesOfUnits(units);
  bytes.firstTwo = Select(high, HighSurrogateBytes(units), bytes.firstTwo);
  bytes.firstTwo = Select(low, LowSurrogateBytes(units), bytes.firstTwo);
  bytes.lengths = bytes.lengths + (high | low);
  // A high surrogate at the end of the step waits for its partner.
  StoreBytes(at, units, bytes, (LaneBits(high) >> 15) != 0 ? 7 : 8);
  return true;
}

// Twelve bytes from four lanes of three, whose fourth byte is zero; four more are stored.
VEK_INLINE void StoreFourOfThree(uint8_t* to, Units lanes) {
  const Halves halves = As<Halves>(lanes);
  const Halves six =
      (halves & SplatHalf(0x0000000000FFFFFF)) | ((halves >> 8) & SplatHalf(0x0000FFFFFF000000));
  StoreLowHalf(to, six);
  StoreHighHalf(to + 6, six);
}

// Units that make three bytes each, as in East Asian text; false if another is among them.
VEK_INLINE bool ConvertThrees(Cursor& at, Units units) {
  const Units range = units & SplatUnit(0xF800);
  if (LaneBits((range == SplatUnit(0)) | (range == SplatUnit(0xD800))) != 0) {
    return false;
  }
  const Units firstTwo = LongBytes(units);
  const Units third = ThirdBytes(units);
  StoreFourOfThree(at.to, InterleaveLow(firstTwo, third));
  StoreFourOfThree(at.to + 12, InterleaveHigh(firstTwo, third));
  at.Advance(kBlock, kStepRoom);
  return true;
}

// One step on 8 units; false where it needs the rule for one character.
VEK_INLINE bool ConvertBlock(Cursor& at, Units units) {
  if (All(IsShort(units))) {
    ConvertShort(at, units);
    return true;
  }
  if (ConvertThrees(at, units)) {
    return true;
  }
  if (LaneBits((units & SplatUnit(0xF800)) == SplatUnit(0xD800)) != 0) {
    return ConvertPairs(at, units);
  }
  StoreBytes(at, units, BytesOfUnits(units), kStepUnits);
  return true;
}

// Steps that may store more than they make. ASCII is looked for once in four: no one foresees which
// eight units of a text that is mostly ASCII are nothing else, and a wrong guess costs more than
// taking them as units below 0x800.
template <bool kSwapped>
VEK_INLINE void ConvertDirectly(Cursor& at) {
  for (uint32_t steps = 0; at.Left() >= kDirectSource && at.Room() >= kDirectRoom; ++steps) {
    if (steps % 4 == 0 && ConvertAsciiRun<kSwapped>(at)) {
      continue;
    }
    if (!ConvertBlock(at, LoadUnits<kSwapped>(at.from))) {
      ConvertCharacters<kSwapped>(at, at.from + kBlock);
    }
  }
}

// ---- The rest.

// The rest of a text that has eight units in all, eight units a step. The last step reaches back
// over units that are converted already: where all of it is ASCII, so were they, and their bytes
// stay the same.
template <bool kSwapped>
VEK_INLINE void ConvertRest(Cursor& at) {
  while (at.Left() >= kBlock) {
    const Units units = LoadUnits<kSwapped>(at.from);
    if (All(IsAscii(units)) && at.Room() >= kStepUnits) {
      StoreLowHalf(at.to, Narrow(units, units));
      at.Advance(kBlock, kStepUnits);
    } else if (!ConvertCharacters<kSwapped>(at, at.from + kBlock)) {
      return;
    }
  }
  const ptrdiff_t count = at.Left() / kUnit;
  if (count >= 2 && at.Room() >= count) {
    const Units units = LoadUnits<kSwapped>(at.fromEnd - kBlock);
    if (All(IsAscii(units))) {
      StoreLowHalf(at.to + count - kStepUnits, Narrow(units, units));
      at.Advance(at.Left(), count);
      return;
    }
  }
  ConvertCharacters<kSwapped>(at, at.fromEnd);
}

// ---- Short texts of ASCII; false where it isn't.

// 8 to 16 units, by two blocks that overlap.
template <bool kSwapped>
VEK_INLINE bool ConvertAsciiBlocks(Cursor& at) {
  const Units first = LoadUnits<kSwapped>(at.from);
  const Units last = LoadUnits<kSwapped>(at.fromEnd - kBlock);
  if (!All(IsAscii(first | last))) {
    return false;
  }
  const ptrdiff_t count = at.Left() / kUnit;
  const Block bytes = Narrow(first, last);
  StoreLowHalf(at.to, bytes);
  StoreHighHalf(at.to + count - kStepUnits, bytes);
  at.Advance(at.Left(), count);
  return true;
}

// 4 to 7 units, by two halves that overlap.
template <bool kSwapped>
VEK_INLINE bool ConvertAsciiHalves(Cursor& at) {
  const Block ends = LowHalves(LoadHalf(at.from), LoadHalf(at.fromEnd - kBlock / 2));
  const Units units = kSwapped ? SwapBytes(As<Units>(ends)) : As<Units>(ends);
  if (!All(IsAscii(units))) {
    return false;
  }
  const uint64_t bytes = LowHalf(Narrow(units, units));
  const ptrdiff_t count = at.Left() / kUnit;
  StoreWord(at.to, static_cast<uint32_t>(bytes));
  StoreWord(at.to + count - 4, static_cast<uint32_t>(bytes >> 32));
  at.Advance(at.Left(), count);
  return true;
}

// 1 to 3 units, of which the middle one may be the first or the last.
template <bool kSwapped>
VEK_INLINE bool ConvertAsciiThree(Cursor& at) {
  const ptrdiff_t count = at.Left() / kUnit;
  const ptrdiff_t inner = count >> 1;
  const uint32_t first = LoadUnit<kSwapped>(at.from);
  const uint32_t middle = LoadUnit<kSwapped>(at.from + kUnit * inner);
  const uint32_t last = LoadUnit<kSwapped>(at.fromEnd - kUnit);
  if ((first | middle | last) >= 0x80) {
    return false;
  }
  at.to[0] = static_cast<uint8_t>(first);
  at.to[inner] = static_cast<uint8_t>(middle);
  at.to[count - 1] = static_cast<uint8_t>(last);
  at.Advance(at.Left(), count);
  return true;
}

template <bool kSwapped>
VEK_INLINE bool ConvertShortAscii(Cursor& at) {
  return at.Left() < kBlock / 2 ? ConvertAsciiThree<kSwapped>(at)
         : at.Left() < kBlock   ? ConvertAsciiHalves<kSwapped>(at)
                                : ConvertAsciiBlocks<kSwapped>(at);
}

// ---- All together.

VEK_INLINE Cursor MakeCursor(const uint8_t* source, int32_t length, uint8_t* destination,
                             int32_t capacity) {
  return {source, source + kUnit * length, destination, destination + capacity};
}

VEK_INLINE vekStatus Report(const Cursor& at, const uint8_t* source, int32_t* length,
                            const uint8_t* destination, int32_t* capacity) {
  *length = static_cast<int32_t>((at.from - source) / kUnit);
  *capacity = static_cast<int32_t>(at.to - destination);
  return StatusNoError;
}

template <bool kSwapped>
VEK_INLINE vekStatus ConvertText(const uint8_t* source, int32_t* length, uint8_t* destination,
                                 int32_t* capacity) {
  Cursor at = MakeCursor(source, *length, destination, *capacity);
  ConvertDirectly<kSwapped>(at);
  ConvertRest<kSwapped>(at);
  return Report(at, source, length, destination, capacity);
}

template <bool kSwapped>
VEK_INLINE vekStatus ConvertShortText(const uint8_t* source, int32_t* length, uint8_t* destination,
                                      int32_t* capacity) {
  Cursor at = MakeCursor(source, *length, destination, *capacity);
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

// Short ASCII needs no more than the registers that a call may change.
template <bool kSwapped, class Text>
VEK_INLINE vekStatus Convert(const uint8_t* source, int32_t* length, uint8_t* destination,
                             int32_t* capacity, Text convertShort, Text convertLong) {
  if (*length <= 2 * kStepUnits && *capacity >= *length) {
    Cursor at = MakeCursor(source, *length, destination, *capacity);
    if (ConvertShortAscii<kSwapped>(at)) {
      return Report(at, source, length, destination, capacity);
    }
  }
  return *length < kStepUnits + kSurplus ? convertShort(source, length, destination, capacity)
                                         : convertLong(source, length, destination, capacity);
}

}  // namespace

VEK_KERNEL vekStatus Utf16ToUtf8(const uint8_t* source, int32_t* length, uint8_t* destination,
                                 int32_t* capacity) {
  return Convert<false>(source, length, destination, capacity, ConvertShortNative, ConvertNative);
}

VEK_KERNEL vekStatus Utf16SwappedToUtf8(const uint8_t* source, int32_t* length,
                                        uint8_t* destination, int32_t* capacity) {
  return Convert<true>(source, length, destination, capacity, ConvertShortSwapped, ConvertSwapped);
}

}  // namespace vekch::kernels
