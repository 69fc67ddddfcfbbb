// SPDX-License-Identifier: MIT

// Each record becomes the operation of the same index, in one pass; groups with a choice or a loop
// take further operations after the last record's. Then the bytes that can come next are found for
// each operation, and operations are fused by them.

#include "regexp/fast/translator.h"

#include "frame/expect.h"
#include "regexp/characters/bytes.h"
#include "regexp/characters/character_set.h"
#include "regexp/characters/wide_set.h"
#include "regexp/fast/aids.h"
#include "regexp/fast/following.h"
#include "regexp/fast/fuse.h"
#include "regexp/fast/group_shapes.h"
#include "regexp/fast/layout.h"
#include "regexp/fast/lone_run_translator.h"
#include "regexp/fast/record_questions.h"
#include "regexp/fast/table_room.h"
#include "regexp/object/program_walk.h"
#include "strings/kernels/block.h"

namespace vekch::regexp {
namespace {

constexpr int32_t kOwnLevels = 16;  // of the search, and of the last tests

class Translator {
 public:
  Translator(RegExpState* patternState, uint8_t* room, uint8_t* roomEnd)
      : state(patternState),
        walk(*patternState),
        program(reinterpret_cast<FastProgram*>(room)),
        capacity(static_cast<int32_t>(CapacityFor(walk.count))),
        next(reinterpret_cast<NextBytes*>(AlignedBelow(roomEnd)) - capacity),
        ops(reinterpret_cast<FastOp*>(next) - capacity),
        shapes(reinterpret_cast<GroupShape*>(ops) - (walk.count + 1)),
        positions(reinterpret_cast<uint16_t*>(shapes) - capacity),
        tables(reinterpret_cast<uint8_t*>(program + 1), reinterpret_cast<uint8_t*>(positions)),
        isUtf8(patternState->characterFormat != 0) {}

  // The least room that a translation takes, without any table.
  static int64_t ScratchOf(const RegExpState& state) {
    const int64_t records = state.nodeCount;
    return static_cast<int64_t>(sizeof(FastProgram) + kernels::kBlock) +
           static_cast<int64_t>(sizeof(FastOp) + sizeof(NextBytes) + sizeof(uint16_t)) *
               CapacityFor(records) +
           static_cast<int64_t>(sizeof(GroupShape)) * (records + 1);
  }

  // After what the program keeps.
  const uint8_t* End() const { return tables.Begin(); }

  const FastProgram* Run() {
    // An alternative at record 0 is not noted as one.
    const bool beginsEmpty = walk.count > 0 && walk.nodes[0].op == OpAlternative;
    if (FactsOf(state)->readsOpenGroups != 0 || beginsEmpty || !FindGroupShapes(walk, shapes)) {
      return nullptr;
    }
    used = walk.count + 1;
    for (int32_t i = 0; i < used; ++i) {  // items of classes and skipped groups have none
      Begin(i, FastCode::kAccept, walk.count);
    }
    for (int32_t i = 0; i < walk.count && isKnown;) {
      i = Record(i);
    }
    if (!isKnown) {
      return nullptr;
    }
    const uint16_t entry = Entry();
    PassJumps();
    Following following(walk, ops, next);
    if (!following.Find(used)) {
      return nullptr;
    }
    const uint16_t first = Passed(entry);
    Fuse(ops, used, first, following, &tables, reinterpret_cast<uint8_t*>(positions));
    const Layout layout(ops, used, positions);
    auto* const placed = tables.Take<FastOp>(layout.Count());
    if (placed == nullptr) {
      return nullptr;
    }
    layout.Write(placed);
    const bool onlyAtStart = ops[first].code == FastCode::kAtStart;
    *program = {placed,
                SlotsOf(state),
                layout.PositionOf(first),
                layout.PositionOf(onlyAtStart ? ops[first].next : first),
                isUtf8,
                certainSlots != state->captureCount - 1,
                next[first].atEnd,
                onlyAtStart,
                DirectLength(onlyAtStart),
                2 * shapes[0].mostLevels + kOwnLevels,
                layout.Count(),
                mostCost,
                Remembers(following),
                emptyLoopCount,
                {emptyLoops[0], emptyLoops[1], emptyLoops[2]},
                {},
                nullptr,
                nullptr};
    next[first].Mark(program->canBegin, 0xFF);
    MakeAids(placed, layout.Count(), &tables);
    const FastOp& begin = placed[program->entry];
    const bool isRun = begin.code == FastCode::kCharacterRun && begin.run.minimum > 0;
    if (isRun || begin.code == FastCode::kCharacter) {
      program->firstCharacter = AidAt<WideSet>(placed, begin.aid);
    }
    program->loneRun = TranslateLoneRun(*state, walk, &tables);
    return program;
  }

