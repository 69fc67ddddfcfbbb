#include "regexp/search_plan.h"

#include "regexp/bytes.h"
#include "regexp/literal.h"
#include "regexp/program_walk.h"
#include "regexp/properties.h"
#include "strings/kernels/block.h"
#include "strings/kernels/commonness.h"

namespace vekch::regexp {
namespace {

constexpr int32_t kMostRecords = 2000;  // of a program that gets a plan
constexpr int32_t kMostWindow = 8;      // bits of a filter's byte
constexpr int32_t kMostRounds = 8;
constexpr uint8_t kNewline = '\n';
constexpr int32_t kLongSubject = 128;  // for which a plan pays at once
constexpr int32_t kManySearches = 4;
constexpr int32_t kSlack = 4;  // levels that loops and the last test may take beside the records

// How often the bytes up to a value occur in texts, in about a thousand bytes.
struct Weights {
  int32_t upTo[256];

  constexpr Weights() : upTo() {
    int32_t sum = 0;
    for (int32_t value = 0; value < 256; ++value) {
      const int32_t commonness = kernels::kCommonness.of[value];
      // The commonest byte but for its special rank has 78; frequencies fall as ranks rise.
      sum += commonness == 0 ? 1 : commonness == 255 ? 10 : 400 / (84 - commonness);
      upTo[value] = sum;
    }
  }

  constexpr int32_t Of(uint8_t lowest, uint8_t highest) const {
    return upTo[highest] - (lowest == 0 ? 0 : upTo[lowest - 1]);
  }
};
constexpr Weights kWeights;
constexpr int32_t kEverySecond = 500;
constexpr int32_t kRarePair = 60;  // of a thousand places
constexpr int32_t kFewRanges = 2;  // which are tested faster than a window

int32_t Plus(int64_t a, int64_t b) {
  return a + b < INT32_MAX ? static_cast<int32_t>(a + b) : INT32_MAX;
}

// ---- The sets of a match's first bytes.

// Follows every way through the program at once, a byte at a time. For each record there is a set
// of bits that says how it can have been reached: bit n where n bytes of a string, or n
// repetitions, have been consumed by it already; bit 0 else.
class FilterMaker {
 public:
  FilterMaker(const ProgramWalk& programWalk, int32_t firstAlternative, uint8_t* marks,
              SearchPlan* plan)
      : walk(programWalk),
        topLevel(firstAlternative),
        now(marks),
        next(marks + programWalk.count + 1),
        filter(plan->bytes) {}

  // Returns the number of bytes that are known.
  int32_t Run() {
    Clear(now);
    now[0] = 1;
    MarkAlternatives(topLevel);
    int32_t window = 0;
    while (window < kMostWindow) {
      Clear(next);
      ends = false;
      isUnknown = false;
      bit = static_cast<uint8_t>(1U << window);
      isLast = window == kMostWindow - 1 || mayBeWithin;
      if (mayBeWithin) {
        AddAll(0x80, 256);
      }
      if (!Close() || ends || isUnknown) {
        break;
      }
      ++window;
      if (isLast) {
        break;
      }
      uint8_t* const swap = now;
      now = next;
      next = swap;
    }
    // What a step that was broken off has added counts for nothing.
    for (int32_t i = 0; i < 256; ++i) {
      filter[i] &= static_cast<uint8_t>((1U << window) - 1);
    }
    return window;
  }

  // Levels that the matcher may use up before the known bytes are tested, or -1 if that depends on
  // the subject.
  int32_t Levels() const { return passesLookaround ? -1 : levels; }

 private:
  void Clear(uint8_t* marks) const {
    for (int32_t i = 0; i <= walk.count; ++i) {
      marks[i] = 0;
    }
  }

  // Marks what is reached without a byte until nothing changes. Only repeated groups lead back.
  bool Close() {
    for (int32_t round = 0; round < kMostRounds; ++round) {
      changed = false;
      for (int32_t i = 0; i < walk.count && !ends && !isUnknown; ++i) {
        if (now[i] != 0) {
          Step(i);
          levels += round == 0 ? 2 : 0;
        }
        i += walk.nodes[i].op == OpClass ? walk.nodes[i].b : 0;
      }
      ends = ends || now[walk.count] != 0;
      if (!changed) {
        return true;
      }
    }
    return false;
  }

