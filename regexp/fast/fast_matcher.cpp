// SPDX-License-Identifier: MIT

// A loop over the operations, and a stack of frames for what may have to be tried or undone. A
// frame is put aside only where the next byte leaves more than one way open, and an undoing only
// while there is such a frame.

#include "regexp/fast/fast_matcher.h"

#include "regexp/characters/bytes.h"
#include "regexp/characters/character_set.h"
#include "regexp/fast/wide_length.h"
#include "regexp/object/record_notes.h"
#include "strings/kernels/byte_range.h"
#include "strings/kernels/ends.h"
#include "strings/kernels/range_set.h"
#include "strings/kernels/taken.h"
#include "unicode/utf8.h"

namespace vekch::regexp {
namespace {

constexpr int32_t kFirstFrames = 60;
constexpr int32_t kFewFrames = 1000;
constexpr int32_t kManyFrames = 6000;
// Returns to choices after which a try is done again with the memory, once there is something in
// it.
constexpr int32_t kSomeReturns = 64;
constexpr int32_t kFirstReturns = 500;
constexpr int64_t kForgetfulReturns = 20000;
constexpr uint8_t kNewline = '\n';

// Bytes of the character at `at` if the record accepts it, else 0, looked up each time. `at` lies
// before the limit.
int32_t CharacterLength(const ProgramNode& atom, const uint8_t* at, const uint8_t* limit) {
  const Utf8Character character = ReadUtf8(at, limit);
  const bool isMember = character.length == 1 && HasSet(atom)
                            ? SetOf(atom)->member[*at] != 0
                            : AcceptsWide(atom, static_cast<int32_t>(character.value));
  return isMember ? character.length : 0;
}

enum class FrameKind : uint8_t {
  kWays,        // the ways of a choice that are left
  kBytes,       // a run that gives back a byte at a time
  kCharacters,  // a run that gives back a character at a time
  kTakesByte,   // a lazy repetition that takes one more
  kTakesCharacter,
  kSlot,   // undoes a slot
  kStart,  // undoes where a group began
  kLoop,   // undoes that and the counts
  kSub,    // where a sub-program began
};

struct Frame {
  const uint8_t* at;
  union {
    const uint8_t* bound;  // how far a run gives back, or a lazy repetition may go
    int64_t length;        // of a slot
    Frame* around;         // the sub-program around
    int32_t counts[2];     // of a loop; characters that a lazy repetition may take yet
  };
  uint16_t op;
  FrameKind kind;
  uint8_t ways;
  union {
    int32_t depth;   // levels that repetitions have been charged with
    uint32_t start;  // kStart, kLoop: offset where the group began
    int32_t slot;    // kSlot
  };
};
static_assert(sizeof(Frame) == 24);

// What is searched, and in what.
struct FastText {
  RegExpState* state;
  int32_t allowance;
  const uint8_t* subject;
  const uint8_t* subjectEnd;
  const uint8_t* limit;
};

// What a try is given to work with.
struct Means {
  int64_t returns;
  Frame* frames;
  int32_t frameCount;
  FastResult withoutFrames;
};

// With the memory of failures, or without.
template <bool kRemembers>
struct TryMemory {
  FastCall* call;
  const uint8_t* tryStart;
};
template <>
struct TryMemory<false> {};

template <bool kRemembers>
class FastMatcher {
 public:
  FastMatcher(const FastProgram& fastProgram, const FastText& text, const Means& means,
              const TryMemory<kRemembers>& failures)
      : memory(failures),
        ops(fastProgram.ops),
        isUtf8(fastProgram.isUtf8),
        allowance(text.allowance),
        slots(fastProgram.slots),
        groups(GroupsOf(text.state)),
        subject(text.subject),
        subjectEnd(text.subjectEnd),
        limit(text.limit),
        base(means.frames),
        framesEnd(means.frames + means.frameCount),
        whenFull(means.withoutFrames),
        returnsLeft(means.returns) {}

  VEK_INLINE FastResult Run(const uint8_t* start, int32_t entry) {
    Registers r = {ops + entry, start, base, 0};
    for (bool isOver = false; !isOver;) {
      if (!Step(r, &isOver) && !Resume(r)) {
        return FastResult::kFail;
      }
    }
    if (stopped != FastResult::kMatch) {
      return stopped;
    }
    slots[0].pointer = start;
    slots[0].length = static_cast<int32_t>(r.at - start);
    return FastResult::kMatch;
  }

  int64_t ReturnsLeft() const { return returnsLeft; }

 private:
  struct Registers {
    const FastOp* op;
    const uint8_t* at;
    Frame* top;
    int32_t depth;  // levels that repetitions have been charged with
  };

  // What is rarely needed is called with the registers aside, so that they are no memory elsewhere.
  template <class Function, class... Arguments>
  VEK_INLINE bool Aside(Registers& r, Function function, Arguments... arguments) {
    Registers copy = r;
    const bool goesOn = (this->*function)(copy, arguments...);
    r = copy;
    return goesOn;
  }

  VEK_INLINE bool GoTo(Registers& r, uint32_t index) {
    r.op = ops + index;
    return true;
  }

  VEK_INLINE bool GoOn(Registers& r) { return GoAfter(r, *r.op); }

  VEK_INLINE bool GoAfter(Registers& r, const FastOp& op) {
    r.op = &op + 1;
    return true;
  }

  VEK_INLINE bool Stop(Registers& r, FastResult result) {
    static constexpr FastOp kStop = {FastCode::kAccept, 0, 0, {}, {}, {}};
    stopped = result;
    r.op = &kStop;
    return true;
  }