 private:
  // Up to which length of a subject its beginning is tried before anything else is asked: only
  // where one match is looked for, and no literal says where, or where the text ends.
  int32_t DirectLength(bool onlyAtStart) const {
    constexpr int32_t kShortSubject = 256;  // beyond it, starts are better looked for by a plan
    const bool isOneLiteral = walk.count == 1 && IsLiteral(walk.nodes[0]);
    const bool findsAll = (state->compileFlags & RegExpOptionG) != 0;
    if (isOneLiteral || findsAll || state->requiredLiteralIndex >= 0 || !AnyModeBegins()) {
      return -1;
    }
    return onlyAtStart ? INT32_MAX : kShortSubject;
  }

  // Whether searching for the pattern's literals would come to the first position as well, if that
  // matches. A prefix literal is looked for even if it may be left out.
  bool AnyModeBegins() const {
    return state->searchMode == 0 || (state->searchMode == 1 && walk.IsCertainLiteral(0));
  }

  // Whether what follows a position depends on nothing that a bit does not record.
  bool Remembers(const Following& following) const {
    if (emptyLoopCount > kMostEmptyLoops) {
      return false;
    }
    for (int32_t i = 0; i < used; ++i) {
      const FastOp& op = ops[i];
      const bool isSub = op.code == FastCode::kLookaround || op.code == FastCode::kAtomic;
      const bool isCounted = op.code == FastCode::kLoop && (op.flags & kIsCounted) != 0;
      if (op.code == FastCode::kCopy || isCounted || (isSub && following.Captures(op))) {
        return false;
      }
    }
    return true;
  }

  static constexpr int64_t CapacityFor(int64_t records) { return 2 * records + 8; }

  static uint8_t* AlignedBelow(uint8_t* end) {
    return end - reinterpret_cast<uintptr_t>(end) % kernels::kBlock;
  }

  FastOp& Begin(int32_t index, FastCode code, int32_t following) {
    ops[index] = {};
    ops[index].code = code;
    ops[index].next = static_cast<uint16_t>(following);
    return ops[index];
  }

  // A further operation; its index. A group takes no more of them than it has records.
  int32_t Further(FastCode code, int32_t following) {
    VEK_EXPECT(used < capacity);
    Begin(used, code, following);
    return used++;
  }

  int32_t Unknown() {
    isKnown = false;
    return walk.count;
  }

  // ---- Records. Each returns the index of the next record to translate.

  int32_t Record(int32_t i) {
    const ProgramNode& node = walk.nodes[i];
    switch (node.op) {
      case OpString:
        return String(i);
      case OpBackref:
        return Copy(i);
      case OpAssert:
        return Assertion(i);
      case OpSetOptions:
        Begin(i, FastCode::kJump, i + 1);
        return i + 1;
      case OpAlternative: {
        const int32_t end = AlternativeNoteOf(node).groupEnd;
        Begin(i, FastCode::kJump, end == 0 ? walk.count : end);
        return i + 1;
      }
      case OpCapture:
      case OpGroup:
      case OpOptionGroup:
        return Group(i);
      case OpLookahead:
      case OpNegLookahead:
      case OpLookbehind:
      case OpNegLookbehind:
        return Lookaround(i);
      case OpAtomic:
        return Atomic(i);
      case OpGroupEnd:
        return GroupEnd(i);
      default:
        return IsAtom(node) ? Atom(i) : Unknown();
    }
  }