  void Mark(int32_t index, uint8_t bits = 1) {
    changed = changed || (index <= current && (now[index] | bits) != now[index]);
    now[index] |= bits;
  }

  void MarkAlternatives(int32_t alternative) {
    for (; alternative != 0; alternative = NoteOf<AlternativeNote>(walk.nodes[alternative]).next) {
      Mark(alternative + 1);
    }
  }

  void Step(int32_t index) {
    current = index;
    const ProgramNode& node = walk.nodes[index];
    switch (node.op) {
      case OpSetOptions:
        Mark(index + 1);
        return;
      case OpAssert:
        Mark(walk.QuantifierAt(index + 1) == nullptr ? index + 1 : index + 2);
        return;
      case OpLookbehind:
      case OpNegLookbehind:
      case OpLookahead:
      case OpNegLookahead:
        passesLookaround = true;
        Mark(walk.GroupEnd(index) + 1);
        return;
      case OpCapture:
      case OpGroup:
      case OpOptionGroup:
      case OpAtomic:
      case OpConditional:
        OpenGroup(index);
        return;
      case OpAlternative: {
        const int32_t groupEnd = NoteOf<AlternativeNote>(node).groupEnd;
        Mark(groupEnd == 0 ? walk.count : groupEnd);
        return;
      }
      case OpGroupEnd:
        EndGroup(index);
        return;
      case OpBackref:
        isUnknown = true;
        return;
      default:
        Consume(index);
        return;
    }
  }

  void OpenGroup(int32_t index) {
    const ProgramNode& node = walk.nodes[index];
    const int32_t end = walk.GroupEnd(index);
    const ProgramNode* const quantifier = walk.QuantifierAt(end + 1);
    if (quantifier != nullptr && quantifier->a == 0) {
      Mark(end + 2);
    }
    if (quantifier == nullptr || quantifier->b != 0) {
      EnterBody(index);
    }
    if (node.op == OpConditional && !walk.HasAlternatives(index)) {
      Mark(end);
    }
  }

  void EnterBody(int32_t index) {
    int32_t body = index + 1;
    if (walk.nodes[index].op == OpConditional) {
      passesLookaround = passesLookaround || walk.nodes[body].op != OpBackref;
      body = walk.nodes[body].op == OpBackref ? body + 1 : walk.GroupEnd(body) + 1;
    }
    Mark(body);
    MarkAlternatives(NoteOf<GroupNote>(walk.nodes[index]).firstAlternative);
  }

  void EndGroup(int32_t index) {
    const ProgramNode* const quantifier = walk.QuantifierAt(index + 1);
    Mark(quantifier == nullptr ? index + 1 : index + 2);
    if (quantifier != nullptr && quantifier->b > 1) {
      EnterBody(static_cast<int32_t>(walk.nodes[index].ptr));
    }
  }

  void Consume(int32_t index) {
    const ProgramNode& node = walk.nodes[index];
    if (node.op == OpString) {
      const uint8_t* const run = RunOf(node);
      for (int32_t n = 0; n < kMostWindow; ++n) {
        if ((now[index] >> n & 1) != 0) {
          AddByte(run[n], IsCaseless(node.c));
          if (n + 1 == node.b) {
            next[index + 1] |= 1;
          } else {
            next[index] |= static_cast<uint8_t>(2U << n);
          }
        }
      }
      return;
    }
    const int32_t behind = walk.BehindAtom(index);
    const ProgramNode* const quantifier = walk.QuantifierAt(behind);
    const int32_t minimum = quantifier == nullptr ? 1 : quantifier->a;
    const int32_t maximum = quantifier == nullptr ? 1 : quantifier->b;
    const int32_t after = quantifier == nullptr ? behind : behind + 1;
    if (minimum == 0) {
      Mark(after);
    }
    if (maximum == 0) {
      return;
    }
    AddAtom(node);
    for (int32_t n = 0; n < kMostWindow; ++n) {
      if ((now[index] >> n & 1) != 0) {
        const int32_t done = n + 1;
        if (done < maximum) {
          next[index] |= static_cast<uint8_t>(1U << (done < kMostWindow ? done : n));
        }
        if (done >= minimum) {
          next[after] |= 1;
        }
      }
    }
  }