  VEK_INLINE bool GiveUp(Registers& r) { return Stop(r, FastResult::kGivesUp); }

  VEK_INLINE bool HasRoom(Registers& r) const { return r.top < framesEnd; }

  // ---- The memory of failures. Of a choice it holds that no way leads on; of a repetition that
  // what follows it does not.

  static int64_t VariantsOf(const FastProgram& program) {
    return int64_t{1} << program.emptyLoopCount;
  }

  int64_t VariantAt(const FastProgram& program, const uint8_t* at) const {
    int64_t variant = 0;
    for (int32_t i = 0; i < program.emptyLoopCount; ++i) {
      const uint32_t start = groups[program.emptyLoops[i]].matching.start;
      variant |= int64_t{start == static_cast<uint32_t>(at - subject)} << i;
    }
    return variant;
  }

  // Whether a choice or repetition is known to fail where the registers are, or would be.
  VEK_INLINE bool IsKnown(const FastOp& choice, const uint8_t* at) {
    if constexpr (kRemembers) {
      Reach(at);
      const FastProgram& program = *memory.call->program;
      return memory.call->memory.Knows(&choice - ops, at, VariantsOf(program),
                                       VariantAt(program, at)) &&
             (memory.call->furthest - memory.tryStart) * program.mostCost <= allowance;
    }
    return false;
  }

  // The tries have come to a position.
  VEK_INLINE void Reach(const uint8_t* at) {
    if constexpr (kRemembers) {
      memory.call->furthest = at > memory.call->furthest ? at : memory.call->furthest;
    }
  }

  VEK_INLINE void Remember(const FastOp& choice, const uint8_t* at) {
    if constexpr (kRemembers) {
      const FastProgram& program = *memory.call->program;
      memory.call->memory.Note(&choice - ops, at, VariantsOf(program), VariantAt(program, at));
    }
  }

  VEK_INLINE Frame* Push(Registers& r, FrameKind kind, const uint8_t* position) {
    Frame* const frame = r.top++;
    frame->at = position;
    frame->op = static_cast<uint16_t>(r.op - ops);
    frame->kind = kind;
    frame->depth = r.depth;
    return frame;
  }

  VEK_INLINE static bool IsEither(uint8_t byte, const uint8_t* pair) {
    return byte == pair[0] || byte == pair[1];
  }

  // One operation; false where it fails. Sets `isOver` at the end.
  VEK_INLINE bool Step(Registers& r, bool* isOver) {
    const FastOp& now = *r.op;
    switch (now.code) {
      case FastCode::kByte:
        return r.at < limit && IsEither(*r.at, now.pair) && (++r.at, GoOn(r));
      case FastCode::kBytes:
        return limit - r.at >= now.length && SameBytes(r.at, now.bytes, now.length, false) &&
               (r.at += now.length, GoOn(r));
      case FastCode::kCaselessBytes:
        return limit - r.at >= now.length && SameBytes(r.at, now.bytes, now.length, true) &&
               (r.at += now.length, GoOn(r));
      case FastCode::kAnyByte:
        return r.at < limit && (++r.at, GoOn(r));
      case FastCode::kSet:
        return r.at < limit && now.bytes[*r.at] != 0 && (++r.at, GoOn(r));
      case FastCode::kOpenSet:
      case FastCode::kCharacter: {
        const int32_t length = r.at < limit ? LengthAt(now, r.at) : 0;
        return length > 0 && (r.at += length, GoOn(r));
      }
      case FastCode::kCopy:
        return Aside(r, &FastMatcher<kRemembers>::Copy);
      case FastCode::kByteRun:
        return ByteRun<FastCode::kByteRun>(r);
      case FastCode::kAnyRun:
        return ByteRun<FastCode::kAnyRun>(r);
      case FastCode::kSetRun:
        return ByteRun<FastCode::kSetRun>(r);
      case FastCode::kSetSpan:
        return Span(r);
      case FastCode::kOptionalSet:
        r.at += r.at < limit && now.bytes[*r.at] != 0 ? 1 : 0;
        return GoOn(r);
      case FastCode::kOpenSetRun:
      case FastCode::kCharacterRun:
        return Aside(r, &FastMatcher<kRemembers>::CharacterRun);
      case FastCode::kLazySet:
        return Aside(r, &FastMatcher<kRemembers>::LazySet);
      case FastCode::kLazyOpenSet:
      case FastCode::kLazyCharacter:
        return Aside(r, &FastMatcher<kRemembers>::LazyCharacter);
      case FastCode::kOpen:
        return Open(r);
      case FastCode::kClose:
        return Close(r);
      case FastCode::kChoice:
        return Choose(r);
      case FastCode::kRepeat:
        r.depth += now.ways.cost;
        return r.depth > allowance ? GiveUp(r) : Choose(r);
      case FastCode::kEnterLoop:
        return Aside(r, &FastMatcher<kRemembers>::EnterLoop);
      case FastCode::kLoop:
        return EndRepetition(r);
      case FastCode::kAtStart:
        return r.at == subject && GoOn(r);
      case FastCode::kAtEnd:
        return IsAtEnd(r.at) && GoOn(r);
      case FastCode::kFixedTwo:
        return Fixed<2>(r);
      case FastCode::kFixedFour:
        return Fixed<4>(r);
      case FastCode::kFixedEight:
        return Fixed<8>(r);
      case FastCode::kFixed:
        return Fixed<kernels::kBlock>(r);
      case FastCode::kAssert:
        return Holds(r.at, now) && GoOn(r);
      case FastCode::kLookaround:
      case FastCode::kAtomic:
        return Aside(r, &FastMatcher<kRemembers>::EnterSub);
      case FastCode::kSubEnd:
        return Aside(r, &FastMatcher<kRemembers>::LeaveSub);
      case FastCode::kJump:
        return GoTo(r, now.next);
      case FastCode::kAccept:
        return *isOver = true;
    }
    __builtin_unreachable();  // those are all
  }