  int32_t String(int32_t i) {
    const ProgramNode& node = walk.nodes[i];
    const FastCode code = IsCaseless(node.c) ? FastCode::kCaselessBytes : FastCode::kBytes;
    FastOp& op = Begin(i, code, i + 1);
    op.length = node.b;
    op.bytes = RunOf(node);
    return i + 1;
  }

  int32_t Copy(int32_t i) {
    if (walk.QuantifierAt(i + 1) != nullptr) {
      return Unknown();
    }
    Begin(i, FastCode::kCopy, i + 1).record = &walk.nodes[i];
    return i + 1;
  }

  int32_t Assertion(int32_t i) {
    const ProgramNode* const quantifier = walk.QuantifierAt(i + 1);
    const int32_t after = quantifier == nullptr ? i + 1 : i + 2;
    if (!IsDue(quantifier)) {
      Begin(i, FastCode::kJump, after);
      return after;
    }
    const int32_t letter = walk.nodes[i].a;
    const bool isMultiLine = (OptionsOf(walk.nodes[i]) & RegExpOptionM) != 0;
    FastOp& op = Begin(i, FastCode::kAssert, after);
    if (letter == 'A' || letter == 'G' || (letter == '^' && !isMultiLine)) {
      op.code = FastCode::kAtStart;
    } else if (letter == 'Z' || (letter == '$' && !isMultiLine)) {
      op.code = FastCode::kAtEnd;
    }
    op.letter = letter;
    return after;
  }

  static void SetPair(const ProgramNode& node, FastOp* op) {
    const auto byte = static_cast<uint8_t>(node.a);
    op->pair[0] = byte;
    const bool hasCases = IsCaseless(node.c) && IsAsciiLetter(byte);
    op->pair[1] = static_cast<uint8_t>(hasCases ? byte ^ 0x20 : byte);
  }

  int32_t Atom(int32_t i) {
    const ProgramNode& node = walk.nodes[i];
    const int32_t after = walk.AfterAtom(i);
    const ProgramNode* const quantifier = walk.QuantifierAt(after);
    if (node.op == OpGrapheme || MayBeSkewed(node)) {
      return Unknown();
    }
    if (quantifier != nullptr) {
      return Run(i, after, *quantifier);
    }
    FastOp& op = Begin(i, FastCode::kCharacter, after);
    if (IsByte(node)) {
      op.code = FastCode::kByte;
      SetPair(node, &op);
    } else if (node.op == OpAnyByte) {
      op.code = FastCode::kAnyByte;
    } else if (ByteSetOf(walk, i, isUtf8) != nullptr) {
      op.code = FastCode::kSet;
      op.bytes = ByteSetOf(walk, i, isUtf8)->member;
    } else if (OpenSetOf(walk, i) != nullptr) {
      op.code = FastCode::kOpenSet;
      op.bytes = OpenSetOf(walk, i)->member;
    } else {
      op.record = &node;
    }
    return after;
  }

  int32_t Run(int32_t i, int32_t after, const ProgramNode& quantifier) {
    const ProgramNode& node = walk.nodes[i];
    if (quantifier.b == 0) {
      Begin(i, FastCode::kJump, after + 1);
      return after + 1;
    }
    const bool isLazy = quantifier.op == OpLazy;
    FastOp& op = Begin(i, FastCode::kCharacterRun, after + 1);
    op.run = {quantifier.a, quantifier.b, {nullptr}};
    if ((IsByte(node) || node.op == OpAnyByte) && isLazy) {
      op.code = FastCode::kLazySet;
      op.bytes = SmallSetOf(node);
    } else if (IsByte(node)) {
      op.code = FastCode::kByteRun;
      SetPair(node, &op);
    } else if (node.op == OpAnyByte) {
      op.code = FastCode::kAnyRun;
    } else if (ByteSetOf(walk, i, isUtf8) != nullptr) {
      op.code = isLazy ? FastCode::kLazySet : FastCode::kSetRun;
      op.bytes = ByteSetOf(walk, i, isUtf8)->member;
    } else if (OpenSetOf(walk, i) != nullptr) {
      op.code = isLazy ? FastCode::kLazyOpenSet : FastCode::kOpenSetRun;
      op.bytes = OpenSetOf(walk, i)->member;
    } else {
      op.record = &node;
      op.code = isLazy ? FastCode::kLazyCharacter : op.code;
    }
    return isLazy && op.bytes == nullptr ? Unknown() : after + 1;
  }