  void AddByte(uint8_t byte, bool caseless) {
    filter[byte] |= bit;
    if (caseless && IsAsciiLetter(byte)) {
      filter[byte ^ 0x20] |= bit;
    }
  }

  // A character of several bytes leaves it open what stands two bytes further: the window ends
  // with the byte behind its first.
  void AddAtom(const ProgramNode& node) {
    switch (node.op) {
      case OpChar:
        AddByte(static_cast<uint8_t>(node.a), IsCaseless(node.c));
        return;
      case OpAnyByte:
        AddAll(0, 256);
        return;
      case OpCharType:
      case OpClass: {
        const CharacterSet* const set = SetNoteOf(node);
        if (set == nullptr) {
          isUnknown = true;
          return;
        }
        AddSet(*set);
        return;
      }
      default:
        AddAll(0x80, 256);
        for (int32_t value = 0; value < 0x80; ++value) {
          if (AcceptsAscii(value, node)) {
            filter[value] |= bit;
          }
        }
        mayBeWithin = true;
        return;
    }
  }

  void AddSet(const CharacterSet& set) {
    for (int32_t value = 0; value < 256; ++value) {
      filter[value] |= static_cast<uint8_t>(set.member[value] & bit);
    }
    if (set.wide != Wide::kOutside) {
      AddAll(0x80, 256);
      mayBeWithin = true;
    }
  }

  void AddAll(int32_t first, int32_t end) {
    for (int32_t value = first; value < end; ++value) {
      filter[value] |= bit;
    }
  }

  static bool AcceptsAscii(int32_t value, const ProgramNode& node) {
    switch (node.op) {
      case OpGrapheme:
        return true;
      case OpCategory:
        return InCategorySet(value, node.ptr);
      case OpCodePoint:
        return MatchPropertyItem(value, &node, OptionsNote(node) & RegExpOptionI) >= 0;
      default:
        return MatchPropertyItem(value, &node, 0) >= 0;
    }
  }

  const ProgramWalk& walk;
  const int32_t topLevel;
  uint8_t* now;
  uint8_t* next;
  uint8_t* filter;
  uint8_t bit = 1;
  int32_t current = -1;
  int32_t levels = kSlack;
  bool changed = false;
  bool ends = false;         // a match can be over here
  bool isUnknown = false;    // anything can follow here
  bool isLast = false;       // no further byte is asked for
  bool mayBeWithin = false;  // the byte may be within a character
  bool passesLookaround = false;
};

// ---- The choice of a strategy.

class PlanMaker {
 public:
  PlanMaker(RegExpState* patternState, SearchPlan* searchPlan, uint8_t* scratch)
      : state(patternState), walk(*patternState), plan(searchPlan), work(scratch) {}

  void Run() {
    const bool isSingle = InfoOf(state)->firstAlternative == 0;  // no alternatives at top level
    plan->strategy = SearchPlan::kEverywhere;
    for (int32_t value = 0; value < 256; ++value) {
      work[value] = 0;
    }
    if (isSingle && (BeginsLine() || UseLeadingLiteral() || UseLiteralBefore() || UseRun())) {
      return;
    }
    if (UseWords()) {
      return;
    }
    UseFilter();
    plan->isAtWordStart = isSingle && BeginsWord();
  }

 private:
  bool Use(SearchPlan::Strategy strategy, int32_t depth) {
    plan->strategy = strategy;
    plan->depth = depth;
    return true;
  }

  // The anchor in front of a leading ".*".
  bool BeginsLine() {
    return walk.count > 0 && walk.nodes[0].op == OpAssert && walk.nodes[0].a == 0x80 &&
           walk.QuantifierAt(1) == nullptr && Use(SearchPlan::kLineStart, kSlack);
  }