  // ---- Characters and runs of them.

  VEK_INLINE static bool IsOpenSet(const FastOp& character) {
    return character.code == FastCode::kOpenSet || character.code == FastCode::kOpenSetRun ||
           character.code == FastCode::kLazyOpenSet;
  }

  VEK_INLINE int32_t LengthAt(const FastOp& character, const uint8_t* position) const {
    if (IsOpenSet(character)) {
      return *position < 0x80 ? character.bytes[*position] & 1 : ReadUtf8(position, limit).length;
    }
    auto* const set = AidAt<WideSet>(ops, character.aid);
    return set != nullptr ? WideLength(set, position, limit)
                          : CharacterLength(*character.record, position, limit);
  }

  [[gnu::noinline]] bool Copy(Registers& r) {
    const ProgramNode& record = *r.op->record;
    const RegExpFindResult& slot = slots[record.a];
    const bool caseless = IsCaseless(OptionsOf(record));
    return r.at < limit && slot.length >= 0 && slot.length <= limit - r.at &&
           SameBytes(r.at, slot.pointer, slot.length, caseless) && (r.at += slot.length, GoOn(r));
  }

  // Not 0 for a byte that can come after a run; null where all can.
  VEK_INLINE static const uint8_t* FollowersOf(const FastOp& run) {
    if (run.code != FastCode::kSetRun) {
      return run.run.follow;
    }
    return run.run.tables == nullptr ? nullptr : run.run.tables->follow;
  }

  VEK_INLINE bool CanFollow(const FastOp& run, const uint8_t* position) const {
    const uint8_t* const follow = FollowersOf(run);
    return position < limit ? follow == nullptr || follow[*position] != 0
                            : (run.flags & kFollowsAtEnd) != 0;
  }

  // Past members of the operation's set of ranges, 16 at a time. Functions of their own, so that
  // their registers cost nothing where runs are short.
  [[gnu::noinline]] const uint8_t* SkipBlocks(const FastOp& run, const uint8_t* position,
                                              const uint8_t* end) const {
    const auto* const set = AidAt<const kernels::RangeSet>(ops, run.aid);
    return set == nullptr ? position : kernels::SkipMembers(*set, position, end);
  }

  [[gnu::noinline]] const uint8_t* EndOfMembers(const FastOp& run, const uint8_t* position,
                                                const uint8_t* end) const {
    position = SkipBlocks(run, position, end);
    const uint8_t* const members = run.bytes;
    while (position < end && members[*position] != 0) {
      ++position;
    }
    return position;
  }

  // In 16 bytes the one that ends a run, or kBlock.
  VEK_INLINE static int32_t EndInBlock(const FastRanges& ranges, const uint8_t* at) {
    const uint32_t ends = InRanges(kernels::LoadAny(at), ranges.bytes[0], ranges.count);
    return kernels::LowestBit((ends ^ ranges.outside) | 1U << kernels::kBlock);
  }

  template <FastCode kCode>
  VEK_INLINE static const uint8_t* EndOfRun(const FastOp& run, const uint8_t* at,
                                            const uint8_t* end) {
    if (kCode == FastCode::kAnyRun) {
      return end;
    }
    if (kCode == FastCode::kSetRun && end - at >= kernels::kBlock && run.run.tables != nullptr &&
        run.run.tables->ranges.count != 0) {
      int32_t length;
      do {
        length = EndInBlock(run.run.tables->ranges, at);
        at += length;
      } while (length == kernels::kBlock && end - at >= kernels::kBlock);
      if (length < kernels::kBlock) {
        return at;
      }
    }
    const uint8_t* const members = run.bytes;
    const uint8_t first = run.pair[0];
    const uint8_t second = run.pair[1];
    const auto isMember = [&](uint8_t byte) __attribute__((always_inline)) {
      return kCode == FastCode::kSetRun ? members[byte] != 0 : byte == first || byte == second;
    };
    for (; end - at >= 4; at += 4) {
      if (!isMember(at[0])) {
        return at;
      }
      if (!isMember(at[1])) {
        return at + 1;
      }
      if (!isMember(at[2])) {
        return at + 2;
      }
      if (!isMember(at[3])) {
        return at + 3;
      }
    }
    while (at < end && isMember(*at)) {
      ++at;
    }
    return at;
  }

  template <FastCode kCode>
  VEK_INLINE bool ByteRun(Registers& r) {
    const FastOp& run = *r.op;
    const int64_t room = limit - r.at;
    const uint8_t* const bound = run.run.maximum < room ? r.at + run.run.maximum : limit;
    const uint8_t* end = EndOfRun<kCode>(run, r.at, bound);
    const int64_t length = end - r.at;
    Reach(end);
    if (length < run.run.minimum) {
      return false;
    }
    const uint8_t* const begin = r.at;
    if ((run.flags & kGivesNothingBack) != 0) {
      r.at = end;
      return EndFinalRun(r, run, begin);
    }
    const uint8_t* const lowest = begin + run.run.minimum;
    while (!CanFollow(run, end) || IsKnown(run, end)) {
      if (end == lowest) {
        return false;
      }
      --end;
    }
    if ((run.flags & kCaptures) != 0 && !Capture(r, run.end.slot, run.flags, begin, end)) {
      return Stop(r, whenFull);
    }
    return EndRun(r, FrameKind::kBytes, end, lowest);
  }

