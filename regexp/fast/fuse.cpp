// SPDX-License-Identifier: MIT

// An operation that is fused does all that the ones from it on do, and leads to what follows them.
// They stay as they are, since others may lead to them.

#include "regexp/fast/fuse.h"

#include "frame/expect.h"
#include "regexp/characters/byte_ranges.h"
#include "regexp/characters/bytes.h"
#include "strings/kernels/byte_range.h"
#include "strings/kernels/lanes.h"

namespace vekch::regexp {
namespace {

enum Mark : uint8_t { kUnseen, kReached, kDone };

constexpr int32_t kMostOpen = 4;       // groups in one another
constexpr int32_t kMostCaptures = 16;  // in one operation

// One of the positions of bytes in a fixed number.
struct Position {
  ByteBounds ranges[kernels::kMostRanges];
  int32_t count;
};

// That of one or two bytes, which may be the same.
Position PositionOfPair(uint8_t byte, uint8_t other) {
  return {{{byte, byte}, {other, other}}, byte == other ? 1 : 2};
}

bool IsRunOfBytes(FastCode code) {
  return code == FastCode::kByteRun || code == FastCode::kAnyRun || code == FastCode::kSetRun ||
         code == FastCode::kSetSpan || code == FastCode::kOptionalSet;
}

// ---- Bytes of a fixed number.

// From an operation on, as far as all that follows takes a byte at each position or captures.
class FixedBytes {
 public:
  FixedBytes(const FastOp* operations, const Following& bytes)
      : ops(operations), following(bytes) {}

  void Gather(int32_t from) {
    int32_t at = from;
    while (Add(ops[at])) {
      at = next;
      if (openCount == 0 && repeated == nullptr) {
        end = at;
        length = count;
        captureCount = closed;
        cost = charged;
      }
    }
  }

  int32_t length = 0;
  int32_t end = 0;  // the operation after them
  int32_t cost = 0;
  int32_t captureCount = 0;
  FastCapture captures[kMostCaptures];

  int32_t MostRanges() const {
    int32_t most = 0;
    for (int32_t i = 0; i < length; ++i) {
      most = positions[i].count > most ? positions[i].count : most;
    }
    return most;
  }

  static int32_t BlocksOf(int32_t bytes) { return (bytes + kernels::kBlock - 1) / kernels::kBlock; }

  // In the order of the lanes that they are tested in.
  void Write(int32_t ranges, uint8_t* table) const {
    for (int32_t block = 0; block < BlocksOf(length); ++block) {
      for (int32_t lane = 0; lane < kernels::kBlock; ++lane) {
        const Position& position = positions[IndexOf(block, lane)];
        for (int32_t k = 0; k < ranges; ++k) {
          const ByteBounds range = position.ranges[k < position.count ? k : position.count - 1];
          uint8_t* const test = table + (block * ranges + k) * 2 * kernels::kBlock + lane;
          test[0] = static_cast<uint8_t>(127 - range.highest);
          test[kernels::kBlock] = static_cast<uint8_t>(126 - (range.highest - range.lowest));
        }
      }
    }
  }

 private:
  // The last block ends with the last position; fewer positions are tested as the ends of a string.
  int32_t IndexOf(int32_t block, int32_t lane) const {
    if (length >= kernels::kBlock) {
      const int32_t first = block * kernels::kBlock;
      return lane + (first + kernels::kBlock > length ? length - kernels::kBlock : first);
    }
    const int32_t half = length >= 8 ? 8 : length >= 4 ? 4 : 2;
    return lane < half ? lane : lane < 2 * half ? length - 2 * half + lane : 0;
  }

  bool Add(const FastOp& op) {
    next = op.next;
    switch (op.code) {
      case FastCode::kByte:
        return AddPositions(PositionOfPair(op.pair[0], op.pair[1]), 1);
      case FastCode::kBytes:
      case FastCode::kCaselessBytes:
        return AddString(op);
      case FastCode::kAnyByte:
      case FastCode::kSet:
        return AddPositions(PositionOf(op), 1);
      case FastCode::kByteRun:
      case FastCode::kAnyRun:
      case FastCode::kSetRun:
      case FastCode::kLazySet:
        return op.run.minimum == op.run.maximum && AddPositions(PositionOf(op), op.run.minimum);
      case FastCode::kOpen:
        return Open();
      case FastCode::kClose:
        return Close(op);
      case FastCode::kEnterLoop:
        return BeginRepetitions(op);
      case FastCode::kLoop:
        return EndRepetition(op);
      default:
        return false;
    }
  }