  bool UseLiteral(int32_t index, int32_t distance, int32_t passes) {
    plan->literal = index;
    plan->distance = distance;
    return Use(SearchPlan::kLiteral, passes + kSlack);
  }

  bool IsExactLiteral(int32_t index) const {
    return walk.IsCertainLiteral(index) && !IsCaseless(walk.nodes[index].c);
  }

  bool UseLeadingLiteral() {
    int32_t passes = 0;
    const int32_t first = walk.SkipPassed(0, &passes);
    return IsExactLiteral(first) && UseLiteral(first, 0, passes);
  }

  // "(?<=x)" with a literal of as many bytes as characters.
  bool UseLiteralBefore() {
    if (walk.count < 3 || walk.nodes[0].op != OpLookbehind || walk.nodes[0].b != 1 ||
        walk.QuantifierAt(3) != nullptr || !IsExactLiteral(1)) {
      return false;
    }
    const ProgramNode& literal = walk.nodes[1];
    const int32_t length = literal.op == OpString ? literal.b : 1;
    return length == walk.nodes[0].c && IsAscii(literal) && UseLiteral(1, -length, 2);
  }

  static bool IsAscii(const ProgramNode& literal) {
    if (literal.op == OpChar) {
      return literal.a < 0x80;
    }
    for (int32_t i = 0; i < literal.b; ++i) {
      if (RunOf(literal)[i] >= 0x80) {
        return false;
      }
    }
    return true;
  }

  // Sets and literals one behind the other, at least one of them repeated without end: the rarest
  // literal behind it ends a run of the bytes that may stand before it.
  bool UseRun() {
    int32_t passes = 0;
    int32_t least = 0;
    int32_t sets = 0;
    bool isEndless = false;
    int32_t i = walk.SkipPassed(0, &passes);
    for (; i < walk.count; i = walk.SkipPassed(i, &passes)) {
      if (isEndless && IsExactLiteral(i)) {
        ConsiderLiteral(i, least, passes, isExact && sets == 1 && least <= 1 && passes == 2);
      }
      const int32_t width = AddToRun(walk.nodes[i]);
      if (width == 0) {
        break;
      }
      const int32_t behind = walk.BehindAtom(i);
      const ProgramNode* const quantifier = walk.QuantifierAt(behind);
      least =
          quantifier == nullptr ? Plus(least, width) : Plus(least, int64_t{quantifier->a} * width);
      isEndless = isEndless || (quantifier != nullptr && quantifier->b == RegExpUnbounded);
      ++sets;
      passes += 2;
      i = quantifier == nullptr ? behind : behind + 1;
    }
    if (isEndless && i < walk.count && walk.nodes[i].op == OpLookahead &&
        !walk.HasAlternatives(i) && IsExactLiteral(i + 1)) {
      ConsiderLiteral(i + 1, least, passes + 2, isExact && sets == 1 && least <= 1 && passes == 2);
    }
    return plan->strategy == SearchPlan::kRunLiteral;
  }

  // Takes the literal if it is the first one, or rarer by far, in a run that ends with the line.
  void ConsiderLiteral(int32_t index, int32_t least, int32_t passes, bool isSimple) {
    const int32_t weight = RarestOf(walk.nodes[index]);
    const bool isFirst = plan->strategy != SearchPlan::kRunLiteral;
    if (!isFirst && (weight * 2 >= literalWeight || work[kNewline] != 0)) {
      return;
    }
    literalWeight = weight;
    plan->literal = index;
    plan->distance = least;
    for (int32_t value = 0; value < 256; ++value) {
      plan->bytes[value] = work[value];
    }
    const uint8_t first = Literal(walk.nodes[index]).bytes[0];
    plan->runDecides = isSimple && work[first] == 0 && !LooksBack(index);
    Use(SearchPlan::kRunLiteral, passes + kSlack);
  }

  static int32_t RarestOf(const ProgramNode& node) {
    const Literal literal(node);
    int32_t rarest = INT32_MAX;
    for (int32_t i = 0; i < literal.length; ++i) {
      const int32_t weight = kWeights.Of(literal.bytes[i], literal.bytes[i]);
      rarest = weight < rarest ? weight : rarest;
    }
    return rarest;
  }