  VEK_INLINE bool Span(Registers& r) {
    const FastOp& run = *r.op;
    const uint8_t* const begin = r.at;
    r.at = EndOfRun<FastCode::kSetRun>(run, begin, limit);
    Reach(r.at);
    return r.at - begin >= run.run.minimum && EndFinalRun(r, run, begin);
  }

  // Goes on where a run has ended that gives nothing back.
  VEK_INLINE bool EndFinalRun(Registers& r, const FastOp& run, const uint8_t* begin) {
    if ((run.flags & (kTakesByte | kCaptures)) == 0) {
      return GoOn(r);
    }
    const uint8_t* const end = r.at;
    if ((run.flags & kTakesByte) != 0) {
      if (end == limit || !IsEither(*end, run.end.byte)) {
        return false;
      }
      ++r.at;
    }
    if ((run.flags & kCaptures) != 0 && !Capture(r, run.end.slot, run.flags, begin, end)) {
      return Stop(r, whenFull);
    }
    return GoOn(r);
  }

  // Goes on where a run ends that gives back down to `lowest`.
  VEK_INLINE bool EndRun(Registers& r, FrameKind kind, const uint8_t* end, const uint8_t* lowest) {
    if (kRemembers || end > lowest) {
      if (!HasRoom(r)) {
        return Stop(r, whenFull);
      }
      Push(r, kind, end)->bound = lowest;
    }
    r.at = end;
    return GoOn(r);
  }

  [[gnu::noinline]] bool CharacterRun(Registers& r) {
    const FastOp& run = *r.op;
    const uint8_t* end = r.at;
    const uint8_t* lowest = end;
    int32_t count = 0;
    const bool isEndless = run.code == FastCode::kOpenSetRun && run.run.maximum == RegExpUnbounded;
    while (count < run.run.maximum && end < limit) {
      if (isEndless && count >= run.run.minimum) {
        end = EndOfMembers(run, end, limit);  // whole characters, since all of them are members
        break;
      }
      const int32_t length = LengthAt(run, end);
      if (length == 0) {
        break;
      }
      end += length;
      ++count;
      lowest = count <= run.run.minimum ? end : lowest;
    }
    if (count < run.run.minimum) {
      return false;
    }
    const bool isOnly = (run.flags & kGivesNothingBack) != 0;
    while (!CanFollow(run, end) || IsKnown(run, end)) {
      if (isOnly || end == lowest) {
        return false;
      }
      end = PreviousUtf8(end, lowest, limit);
    }
    if (isOnly) {
      r.at = end;
      return GoOn(r);
    }
    return EndRun(r, FrameKind::kCharacters, end, lowest);
  }

  [[gnu::noinline]] bool LazySet(Registers& r) {
    const FastOp& run = *r.op;
    const int64_t room = limit - r.at;
    if (run.run.minimum > room) {
      return false;
    }
    const uint8_t* const bound = run.run.maximum < room ? r.at + run.run.maximum : limit;
    for (int32_t count = 0; count < run.run.minimum; ++count, ++r.at) {
      if (run.bytes[*r.at] == 0) {
        return false;
      }
    }
    return TakeBytes(r, run, bound, nullptr);
  }

  // Takes bytes until what follows can match. The repetition's frame is on top, or there is none.
  VEK_INLINE bool TakeBytes(Registers& r, const FastOp& run, const uint8_t* bound, Frame* frame) {
    r.at = SkipBlocks(run, r.at, bound);
    while (!CanFollow(run, r.at) || IsKnown(run, r.at)) {
      if (r.at == bound || run.bytes[*r.at] == 0) {
        return Drop(r, frame);
      }
      ++r.at;
    }
    if (r.at == bound || run.bytes[*r.at] == 0 || (run.flags & kGivesNothingBack) != 0) {
      Drop(r, frame);
    } else if (frame != nullptr) {
      frame->at = r.at;
    } else if (HasRoom(r)) {
      Push(r, FrameKind::kTakesByte, r.at)->bound = bound;
    } else {
      return Stop(r, whenFull);
    }
    return GoAfter(r, run);
  }

  VEK_INLINE bool Drop(Registers& r, const Frame* frame) {
    r.top -= frame == nullptr ? 0 : 1;
    return false;
  }

  [[gnu::noinline]] bool LazyCharacter(Registers& r) {
    const FastOp& run = *r.op;
    for (int32_t count = 0; count < run.run.minimum; ++count) {
      const int32_t length = r.at < limit ? LengthAt(run, r.at) : 0;
      if (length == 0) {
        return false;
      }
      r.at += length;
    }
    return TakeCharacters(r, run, nullptr, run.run.maximum - run.run.minimum);
  }

