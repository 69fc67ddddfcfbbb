// UTF-8 to UTF-16. Far from both ends 16 bytes are taken a step, whatever mix of well-formed
// characters they hold; near the ends, and where a step meets anything else, one character at a
// time by the common reading rule.
//
// There is no instruction here that moves bytes freely, so a step goes without: it computes a unit
// at every byte as if the byte were the one that its character's unit stands at, then packs those
// that really are. Which byte that is, is chosen so that one formula serves:
//
//   bytes                                   unit at    its low byte   its high byte
//   0xxxxxxx                                first      xxxxxxx        0
//   110aaabb 10cccccc                       first      bbcccccc       00000aaa
//   1110aaaa 10bbbbcc 10dddddd              second     ccdddddd       aaaabbbb
//   11110aaa 10bbcccc 10ddeeff 10gggggg     second     (high surrogate, see HighSurrogates)
//                                           third      ffgggggg       110111ee
//
// A step stores up to four units more than it makes. That is harmless where the text still to come
// must fill them; elsewhere a step works beside the destination and only what it made is copied.

#include "strings/kernels/byte_range.h"
#include "strings/kernels/lanes.h"
#include "unicode/cursor.h"
#include "unicode/utf8.h"
#include "unicode/utf_kernels.h"

namespace vekch::kernels {
namespace {

constexpr ptrdiff_t kStepRoom = kBlock * kUnit;  // that a step may fill

// With so much of the source a step may store into the destination: behind its 16 bytes are 12
// more, which make at least four units, since no character takes more than three bytes for a unit.
constexpr ptrdiff_t kDirectSource = kBlock + 12;

// ---- One character.

template <bool kSwapped>
VEK_INLINE void ConvertCharacter(Cursor& at) {
  const Utf8Character character = ReadUtf8(at.from, at.fromEnd);
  if (character.value <= 0xFFFF) {
    StoreUnit<kSwapped>(at.to, character.value);
    at.Advance(character.length, kUnit);
    return;
  }
  // Values above 0x10FFFF lose their upper bits here.
  const uint32_t high = 0xD800 + (((character.value - 0x10000) >> 10) & 0x3FF);
  const uint32_t low = 0xDC00 + (character.value & 0x3FF);
  // In swapped order the pair comes low first, and its bytes are not swapped; and it is written
  // whole also where one unit of room is left.
  StoreWord<uint32_t>(at.to, kSwapped ? low | (high << 16) : high | (low << 16));
  at.Advance(character.length, 2 * kUnit);
}

// The characters that begin in front of `stop`, as far as there is room.
template <bool kSwapped>
VEK_INLINE void ConvertCharacters(Cursor& at, const uint8_t* stop) {
  while (at.from < stop && at.Room() > 0) {
    ConvertCharacter<kSwapped>(at);
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
// Four units are packed in two rounds. A unit in front of which d of the four are dropped moves
// down by one place in the first round if d is odd, and by two in the second if d is 2 or 3:
//
//   kept    . B . D      round 1   B . D .  (B and D have d = 1 and 2)
//                        round 2   B D . .

struct PackRow {
  uint64_t byOne;  // places to which the unit one place above moves
  uint64_t byTwo;
  uint64_t bytes;  // that the kept units fill
  uint64_t unused;
};

struct PackTable {
  alignas(32) PackRow rows[16];  // for each set of kept places
};

constexpr PackRow MakePackRow(int kept) {
  PackRow row = {};
  int dropped = 0;
  for (int place = 0; place < 4; ++place) {
    if ((kept >> place & 1) == 0) {
      ++dropped;
      continue;
    }
    row.bytes += kUnit;
    if ((dropped & 1) != 0) {
      row.byOne |= uint64_t{0xFFFF} << (16 * (place - 1));
    }
    if ((dropped & 2) != 0) {
      row.byTwo |= uint64_t{0xFFFF} << (16 * (place - dropped));
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

// ---- A mix of well-formed characters of up to kLongest bytes.

// The lanes of the first bytes of characters of two, three and four bytes.
struct Leads {
  Block two;
  Block three;
  Block four;
};

template <int kLongest>
VEK_INLINE Leads FindLeads(Block bytes) {
  return {InRange(bytes, MakeRange(0xC2, 0xDF)),
          kLongest >= 3 ? InRange(bytes, MakeRange(0xE0, 0xEF)) : ZeroBlock(),
          kLongest >= 4 ? InRange(bytes, MakeRange(0xF0, 0xF7)) : ZeroBlock()};
}

// The same as bits, with all other bytes of interest.
struct ByteKinds {
  uint32_t ascii;
  uint32_t two;
  uint32_t three;
  uint32_t four;
  uint32_t continuation;
};

template <int kLongest>
VEK_INLINE ByteKinds KindsOfBytes(Block bytes, const Leads& leads) {
  return {LaneBits(bytes) ^ 0xFFFF, LaneBits(leads.two), kLongest >= 3 ? LaneBits(leads.three) : 0,
          kLongest >= 4 ? LaneBits(leads.four) : 0, LaneBits(SignedBelow(bytes, Splat(0xC0)))};
}

// Whether every byte has its place in a character; what stands behind the block is not looked at.
VEK_INLINE bool WellPlaced(const ByteKinds& kinds) {
  const uint32_t lead = kinds.two | kinds.three | kinds.four;
  const uint32_t due = (lead << 1) | ((kinds.three | kinds.four) << 2) | (kinds.four << 3);
  return (((due ^ kinds.continuation) & 0xFFFF) |
          (kinds.ascii ^ lead ^ kinds.continuation ^ 0xFFFF)) == 0;
}

// The bytes that units stand at, of the characters that the block's end does not cut.
VEK_INLINE uint32_t KeptBytes(const ByteKinds& kinds) {
  const uint32_t four = kinds.four & 0x1FFF;
  return kinds.ascii | (kinds.two & 0x7FFF) | ((kinds.three & 0x3FFF) << 1) | (four << 1) |
         (four << 2);
}

// Bytes of a well-formed block up to the character, if any, that the block's end cuts. Looked up in
// memory again, not in the bits, since the next step waits for it.
template <int kLongest>
VEK_INLINE int32_t WholeCharacters(const uint8_t* p) {
  int32_t length = kBlock - static_cast<int32_t>(p[15] >= 0xC0);
  if constexpr (kLongest >= 3) {
    length -= 2 * static_cast<int32_t>(p[14] >= 0xE0);
  }
  if constexpr (kLongest >= 4) {
    length -= 3 * static_cast<int32_t>(p[13] >= 0xF0);
  }
  return length;
}

// The units at all bytes, of which those at the kept bytes count, and the bytes at which an
// overlong form of three or four bytes shows.
struct FoundUnits {
  UnitBytes units;
  Block overlong;
};

// The high surrogates, at the second bytes of four. The subtraction of 0x10000 from the value is
// one of 1 from aaabb, which must not be 0:
//
//   11110aaa 10bbcccc 10dd....    high byte 110110aa, from aaabb - 1
//                                 low byte  bbccccdd, less 0x40
VEK_INLINE FoundUnits HighSurrogates(Block bytes, Block seconds) {
  const Block borrow = (bytes & Splat(0x30)) == ZeroBlock();  // all ones, that is -1
  const Block upper = (LanesUp<1>(bytes) & Splat(0x07)) + borrow;
  return {{(BitsUp<2>(bytes) + Splat(0xC0)) | (BitsDown<4>(LanesDown<1>(bytes)) & Splat(0x03)),
           (upper & Splat(0x03)) | Splat(0xD8)},
          SignedBelow(upper & seconds, ZeroBlock())};
}

template <int kLongest>
VEK_INLINE FoundUnits FindUnits(Block bytes, const Leads& leads) {
  const Block low = BitsUp<6>(bytes) | (LanesDown<1>(bytes) & Splat(0x3F));
  const Block high = BitsDown<2>(bytes) & Splat(0x0F);
  if constexpr (kLongest == 2) {
    return {{Select(leads.two, low, bytes), high & leads.two}, ZeroBlock()};
  }
  const Block middles = LanesUp<1>(leads.three);
  const Block highOfThree = high | BitsUp<4>(LanesUp<1>(bytes));
  const Block overlong = middles & ((highOfThree & Splat(0xF8)) == ZeroBlock());
  const Block highs = (high & leads.two) | (highOfThree & middles);
  const Block multi = leads.two | middles;
  if constexpr (kLongest == 3) {
    return {{Select(multi, low, bytes), highs}, overlong};
  }
  const Block seconds = LanesUp<1>(leads.four);
  const Block thirds = LanesUp<2>(leads.four);
  const FoundUnits surrogates = HighSurrogates(bytes, seconds);
  return {{Select(seconds, surrogates.units.low, Select(multi | thirds, low, bytes)),
           highs | (thirds & (high | Splat(0xDC))) | (seconds & surrogates.units.high)},
          overlong | surrogates.overlong};
}

template <bool kSwapped, int kLongest>
VEK_INLINE bool ConvertMix(Cursor& at, Block bytes) {
  const Leads leads = FindLeads<kLongest>(bytes);
  const ByteKinds kinds = KindsOfBytes<kLongest>(bytes, leads);
  const FoundUnits found = FindUnits<kLongest>(bytes, leads);
  if (!WellPlaced(kinds) || (kLongest > 2 && LaneBits(found.overlong) != 0)) {
    return false;
  }
  const uint32_t kept = KeptBytes(kinds);
  at.to = StoreKept(at.to, As<Halves>(FirstUnits<kSwapped>(found.units)), kept);
  at.to = StoreKept(at.to, As<Halves>(LastUnits<kSwapped>(found.units)), kept >> 8);
  at.from += WholeCharacters<kLongest>(at.from);
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

constexpr ptrdiff_t kRunReach = 26;  // eight characters, and what is loaded behind the last

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

// ---- All together.

// One step on 16 bytes that are not all ASCII, or more; false where it needs the rule for one
// character.
template <bool kSwapped>
VEK_INLINE bool ConvertBlock(Cursor& at, Block bytes) {
  const uint32_t longLeads = LaneBits(InRange(bytes, MakeRange(0xE0, 0xFF)));
  if (longLeads == 0) {
    return ConvertMix<kSwapped, 2>(at, bytes);
  }
  constexpr uint32_t kEveryThird = 0x1249;
  if ((longLeads & 0x7FFF) == kEveryThird && ConvertThreeByteRun<kSwapped>(at)) {
    return true;
  }
  if (LaneBits(InRange(bytes, MakeRange(0xF0, 0xFF))) == 0) {
    return ConvertMix<kSwapped, 3>(at, bytes);
  }
  // A step of its own for runs of four-byte characters gained nothing: emoji come one to three
  // among words. Pairs in swapped order, with their own order of units and bytes, are left to the
  // rule.
  return !kSwapped && ConvertMix<false, 4>(at, bytes);
}

enum class Stores { kDirect, kAside };

template <bool kSwapped, Stores kStores>
VEK_INLINE void ConvertSteps(Cursor& at) {
  constexpr bool kDirect = kStores == Stores::kDirect;
  while (at.Left() >= (kDirect ? kDirectSource : kBlock) && at.Room() >= kStepRoom) {
    const Block bytes = LoadAny(at.from);
    if (LaneBits(bytes) == 0) {
      StoreAscii<kSwapped>(at.to, bytes);
      at.Advance(kBlock, kStepRoom);
      ConvertAsciiRun<kSwapped>(at);
      continue;
    }
    const auto step = [=](Cursor& cursor) { return ConvertBlock<kSwapped>(cursor, bytes); };
    if (!(kDirect ? step(at) : RunAside(at, step))) {
      ConvertCharacters<kSwapped>(at, at.from + kBlock);
    }
  }
}

// What the steps leave: up to 15 bytes, or more with little room.
template <bool kSwapped>
VEK_INLINE void ConvertRest(Cursor& at) {
  while (at.Left() >= 8 && at.Room() >= 8 * kUnit) {
    const Block bytes = LoadHalf(at.from);
    if (LaneBits(bytes) == 0) {
      StoreAny(at.to, FirstUnits<kSwapped>({bytes, ZeroBlock()}));
      at.Advance(8, 8 * kUnit);
    } else {
      ConvertCharacters<kSwapped>(at, at.from + 8);
    }
  }
  ConvertCharacters<kSwapped>(at, at.fromEnd);
}

template <bool kSwapped>
VEK_INLINE Converted Convert(const uint8_t* source, int32_t length, uint8_t* destination,
                             int32_t capacity) {
  Cursor at = {source, source + length, destination, destination + kUnit * capacity};
  ConvertSteps<kSwapped, Stores::kDirect>(at);
  ConvertSteps<kSwapped, Stores::kAside>(at);
  ConvertRest<kSwapped>(at);
  return {static_cast<int32_t>(at.from - source),
          static_cast<int32_t>((at.to - destination) / kUnit)};
}

}  // namespace

VEK_KERNEL Converted Utf8ToUtf16(const uint8_t* source, int32_t length, uint8_t* destination,
                                 int32_t capacity) {
  return Convert<false>(source, length, destination, capacity);
}

VEK_KERNEL Converted Utf8ToUtf16Swapped(const uint8_t* source, int32_t length, uint8_t* destination,
                                        int32_t capacity) {
  return Convert<true>(source, length, destination, capacity);
}

}  // namespace vekch::kernels