  // Adds the bytes of an atom to those of the run, which are gathered in `work`; returns how many
  // it takes at least, 0 if it can be no part of a run.
  int32_t AddToRun(const ProgramNode& node) {
    if (IsLiteral(node)) {
      const Literal literal(node);
      for (int32_t i = 0; i < literal.length; ++i) {
        const uint8_t byte = literal.bytes[i];
        work[byte] = 0xFF;
        if (IsCaseless(node.c) && IsAsciiLetter(byte)) {
          work[byte ^ 0x20] = 0xFF;
        }
      }
      return literal.length;
    }
    const CharacterSet* const set =
        node.op == OpCharType || node.op == OpClass ? SetNoteOf(node) : nullptr;
    if (set == nullptr) {
      return 0;
    }
    isExact = isExact && set->wide == Wide::kOutside;
    for (int32_t value = 0; value < 256; ++value) {
      const bool isWide = value >= 0x80 && set->wide != Wide::kOutside;
      work[value] |= isWide ? 0xFF : set->member[value];
    }
    return 1;
  }

  // Whether what stands from a record on may depend on where the match began.
  bool LooksBack(int32_t index) const {
    for (; index < walk.count; ++index) {
      const uint32_t op = walk.nodes[index].op;
      if (op == OpBackref || op == OpLookbehind || op == OpNegLookbehind || op == OpConditional) {
        return true;
      }
    }
    return false;
  }

  // The pattern is alternatives of literals, of three bytes or more.
  bool UseWords() {
    if (state->searchMode != 2) {
      return false;
    }
    int32_t shortest = kMostWindow + 1;
    for (int32_t i = 0; i < walk.count; i += 2) {
      const int32_t length = Literal(walk.nodes[i]).length;
      shortest = length < shortest ? length : shortest;
    }
    if (shortest < 3) {
      return false;
    }
    auto* const table = reinterpret_cast<uint8_t*>(plan + 1);
    kernels::ClearWords(table, kPairHashes / 8);
    for (int32_t i = 0; i < walk.count; i += 2) {
      const uint8_t* const bytes = Literal(walk.nodes[i]).bytes;
      for (int32_t k = 0; k + 1 < shortest; ++k) {
        table[PairHash(bytes[k], bytes[k + 1])] |= static_cast<uint8_t>(1U << k);
      }
    }
    plan->window = static_cast<uint8_t>(shortest - 1);
    return Use(SearchPlan::kWords, kSlack);
  }

  void UseFilter() {
    FilterMaker maker(walk, InfoOf(state)->firstAlternative, work, plan);
    plan->window = static_cast<uint8_t>(maker.Run());
    if (plan->window != 0) {
      Use(SearchPlan::kFilter, maker.Levels() < 0 ? InfoOf(state)->mostDepth : maker.Levels());
      UsePair();
    }
  }

  // The two of the known bytes that texts hold least often, if they are rare, and sets of few
  // ranges.
  void UsePair() {
    kernels::BytePair& pair = plan->pair;
    int32_t best[2] = {kEverySecond, kEverySecond};
    for (int32_t place = 0; place < plan->window; ++place) {
      kernels::PairRanges ranges;
      const int32_t count = RangesAt(place, &ranges);
      const int32_t weight = count == 0 ? kEverySecond : WeightOf(ranges, count);
      const int32_t worse = best[0] > best[1] ? 0 : 1;
      if (weight < best[worse]) {
        best[worse] = weight;
        pair.offsets[worse] = place;
        pair.sets[worse] = ranges;
        pair.rangeCount = count > pair.rangeCount ? count : pair.rangeCount;
      }
    }
    for (int32_t side = 0; side < 2; ++side) {
      if (best[side] == kEverySecond) {  // only one place has a set that serves
        pair.offsets[side] = pair.offsets[1 - side];
        pair.sets[side] = pair.sets[1 - side];
      }
    }
    const bool isKnown = best[0] < kEverySecond || best[1] < kEverySecond;
    const bool isRare = best[0] * best[1] < kRarePair * kEverySecond;
    if (isKnown && (isRare || pair.rangeCount <= kFewRanges)) {
      plan->strategy = SearchPlan::kPair;
    }
  }