  VEK_INLINE bool TakeCharacters(Registers& r, const FastOp& run, Frame* frame, int32_t left) {
    if (run.code == FastCode::kLazyOpenSet && run.run.maximum == RegExpUnbounded) {
      const uint8_t* const from = r.at;
      r.at = SkipBlocks(run, from, limit);
      while (r.at > from && r.at < limit && IsUtf8Continuation(*r.at)) {  // within a character
        --r.at;
      }
    }
    for (; !CanFollow(run, r.at) || IsKnown(run, r.at); --left) {
      const int32_t length = left > 0 && r.at < limit ? LengthAt(run, r.at) : 0;
      if (length == 0) {
        return Drop(r, frame);
      }
      r.at += length;
    }
    if (frame == nullptr) {
      if (!HasRoom(r)) {
        return Stop(r, whenFull);
      }
      frame = Push(r, FrameKind::kTakesCharacter, r.at);
    }
    frame->at = r.at;
    frame->counts[0] = left;
    return GoAfter(r, run);
  }

  // ---- Bytes of a fixed number.

  // The lanes of a block whose bytes lie in the ranges of their positions.
  VEK_INLINE static uint32_t InRanges(kernels::Block bytes, const uint8_t* ranges, int32_t count) {
    const auto inside = [&bytes](const uint8_t* range) __attribute__((always_inline)) {
      return kernels::InRange(bytes,
                              {kernels::LoadAny(range), kernels::LoadAny(range + kernels::kBlock)});
    };
    kernels::Block hits = inside(ranges);
    for (int32_t k = 1; k < count; ++k) {
      ranges += 2 * kernels::kBlock;
      hits = hits | inside(ranges);
    }
    return kernels::LaneBits(hits);
  }

  // Less than a block is tested as its first and its last kHalf bytes.
  template <int32_t kHalf>
  VEK_INLINE static bool IsFixed(const FastOp& fixed, const uint8_t* at) {
    const int32_t ranges = fixed.fixed.ranges;
    const int32_t length = fixed.fixed.length;
    if constexpr (kHalf < kernels::kBlock) {
      constexpr uint32_t kAll = (1U << 2 * kHalf) - 1;
      return (~InRanges(kernels::LoadEnds<kHalf>(at, length), fixed.ranges, ranges) & kAll) == 0;
    } else {
      const uint8_t* const last = at + length - kernels::kBlock;
      const uint8_t* table = fixed.ranges;
      for (; at < last; at += kernels::kBlock, table += 2 * kernels::kBlock * ranges) {
        if (InRanges(kernels::LoadAny(at), table, ranges) != 0xFFFF) {
          return false;
        }
      }
      return InRanges(kernels::LoadAny(last), table, ranges) == 0xFFFF;
    }
  }

  template <int32_t kHalf>
  VEK_INLINE bool Fixed(Registers& r) {
    const FastOp& fixed = *r.op;
    r.depth += fixed.captures.cost;
    if (r.depth > allowance) {
      return GiveUp(r);
    }
    if (limit - r.at < fixed.fixed.length || !IsFixed<kHalf>(fixed, r.at)) {
      return false;
    }
    const FastCapture* capture = fixed.captures.first;
    for (int32_t left = fixed.fixed.captures; left > 0; --left, ++capture) {
      if (!Capture(r, capture->slot, capture->isUndone, r.at + capture->begin,
                   r.at + capture->end)) {
        return Stop(r, whenFull);
      }
    }
    r.at += fixed.fixed.length;
    return GoOn(r);
  }

  // ---- Groups.

  // Sets a slot; false where that would have to be undone and no frame is left.
  VEK_INLINE bool Capture(Registers& r, int32_t index, uint32_t flags, const uint8_t* begin,
                          const uint8_t* end) {
    RegExpFindResult& slot = slots[index];
    if ((flags & kIsUndone) != 0 && r.top > base) {
      if (!HasRoom(r)) {
        return false;
      }
      Frame* const frame = Push(r, FrameKind::kSlot, slot.pointer);
      frame->length = slot.length;
      frame->slot = index;
    }
    slot.pointer = const_cast<uint8_t*>(begin);
    slot.length = static_cast<int32_t>(end - begin);
    return true;
  }

  VEK_INLINE bool IsUndone(Registers& r, const FastOp& group) const {
    return (group.flags & kIsUndone) != 0 && r.top > base;
  }

  VEK_INLINE uint32_t Offset(Registers& r) const { return static_cast<uint32_t>(r.at - subject); }

  VEK_INLINE bool Open(Registers& r) {
    GroupEntry::Matching& entry = groups[r.op->serial].matching;
    if (IsUndone(r, *r.op)) {
      if (!HasRoom(r)) {
        return Stop(r, whenFull);
      }
      Push(r, FrameKind::kStart, r.at)->start = entry.start;
    }
    entry.start = Offset(r);
    return GoOn(r);
  }

  VEK_INLINE bool Close(Registers& r) {
    const uint8_t* const start = subject + groups[r.op->serial].matching.start;
    return Capture(r, r.op->end.slot, r.op->flags, start, r.at) ? GoOn(r) : Stop(r, whenFull);
  }

  VEK_INLINE bool Choose(Registers& r) {
    const FastOp& choice = *r.op;
    uint32_t ways = (1U << choice.ways.count) - 1;
    if (r.at == limit) {
      ways = choice.ways.atEnd;
    } else if (choice.waysOf != nullptr) {
      ways = choice.waysOf[*r.at];
    }
    if (ways == 0) {
      return false;
    }
    const uint32_t others = ways & (ways - 1);
    if (others != 0) {
      if (IsKnown(choice, r.at)) {
        return false;
      }
      if (!HasRoom(r)) {
        return Stop(r, whenFull);
      }
      Push(r, FrameKind::kWays, r.at)->ways = static_cast<uint8_t>(others);
    }
    return GoTo(r, choice.targets[kernels::LowestBit(ways)]);
  }