  Position PositionOf(const FastOp& op) const {
    Position position;
    position.count = following.BytesOf(op).RangesOf(position.ranges, kernels::kMostRanges);
    return position;
  }

  bool AddPositions(const Position& position, int32_t times) {
    if (position.count == 0 || times > kMostFixed - count) {
      return false;
    }
    for (int32_t i = 0; i < times; ++i) {
      positions[count++] = position;
    }
    return true;
  }

  bool AddString(const FastOp& op) {
    for (int32_t i = 0; i < op.length; ++i) {
      const uint8_t byte = op.bytes[i];
      const bool hasCases = op.code == FastCode::kCaselessBytes && IsAsciiLetter(byte);
      if (!AddPositions(PositionOfPair(byte, static_cast<uint8_t>(hasCases ? byte ^ 0x20 : byte)),
                        1)) {
        return false;
      }
    }
    return true;
  }

  bool Open() {
    if (openCount == kMostOpen) {
      return false;
    }
    openBegins[openCount++] = count;
    return true;
  }

  // Groups end in the order that they are in one another.
  bool Close(const FastOp& op) {
    if (openCount == 0 || closed == kMostCaptures) {
      return false;
    }
    captures[closed++] = {op.end.slot, static_cast<uint8_t>(op.flags & kIsUndone),
                          static_cast<uint8_t>(openBegins[--openCount]),
                          static_cast<uint8_t>(count)};
    return true;
  }

  // A group that is repeated a fixed number of times is its body so often.
  bool BeginRepetitions(const FastOp& op) {
    if (repeated != nullptr || op.loop.minimum != op.loop.maximum || (op.flags & kIsUndone) != 0) {
      return false;
    }
    repeated = &op;
    repetitionsLeft = op.loop.minimum;
    repetitionBegin = count;
    return true;
  }

  bool EndRepetition(const FastOp& op) {
    if (repeated == nullptr || repeated->serial != op.serial || count == repetitionBegin) {
      return false;
    }
    charged += op.loop.cost;
    repetitionBegin = count;
    --repetitionsLeft;
    next = repetitionsLeft > 0 ? repeated->next : op.loop.exit;
    repeated = repetitionsLeft > 0 ? repeated : nullptr;
    return true;
  }

  const FastOp* const ops;
  const Following& following;
  Position positions[kMostFixed];
  int32_t count = 0;  // of positions
  int32_t next = 0;
  int32_t closed = 0;
  int32_t charged = 0;
  int32_t openBegins[kMostOpen] = {};
  int32_t openCount = 0;
  const FastOp* repeated = nullptr;  // where its repetitions began
  int32_t repetitionsLeft = 0;
  int32_t repetitionBegin = 0;
};

// ---- All operations.

class Fuser {
 public:
  Fuser(FastOp* operations, int32_t count, const Following& bytes, TableRoom* tableRoom,
        uint8_t* opMarks)
      : ops(operations), used(count), following(bytes), room(tableRoom), marks(opMarks) {}

  void Run(int32_t entry) {
    for (int32_t i = 0; i < used; ++i) {
      marks[i] = kUnseen;
    }
    marks[entry] = kReached;
    for (bool isOver = false; !isOver;) {
      isOver = true;
      for (int32_t i = 0; i < used; ++i) {
        if (marks[i] == kReached) {
          marks[i] = kDone;
          Finish(i);
          ForEachTarget(&ops[i], [this](uint16_t* target) { Reach(*target); });
          isOver = false;
        }
      }
    }
    for (int32_t i = 0; i < used; ++i) {  // so that no one counts with them
      ops[i].code = marks[i] == kUnseen ? FastCode::kJump : ops[i].code;
    }
  }

 private:
  void Reach(int32_t op) { marks[op] = marks[op] == kUnseen ? uint8_t{kReached} : marks[op]; }

  void Finish(int32_t i) {
    FastOp& op = ops[i];
    if (op.code == FastCode::kChoice) {
      MakeWays(&op);
    } else if (op.code == FastCode::kLoop) {
      FuseLoop(&op);
    } else if (!FuseFixed(i) && !FuseCapture(i) && IsRepeatedCharacter(op)) {
      FinishRun(&op);
      MakeFollow(&op);
    }
  }