  // The ranges of bytes that may stand at a place: 1, 2 or 4 of them, 0 for more.
  int32_t RangesAt(int32_t place, kernels::PairRanges* ranges) const {
    const kernels::Block bit = kernels::Splat(static_cast<uint8_t>(1U << place));
    int32_t count = 0;
    uint32_t previous = 0;  // whether the byte below the current 16 is a member
    bool isOpen = false;
    for (int32_t base = 0; base < 256; base += kernels::kBlock) {
      const kernels::Block members = kernels::LoadAny(plan->bytes + base) & bit;
      const uint32_t bits = kernels::LaneBits(members == bit);
      for (uint32_t changes = bits ^ ((bits << 1 | previous) & 0xFFFFU); changes != 0;
           changes &= changes - 1) {
        const int32_t value = base + kernels::LowestBit(changes);
        if (isOpen) {
          ranges->highest[count++] = static_cast<uint8_t>(value - 1);
        } else if (count == kernels::kMostPairRanges) {
          return 0;
        } else {
          ranges->lowest[count] = static_cast<uint8_t>(value);
        }
        isOpen = !isOpen;
      }
      previous = bits >> 15;
    }
    if (isOpen) {
      ranges->highest[count++] = 255;
    }
    for (int32_t i = count; i > 0 && i < kernels::kMostPairRanges; ++i) {
      ranges->lowest[i] = ranges->lowest[count - 1];
      ranges->highest[i] = ranges->highest[count - 1];
    }
    return count == 3 ? 4 : count;
  }

  static int32_t WeightOf(const kernels::PairRanges& ranges, int32_t count) {
    int32_t weight = 0;
    for (int32_t i = 0; i < count; ++i) {
      const bool isRepeated = i > 0 && ranges.lowest[i] == ranges.lowest[i - 1];
      weight += isRepeated ? 0 : kWeights.Of(ranges.lowest[i], ranges.highest[i]);
    }
    return weight < kEverySecond ? weight : kEverySecond;
  }

  // "\b" in front of a word byte.
  bool BeginsWord() const {
    if (walk.count == 0 || walk.nodes[0].op != OpAssert || walk.nodes[0].a != 'b' ||
        walk.QuantifierAt(1) != nullptr || plan->window == 0) {
      return false;
    }
    for (int32_t value = 0; value < 256; ++value) {
      if ((plan->bytes[value] & 1) != 0 && !IsWordByte(value)) {
        return false;
      }
    }
    return true;
  }

  RegExpState* state;
  ProgramWalk walk;
  SearchPlan* plan;
  uint8_t* work;  // at least 256 bytes
  int32_t literalWeight = 0;
  bool isExact = true;  // the run's bytes are what its sets accept, no more
};

}  // namespace

const SearchPlan* PlanFor(RegExpState* state, int32_t length) {
  SearchInfo* const info = InfoOf(state);
  if (info->plan != nullptr) {
    return info->plan;
  }
  if (info->room == nullptr || (length < kLongSubject && info->searches < kManySearches)) {
    ++info->searches;
    return nullptr;
  }
  constexpr int64_t kScratch = 2 * (kMostRecords + 1);
  static_assert(kScratch >= kPairHashes && kScratch >= 256);
  auto* const roomEnd = reinterpret_cast<uint8_t*>(GroupsOf(state) + RegExpTableSize);
  if (state->nodeCount > kMostRecords ||
      roomEnd - info->room < static_cast<int64_t>(sizeof(SearchPlan)) + kScratch) {
    info->room = nullptr;
    return nullptr;
  }
  auto* const plan = reinterpret_cast<SearchPlan*>(info->room);
  *plan = {};
  PlanMaker(state, plan, info->room + sizeof(SearchPlan)).Run();
  info->room = nullptr;  // the plan's table may lie there
  info->plan = plan;
  return plan;
}

}  // namespace vekch::regexp