  // Puts aside what a loop is about to change.
  VEK_INLINE bool KeepLoop(Registers& r, const GroupEntry::Matching& entry) {
    if (r.top > base) {
      if (!HasRoom(r)) {
        Stop(r, whenFull);
        return false;
      }
      Frame* const frame = Push(r, FrameKind::kLoop, r.at);
      frame->start = entry.start;
      frame->counts[0] = entry.minimum;
      frame->counts[1] = entry.maximum;
    }
    return true;
  }

  [[gnu::noinline]] bool EnterLoop(Registers& r) {
    GroupEntry::Matching& entry = groups[r.op->serial].matching;
    if (!KeepLoop(r, entry)) {
      return true;
    }
    entry.minimum = r.op->loop.minimum;
    entry.maximum = r.op->loop.maximum;
    entry.start = Offset(r);
    return GoOn(r);
  }

  VEK_INLINE bool EndRepetition(Registers& r) {
    const FastOp& loop = *r.op;
    r.depth += loop.loop.cost;
    if (r.depth > allowance) {
      return GiveUp(r);
    }
    GroupEntry::Matching& entry = groups[loop.serial].matching;
    const bool isEmpty = entry.start == Offset(r);
    if (!KeepLoop(r, entry)) {
      return true;
    }
    entry.start = Offset(r);
    if ((loop.flags & kIsCounted) != 0) {
      --entry.minimum;
      --entry.maximum;
      if (!isEmpty && entry.maximum > 0 && entry.minimum > 0) {
        return GoTo(r, loop.loop.again);
      }
      return GoTo(r, isEmpty || entry.maximum < 1 ? loop.loop.exit : loop.loop.againOrExit);
    }
    return GoTo(r, isEmpty ? loop.loop.exit : loop.loop.againOrExit);
  }

  // ---- Sub-programs.

  [[gnu::noinline]] bool EnterSub(Registers& r) {
    const FastOp& opening = *r.op;
    const uint8_t* bodyAt = r.at;
    if (opening.code == FastCode::kLookaround && (opening.flags & kIsBehind) != 0) {
      if (r.at - subject < opening.length) {
        return (opening.flags & kIsNegative) != 0 && GoOn(r);
      }
      bodyAt = Before(r, opening.length);
    }
    if (!HasRoom(r)) {
      return Stop(r, whenFull);
    }
    Frame* const frame = Push(r, FrameKind::kSub, r.at);
    frame->around = sub;
    sub = frame;
    r.at = bodyAt;
    return GoTo(r, opening.targets[0]);
  }

  // So many characters before, or bytes where there are fewer characters.
  const uint8_t* Before(const Registers& r, int32_t length) const {
    const uint8_t* start = r.at;
    for (int32_t i = 0; i < length; ++i) {
      if (start == subject) {
        return r.at - length;
      }
      start = PreviousUtf8(start, subject, limit);
    }
    return start;
  }

  // The sub-program has matched: its frames are dropped, and what its groups have captured stays.
  [[gnu::noinline]] bool LeaveSub(Registers& r) {
    if (sub == nullptr) {  // its opening has made it
      return false;
    }
    const Frame frame = *sub;
    r.top = sub;
    sub = frame.around;
    const FastOp& opening = ops[frame.op];
    r.op = &opening;
    if (opening.code == FastCode::kLookaround) {
      r.at = frame.at;
      r.depth = frame.depth;
      if ((opening.flags & kIsNegative) != 0) {
        return false;
      }
    }
    return GoOn(r);
  }

  // ---- Assertions.

  VEK_INLINE bool IsAtEnd(const uint8_t* at) const {
    return at == limit || (limit - at == 1 && *at == kNewline);
  }

  [[gnu::noinline]] bool Holds(const uint8_t* at, const FastOp& assertion) const {
    const bool atStart = at == subject;
    const bool atEnd = at == limit;
    switch (assertion.letter) {
      case 'z':
        return atEnd;
      case '^':
        return atStart || (!atEnd && at[-1] == kNewline);
      case '$':
        return atEnd || *at == kNewline;
      case 'b':
        return ChangesWord(at);
      case 'B':
        return !ChangesWord(at);
      case 0x80:
        return atStart || at[-1] == kNewline;
      default:
        return false;
    }
  }

  // Where the text that is matched ends before the subject, the byte there counts.
  VEK_INLINE bool ChangesWord(const uint8_t* at) const {
    const bool after = at < subjectEnd && IsWordByte(*at);
    return after != (at != subject && IsWordByte(at[-1]));
  }

  // ---- Failure.