  // A set of a byte in both its cases, or of any byte; null where it has no room.
  const uint8_t* SmallSetOf(const ProgramNode& node) {
    auto* const set = tables.Take<uint8_t>(NextBytes::kTable);
    if (set != nullptr && node.op == OpAnyByte) {
      NextBytes::All(false).Mark(set, 0xFF);
    } else if (set != nullptr) {
      FastOp op = {};
      SetPair(node, &op);
      set[op.pair[0]] = set[op.pair[1]] = 0xFF;
    }
    return set;
  }

  // ---- Groups.

  bool IsRepeated(int32_t opening) const {
    const ProgramNode* const quantifier = walk.QuantifierAt(walk.GroupEnd(opening) + 1);
    return quantifier != nullptr && quantifier->b > 1;
  }

  // Whether a match may pass the records in a group never, or several times.
  bool IsUncertain(int32_t opening) const {
    const uint32_t op = walk.nodes[opening].op;
    return walk.HasAlternatives(opening) || (op != OpCapture && op != OpGroup) ||
           walk.QuantifierAt(walk.GroupEnd(opening) + 1) != nullptr;
  }

  void EnterBody(int32_t opening) {
    loops += IsRepeated(opening) ? 1 : 0;
    uncertain += IsUncertain(opening) ? 1 : 0;
  }

  // What lies after a group and its quantifier.
  int32_t After(int32_t end) const {
    return walk.QuantifierAt(end + 1) == nullptr ? end + 1 : end + 2;
  }

  // The operation that tries the alternatives of a group and, if `exit` is not 0, what follows it,
  // first or last.
  int32_t Choice(int32_t opening, int32_t exit, bool exitFirst) {
    return ChoiceAmong(opening + 1, FirstAlternativeOf(walk.nodes[opening]), exit, exitFirst);
  }

  // Seven ways at a time, the eighth for the rest.
  int32_t ChoiceAmong(int32_t first, int32_t alternative, int32_t exit, bool exitFirst) {
    if (alternative == 0 && exit == 0) {
      return first;
    }
    exitFirst = exitFirst && exit != 0;
    int32_t head = 0;
    int32_t last = 0;
    bool isExitDue = exit != 0 && !exitFirst;
    int32_t target = exitFirst ? exit : first;
    bool isFirstDue = exitFirst;
    for (;;) {
      if (last == 0 || ops[last].ways.count == kMostTargets - 1) {
        const bool isOver = !isFirstDue && alternative == 0 && !isExitDue;
        if (last == 0 || !isOver) {
          const int32_t more = Further(FastCode::kChoice, 0);
          if (last != 0) {
            AddWay(last, more);
          }
          head = head == 0 ? more : head;
          last = more;
        }
      }
      AddWay(last, target);
      if (isFirstDue) {
        target = first;
        isFirstDue = false;
      } else if (alternative != 0) {
        target = alternative + 1;
        alternative = AlternativeNoteOf(walk.nodes[alternative]).next;
      } else if (isExitDue) {
        target = exit;
        isExitDue = false;
      } else {
        break;
      }
    }
    return head;
  }

  void AddWay(int32_t choice, int32_t target) {
    ops[choice].targets[ops[choice].ways.count++] = static_cast<uint16_t>(target);
  }

  uint16_t Entry() {
    return static_cast<uint16_t>(ChoiceAmong(0, FactsOf(state)->firstAlternative, 0, false));
  }