  static bool IsRepeatedCharacter(const FastOp& op) {
    return op.code >= FastCode::kByteRun && op.code <= FastCode::kLazyCharacter;
  }

  void FuseLoop(FastOp* op) {
    if ((op->flags & (kIsCounted | kMayBeEmpty | kIsUndone)) == 0) {
      const uint16_t cost = op->loop.cost;
      *op = ops[op->loop.againOrExit];
      VEK_EXPECT(op->code == FastCode::kChoice);
      op->code = FastCode::kRepeat;
      op->ways.cost = cost;
      if (op->waysOf == nullptr) {
        MakeWays(op);
      }
    }
  }

  // Without a table every way is tried.
  void MakeWays(FastOp* op) {
    auto* const table = room->Take<uint8_t>(NextBytes::kTable);
    op->waysOf = table;
    for (int32_t k = 0; k < op->ways.count; ++k) {
      const NextBytes& bytes = following.At(op->targets[k]);
      const auto bit = static_cast<uint8_t>(1U << k);
      op->ways.atEnd = static_cast<uint8_t>(op->ways.atEnd | (bytes.atEnd ? bit : 0));
      if (table != nullptr) {
        bytes.Mark(table, bit);
      }
      if (NeverFails(op->targets[k])) {
        break;  // no way after it is ever needed
      }
    }
  }

  bool FuseFixed(int32_t i) {
    FixedBytes bytes(ops, following);
    bytes.Gather(i);
    if (bytes.length < 2) {
      return false;
    }
    const int32_t ranges = bytes.MostRanges();
    const int32_t blocks = FixedBytes::BlocksOf(bytes.length);
    uint8_t* const table = room->Take(int64_t{2 * kernels::kBlock} * blocks * ranges);
    auto* const captures = room->Take<FastCapture>(bytes.captureCount);
    if (table == nullptr || captures == nullptr) {
      return false;
    }
    bytes.Write(ranges, table);
    for (int32_t k = 0; k < bytes.captureCount; ++k) {
      captures[k] = bytes.captures[k];
    }
    FastOp& op = ops[i];
    op = {};
    op.code = bytes.length >= kernels::kBlock ? FastCode::kFixed
              : bytes.length >= 8             ? FastCode::kFixedEight
              : bytes.length >= 4             ? FastCode::kFixedFour
                                              : FastCode::kFixedTwo;
    op.next = static_cast<uint16_t>(bytes.end);
    op.fixed = {static_cast<uint16_t>(bytes.length), static_cast<uint8_t>(ranges),
                static_cast<uint8_t>(bytes.captureCount)};
    op.ranges = table;
    op.captures = {captures, bytes.cost};
    return true;
  }

  // A group around one byte or run.
  bool FuseCapture(int32_t i) {
    if (ops[i].code != FastCode::kOpen) {
      return false;
    }
    FastOp run = ops[ops[i].next];
    const FastOp& close = ops[run.next];
    if (close.code != FastCode::kClose || close.serial != ops[i].serial) {
      return false;
    }
    if (run.code == FastCode::kByte || run.code == FastCode::kSet) {
      run.code = run.code == FastCode::kByte ? FastCode::kByteRun : FastCode::kSetRun;
      run.run = {1, 1, {nullptr}};
    }
    run.next = close.next;
    FinishRun(&run);
    if (!IsRunOfBytes(run.code) || run.code == FastCode::kOptionalSet) {
      return false;
    }
    run.end.slot = close.end.slot;
    run.flags = static_cast<uint8_t>(run.flags | kCaptures | (close.flags & kIsUndone));
    MakeFollow(&run);
    ops[i] = run;
    return true;
  }