  // Goes back to the last frame with another way, undoing what lies between; false if there is
  // none.
  VEK_INLINE bool Resume(Registers& r) {
    if (--returnsLeft < 0) {
      return Stop(r, FastResult::kExhausted);
    }
    for (;;) {
      if (r.top == base) {
        return false;
      }
      Frame& frame = r.top[-1];
      const FastOp& source = ops[frame.op];
      switch (frame.kind) {
        case FrameKind::kWays: {
          r.at = frame.at;
          r.depth = frame.depth;
          const uint32_t ways = frame.ways;
          if (kRemembers && ways == 0) {
            Remember(source, r.at);
            --r.top;
            break;
          }
          const uint32_t others = ways & (ways - 1);
          frame.ways = static_cast<uint8_t>(others);
          r.top -= others == 0 && !kRemembers ? 1 : 0;
          return GoTo(r, source.targets[kernels::LowestBit(ways)]);
        }
        case FrameKind::kBytes:
          if (GiveBackByte(r, source, &frame)) {
            return true;
          }
          break;
        case FrameKind::kCharacters:
          if (Aside(r, &FastMatcher<kRemembers>::GiveBackCharacter, &frame)) {
            return true;
          }
          break;
        case FrameKind::kTakesByte:
          Remember(source, frame.at);
          r.at = frame.at + 1;
          r.depth = frame.depth;
          if (TakeBytes(r, source, frame.bound, &frame)) {
            return true;
          }
          break;
        case FrameKind::kTakesCharacter:
          if (Aside(r, &FastMatcher<kRemembers>::TakeAnother, &frame)) {
            return true;
          }
          break;
        case FrameKind::kSlot:
          slots[frame.slot] = {const_cast<uint8_t*>(frame.at), static_cast<int32_t>(frame.length)};
          --r.top;
          break;
        case FrameKind::kStart:
          groups[source.serial].matching.start = frame.start;
          --r.top;
          break;
        case FrameKind::kLoop: {
          GroupEntry::Matching& entry = groups[source.serial].matching;
          entry.start = frame.start;
          entry.minimum = frame.counts[0];
          entry.maximum = frame.counts[1];
          --r.top;
          break;
        }
        case FrameKind::kSub:
          sub = frame.around;
          --r.top;
          if ((source.flags & kIsNegative) != 0 && source.code == FastCode::kLookaround) {
            r.at = frame.at;
            r.depth = frame.depth;
            return GoAfter(r, source);
          }
          break;
      }
    }
  }

  VEK_INLINE bool GiveBackByte(Registers& r, const FastOp& run, Frame* frame) {
    const uint8_t* end = frame->at;
    const uint8_t* const follow = FollowersOf(run);
    Remember(run, end);
    do {
      if (end == frame->bound) {
        --r.top;
        return false;
      }
      --end;
    } while ((follow != nullptr && follow[*end] == 0) || IsKnown(run, end));
    if ((run.flags & kCaptures) != 0) {
      const uint8_t* const begin = frame->bound - run.run.minimum;
      slots[run.end.slot] = {const_cast<uint8_t*>(begin), static_cast<int32_t>(end - begin)};
    }
    r.at = end;
    r.depth = frame->depth;
    frame->at = end;
    r.top -= end == frame->bound && !kRemembers ? 1 : 0;
    return GoAfter(r, run);
  }

  [[gnu::noinline]] bool GiveBackCharacter(Registers& r, Frame* frame) {
    const FastOp& run = ops[frame->op];
    const uint8_t* end = frame->at;
    Remember(run, end);
    do {
      if (end == frame->bound) {
        --r.top;
        return false;
      }
      end = PreviousUtf8(end, frame->bound, limit);
    } while (!CanFollow(run, end) || IsKnown(run, end));
    r.at = end;
    r.depth = frame->depth;
    frame->at = end;
    r.top -= end == frame->bound && !kRemembers ? 1 : 0;
    return GoAfter(r, run);
  }

  [[gnu::noinline]] bool TakeAnother(Registers& r, Frame* frame) {
    const FastOp& run = ops[frame->op];
    Remember(run, frame->at);
    r.at = frame->at;
    r.depth = frame->depth;
    const int32_t length = frame->counts[0] > 0 && r.at < limit ? LengthAt(run, r.at) : 0;
    if (length == 0) {
      return Drop(r, frame);
    }
    r.at += length;
    return TakeCharacters(r, run, frame, frame->counts[0] - 1);
  }

  const TryMemory<kRemembers> memory;
  const FastOp* const ops;
  const bool isUtf8;
  const int32_t allowance;
  RegExpFindResult* const slots;
  GroupEntry* const groups;
  const uint8_t* const subject;
  const uint8_t* const subjectEnd;
  const uint8_t* const limit;
  Frame* const base;
  Frame* const framesEnd;
  const FastResult whenFull;  // no frame is left