  int32_t Group(int32_t i) {
    const ProgramNode& node = walk.nodes[i];
    const int32_t end = walk.GroupEnd(i);
    const ProgramNode* const quantifier = walk.QuantifierAt(end + 1);
    if (quantifier != nullptr && quantifier->b == 0) {
      Begin(i, FastCode::kJump, end + 2);
      return end + 2;
    }
    const bool isLazy = quantifier != nullptr && quantifier->op == OpLazy;
    const bool isRepeated = quantifier != nullptr && quantifier->b > 1;
    const int32_t body = Choice(i, IsDue(quantifier) ? 0 : end + 2, isLazy);
    if (isRepeated) {
      EnterLoop(i, body, *quantifier);
    } else if (node.op == OpCapture) {
      FastOp& op = Begin(i, FastCode::kOpen, body);
      op.serial = SerialOf(node);
      op.flags = loops > 0 ? kIsUndone : 0;
    } else {
      Begin(i, FastCode::kJump, body);
    }
    if (node.op == OpCapture) {
      CloseAt(i, end);
    } else {
      Begin(end, FastCode::kJump, After(end));
    }
    if (isRepeated) {
      ops[end].next = static_cast<uint16_t>(LoopAt(i, body));
    }
    EnterBody(i);
    return i + 1;
  }

  void CloseAt(int32_t opening, int32_t end) {
    const ProgramNode& node = walk.nodes[opening];
    const bool isCertain = uncertain == 0 && FactsOf(state)->firstAlternative == 0 &&
                           walk.QuantifierAt(end + 1) == nullptr;
    FastOp& op = Begin(end, FastCode::kClose, After(end));
    op.end.slot = static_cast<uint16_t>(node.c);
    op.serial = SerialOf(node);
    op.flags = isCertain ? 0 : kIsUndone;
    certainSlots += isCertain ? 1 : 0;
  }

  uint8_t LoopFlags(int32_t opening, const ProgramNode& quantifier) const {
    const bool isCounted = quantifier.a > 1 || quantifier.b != RegExpUnbounded;
    return static_cast<uint8_t>(
        (isCounted ? kIsCounted : 0) | (quantifier.op == OpLazy ? kIsLazy : 0) |
        (shapes[SerialOf(walk.nodes[opening])].mayBeEmpty ? kMayBeEmpty : 0) |
        (walk.nodes[opening].op == OpCapture ? kIsUndone : 0));
  }

  // Whether anything has to be kept of where a repetition began, or which it is.
  static bool IsKept(uint8_t flags) {
    return (flags & (kIsCounted | kMayBeEmpty | kIsUndone)) != 0;
  }

  void EnterLoop(int32_t i, int32_t body, const ProgramNode& quantifier) {
    const uint8_t flags = LoopFlags(i, quantifier);
    if ((flags & kMayBeEmpty) != 0 && emptyLoopCount++ < kMostEmptyLoops) {
      emptyLoops[emptyLoopCount - 1] = static_cast<int16_t>(SerialOf(walk.nodes[i]));
    }
    FastOp& op = Begin(i, IsKept(flags) ? FastCode::kEnterLoop : FastCode::kJump, body);
    op.flags = flags;
    op.serial = SerialOf(walk.nodes[i]);
    op.loop = {quantifier.a, quantifier.b, 0, 0, 0, 0};
  }

  // `body` is what the group's opening leads to.
  int32_t LoopAt(int32_t opening, int32_t body) {
    const int32_t end = walk.GroupEnd(opening);
    const ProgramNode& quantifier = walk.nodes[end + 1];
    const bool isLazy = quantifier.op == OpLazy;
    const int32_t again = quantifier.a > 1 ? body : 0;
    const int32_t againOrExit = quantifier.a == 0 ? body : Choice(opening, end + 2, isLazy);
    const int32_t cost = shapes[SerialOf(walk.nodes[opening])].mostLevels;
    VEK_EXPECT(cost <= UINT16_MAX);  // a record has few levels
    mostCost = cost > mostCost ? cost : mostCost;
    const int32_t index = Further(FastCode::kLoop, againOrExit);
    FastOp& op = ops[index];
    op.flags = LoopFlags(opening, quantifier);
    op.serial = SerialOf(walk.nodes[opening]);
    op.loop = {0,
               0,
               static_cast<uint16_t>(again),
               static_cast<uint16_t>(againOrExit),
               static_cast<uint16_t>(end + 2),
               static_cast<uint16_t>(cost)};
    return index;
  }