  // What is known of a run by what follows it.
  void FinishRun(FastOp* op) const {
    if (!IsRepeatedCharacter(*op)) {
      return;
    }
    const NextBytes& bytes = following.At(op->next);
    const bool isDisjoint = NeverFails(op->next) || !following.BytesOf(*op).Meets(bytes);
    op->flags = static_cast<uint8_t>((bytes.atEnd ? kFollowsAtEnd : 0) |
                                     (isDisjoint ? kGivesNothingBack : 0));
    // Where nothing can follow within a character, characters need not be distinguished from bytes.
    const bool isEndless = op->run.minimum <= 1 && op->run.maximum == RegExpUnbounded;
    if (isEndless && op->code == FastCode::kOpenSetRun && (isDisjoint || !bytes.HasHigh())) {
      op->code = FastCode::kSetRun;
    } else if (isEndless && op->code == FastCode::kLazyOpenSet && !bytes.HasHigh()) {
      op->code = FastCode::kLazySet;
    }
    const FastOp& byte = ops[op->next];
    if (isDisjoint && IsRunOfBytes(op->code) && byte.code == FastCode::kByte &&
        !IsFixed(ops[byte.next])) {
      op->flags |= kTakesByte;
      op->end.byte[0] = byte.pair[0];
      op->end.byte[1] = byte.pair[1];
      op->next = byte.next;
    }
    if (isDisjoint && op->code == FastCode::kSetRun) {
      const bool isOptional = op->run.minimum == 0 && op->run.maximum == 1;
      op->code = op->run.maximum == RegExpUnbounded            ? FastCode::kSetSpan
                 : isOptional && (op->flags & kTakesByte) == 0 ? FastCode::kOptionalSet
                                                               : FastCode::kSetRun;
    }
  }

  // Whether there is a way on from an operation whatever comes, as far as so many steps show.
  bool NeverFails(int32_t i, int32_t steps = 6) const {
    const FastOp& op = ops[i];
    if (--steps < 0) {
      return false;
    }
    switch (op.code) {
      case FastCode::kAccept:
        return true;
      case FastCode::kOpen:
      case FastCode::kClose:
      case FastCode::kEnterLoop:
        return NeverFails(op.next, steps);
      case FastCode::kByteRun:
      case FastCode::kAnyRun:
      case FastCode::kSetRun:
      case FastCode::kSetSpan:
      case FastCode::kOptionalSet:
      case FastCode::kOpenSetRun:
        return op.run.minimum == 0 && (op.flags & kTakesByte) == 0 && NeverFails(op.next, steps);
      case FastCode::kLoop:
        return op.loop.again == 0 && NeverFails(op.loop.againOrExit, steps) &&
               NeverFails(op.loop.exit, steps);
      case FastCode::kChoice:
      case FastCode::kRepeat:
        return NeverFails(op.targets[0], steps) || NeverFails(op.targets[op.ways.count - 1], steps);
      default:
        return false;
    }
  }

  // Whether a byte before it would better be tested with it.
  static bool IsFixed(const FastOp& op) {
    return op.code == FastCode::kByte || op.code == FastCode::kSet || op.code == FastCode::kBytes ||
           op.code == FastCode::kCaselessBytes ||
           (op.code == FastCode::kSetRun && op.run.minimum == op.run.maximum);
  }

  void MakeFollow(FastOp* op) {
    const NextBytes& bytes = following.At(op->next);
    const bool isFinal = IsRunOfBytes(op->code) && (op->flags & kGivesNothingBack) != 0;
    if (op->code == FastCode::kSetRun || op->code == FastCode::kSetSpan) {
      MakeRunTables(op, isFinal);
    } else if (!isFinal && !bytes.IsAll()) {
      auto* const table = room->Take<uint8_t>(NextBytes::kTable);
      op->run.follow = table;
      if (table != nullptr) {
        bytes.Mark(table, 0xFF);
      }
    }
  }

  void MakeRunTables(FastOp* op, bool isFinal) {
    constexpr int64_t kFollowers = NextBytes::kTable;
    op->run.tables = nullptr;
    if (isFinal && op->run.maximum < kernels::kBlock) {
      return;  // no block is ever tested
    }
    auto* const tables = reinterpret_cast<FastRunTables*>(
        room->Take(static_cast<int64_t>(sizeof(FastRunTables)) - (isFinal ? kFollowers : 0)));
    op->run.tables = tables;
    if (tables == nullptr) {
      return;
    }
    FillRangeSet(op->bytes, 0xFF, &tables->members);
    if (!isFinal) {
      following.At(op->next).Mark(tables->follow, 0xFF);
    }
  }

  FastOp* const ops;
  const int32_t used;
  const Following& following;
  TableRoom* const room;
  uint8_t* const marks;
};

}  // namespace

void Fuse(FastOp* ops, int32_t used, int32_t entry, const Following& following, TableRoom* room,
          uint8_t* marks) {
  Fuser(ops, used, following, room, marks).Run(entry);
}

}  // namespace vekch::regexp