  Frame* sub = nullptr;  // of the innermost sub-program
  int64_t returnsLeft;
  FastResult stopped = FastResult::kMatch;
};

// ---- Tries.

void ClearSlots(RegExpState* state) {
  auto* const slots = SlotsOf(state);
  for (int32_t slot = 1; slot < state->captureCount; ++slot) {
    slots[slot] = {nullptr, -1};
  }
}

FastText TextOf(const FastCall& call, const uint8_t* limit) {
  return {call.state, call.allowance, call.subject, call.subjectEnd, limit};
}

VEK_INLINE FastResult TryLightly(FastCall* call, const uint8_t* start, const uint8_t* limit,
                                 Frame* frames) {
  if (call->program->clearsSlots) {
    ClearSlots(call->state);
  }
  const int32_t most = call->memory.IsBegun() ? kSomeReturns : call->lightReturns;
  FastMatcher<false> matcher(*call->program, TextOf(*call, limit),
                             {most, frames, kFewFrames, FastResult::kExhausted}, {});
  return matcher.Run(start, call->program->entry);
}

template <bool kRemembers>
FastResult TryHard(FastCall* call, const uint8_t* start, const uint8_t* limit, int32_t mostFrames,
                   Frame* frames, const TryMemory<kRemembers>& memory) {
  ClearSlots(call->state);
  // What is remembered may not serve where the depth could run out; the exact matcher knows how
  // much of it each failure took.
  const bool mayForget = kRemembers &&
                         (limit - start) * call->program->mostCost > call->allowance &&
                         call->returnsAllowed > kForgetfulReturns;
  const int64_t most = mayForget ? kForgetfulReturns : call->returnsAllowed;
  FastMatcher<kRemembers> matcher(*call->program, TextOf(*call, limit),
                                  {most, frames, mostFrames, FastResult::kGivesUp}, memory);
  const FastResult result = matcher.Run(start, call->program->entry);
  call->returnsAllowed -= most - matcher.ReturnsLeft();
  return mayForget && result == FastResult::kExhausted ? FastResult::kGivesUp : result;
}

template <int32_t kMostFrames>
[[gnu::noinline]] FastResult TryWith(FastCall* call, const uint8_t* start, const uint8_t* limit) {
  Frame frames[kMostFrames];
  return call->program->remembers
             ? TryHard<true>(call, start, limit, kMostFrames, frames, {call, start})
             : TryHard<false>(call, start, limit, kMostFrames, frames, {});
}

// A try that has come back to its choices too often, or has used up its frames: with the memory,
// and with more frames where the limit's share of the stack allows them.
[[gnu::noinline]] FastResult TryAgain(FastCall* call, const uint8_t* start, const uint8_t* limit) {
  call->returnsAllowed -= call->lightReturns;
  if (call->program->remembers && (!call->memory.IsBegun() || !call->memory.Reaches(start))) {
    VEKCH_TAKEN("memory of failures");
    call->memory.Begin(*call->program, FreeRoom(call->state), start);
    call->furthest = start;
  }
  constexpr int32_t kStackOfLevel = 72;  // that the header of the search promises to keep to
  constexpr int32_t kLevelsForMany =
      kManyFrames * static_cast<int32_t>(sizeof(Frame)) / kStackOfLevel;
  if (call->state->matchLimit / RegExpDepthShare < kLevelsForMany) {
    return TryWith<kFewFrames>(call, start, limit);
  }
  VEKCH_TAKEN("many frames");
  return TryWith<kManyFrames>(call, start, limit);
}

// Whether a walk over the characters from `first` on comes to a continuation byte.
bool IsCharacterStart(const uint8_t* first, const uint8_t* limit, const uint8_t* at) {
  const uint8_t* lead = at;
  while (lead > first && at - lead < kLongestUtf8 - 1 && IsUtf8Continuation(*lead)) {
    --lead;
  }
  return lead == at || ReadUtf8(lead, limit).length <= at - lead;
}

VEK_INLINE bool CanBegin(const FastProgram& program, const uint8_t* at, const uint8_t* limit) {
  return at < limit ? program.canBegin[*at] != 0 : program.beginsAtEnd;
}

// Whether the first character is one that a match can begin with.
VEK_INLINE bool BeginsWith(const FastProgram& program, const uint8_t* at, const uint8_t* limit) {
  auto* const first = program.firstCharacter;
  return first == nullptr || *at < 0x80 || WideLength(first, at, limit) != 0;
}

// Whether the second byte is one that a match can go on with.
VEK_INLINE bool GoesOnWith(const uint8_t* secondBytes, const uint8_t* at, const uint8_t* limit) {
  return secondBytes == nullptr || (limit - at > 1 && (secondBytes[at[1]] & 2) != 0);
}

// Where a match can begin from `at` on; null if nowhere.
VEK_INLINE const uint8_t* NextStart(const FastCall& call, const uint8_t* first,
                                    const uint8_t* limit, const uint8_t* at) {
  const FastProgram& program = *call.program;
  for (;; ++at) {
    while (at < limit && program.canBegin[*at] == 0) {
      ++at;
    }
    if (at >= limit) {
      return at == limit && program.beginsAtEnd ? at : nullptr;
    }
    if (GoesOnWith(call.secondBytes, at, limit) &&
        (!program.isUtf8 || !IsUtf8Continuation(*at) || IsCharacterStart(first, limit, at)) &&
        BeginsWith(program, at, limit)) {
      return at;
    }
  }
}

}  // namespace

FastResult MatchFirst(const FastProgram& program, RegExpState* state, const uint8_t* subject,
                      int32_t length) {
  const uint8_t* const end = subject + length;
  const int32_t allowance = AllowanceOf(program, *state);
  if (allowance < 0) {
    return FastResult::kGivesUp;
  }
  if (!CanBegin(program, subject, end)) {
    return FastResult::kFail;
  }
  if (program.clearsSlots) {
    ClearSlots(state);
  }
  Frame frames[kFirstFrames];
  FastMatcher<false> matcher(program, {state, allowance, subject, end, end},
                             {kFirstReturns, frames, kFirstFrames, FastResult::kExhausted}, {});
  return matcher.Run(subject, program.entryAtStart);
}

FastResult MatchFast(FastCall* call, const uint8_t* start, const uint8_t* limit) {
  if (!CanBegin(*call->program, start, limit)) {
    return FastResult::kFail;
  }
  Frame frames[kFewFrames];
  const FastResult result = TryLightly(call, start, limit, frames);
  return result == FastResult::kExhausted ? TryAgain(call, start, limit) : result;
}

FastResult FindFast(FastCall* call, const uint8_t* start, const uint8_t* limit) {
  Frame frames[kFewFrames];
  for (const uint8_t* at = NextStart(*call, start, limit, start); at != nullptr;
       at = NextStart(*call, start, limit, at + 1)) {
    FastResult result = TryLightly(call, at, limit, frames);
    if (result == FastResult::kExhausted) {
      result = TryAgain(call, at, limit);
    }
    if (result != FastResult::kFail) {
      return result;
    }
  }
  return FastResult::kFail;
}

}  // namespace vekch::regexp