  int32_t GroupEnd(int32_t i) {
    const int32_t opening = OpeningOf(walk.nodes[i]);
    loops -= IsRepeated(opening) ? 1 : 0;
    uncertain -= IsUncertain(opening) ? 1 : 0;
    return After(i);
  }

  int32_t Sub(int32_t i, FastCode code) {
    const int32_t end = walk.GroupEnd(i);
    if (walk.QuantifierAt(end + 1) != nullptr) {
      return Unknown();
    }
    FastOp& op = Begin(i, code, end + 1);
    op.targets[0] = static_cast<uint16_t>(Choice(i, 0, false));
    Begin(end, FastCode::kSubEnd, end + 1);
    EnterBody(i);
    return i + 1;
  }

  int32_t Atomic(int32_t i) { return Sub(i, FastCode::kAtomic); }

  int32_t Lookaround(int32_t i) {
    const ProgramNode& node = walk.nodes[i];
    const int32_t following = Sub(i, FastCode::kLookaround);
    const bool isNegative = node.op == OpNegLookahead || node.op == OpNegLookbehind;
    ops[i].length = node.c;
    ops[i].flags =
        static_cast<uint8_t>((isNegative ? kIsNegative : 0) | (IsLookbehind(node) ? kIsBehind : 0));
    return following;
  }

  // ---- Jumps.

  uint16_t Passed(uint16_t index) const {
    while (ops[index].code == FastCode::kJump) {
      index = ops[index].next;
    }
    return index;
  }

  // Lets every operation lead to one that does something. Skipped bodies hold no operations.
  void PassJumps() {
    for (int32_t i = 0; i < used; ++i) {
      ForEachTarget(ops + i, [this](uint16_t* target) { *target = Passed(*target); });
    }
  }

  RegExpState* state;
  ProgramWalk walk;
  FastProgram* program;
  const int32_t capacity;
  // Scratch for each operation, for each group, and again for each operation.
  NextBytes* next;
  FastOp* ops;
  GroupShape* shapes;
  uint16_t* positions;
  TableRoom tables;
  const bool isUtf8;
  int32_t used = 0;
  bool isKnown = true;
  int32_t loops = 0;      // around the record
  int32_t uncertain = 0;  // groups around it that a match may not pass once
  int32_t certainSlots = 0;
  int32_t mostCost = 0;  // of a loop
  int8_t emptyLoopCount = 0;
  int16_t emptyLoops[kMostEmptyLoops] = {};
};

// In the part of the room that is free; what the program does not need of it is free again.
const FastProgram* Translate(RegExpState* state, FreeRoom* room) {
  constexpr int32_t kMostRecords = 400;
  const int64_t least = Translator::ScratchOf(*state);
  static_assert(sizeof(FastProgram) >= sizeof(CharacterSet),
                "where there is room for a translation, every class has got its set");
  if (state->nodeCount > kMostRecords || room->Size() < least) {
    return nullptr;
  }
  uint8_t* const begin = room->Begin();
  Translator translator(state, begin, begin + room->Size());
  const FastProgram* const program = translator.Run();
  if (program != nullptr) {
    room->Take(translator.End() - begin);
  }
  return program;
}

}  // namespace

const FastProgram* FastProgramFor(RegExpState* state) {
  PatternFacts* const facts = FactsOf(state);
  const FastProgram* const made = FastProgramOf(state);
  FreeRoom room(state);
  if (made != nullptr && made->isUtf8 == (state->characterFormat != 0)) {
    return made;
  }
  if (made != nullptr) {  // nothing is taken from the room after it
    room.GiveBack(reinterpret_cast<const uint8_t*>(made));
    facts->fastProgram = 0;
  }
  if (facts->isUntranslated != 0) {
    return nullptr;
  }
  const FastProgram* const program = Translate(state, &room);
  if (program == nullptr) {
    facts->isUntranslated = 1;
    return nullptr;
  }
  facts->fastProgram = room.OffsetOf(reinterpret_cast<const uint8_t*>(program));
  return program;
}

}  // namespace vekch::regexp
