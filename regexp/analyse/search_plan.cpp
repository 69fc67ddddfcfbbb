// SPDX-License-Identifier: MIT
#include "regexp/analyse/search_plan.h"

#include "regexp/analyse/first_bytes.h"
#include "regexp/analyse/levels.h"
#include "regexp/characters/bytes.h"
#include "regexp/characters/character_set.h"
#include "regexp/object/program_walk.h"
#include "strings/kernels/block.h"
#include "strings/kernels/clear_words.h"
#include "strings/kernels/commonness.h"

namespace vekch::regexp {
namespace {

constexpr int32_t kMostRecords = 2000;  // of a program that gets a plan
constexpr uint8_t kNewline = '\n';
constexpr int32_t kLongSubject = 128;  // for which a plan pays at once
constexpr int32_t kManySearches = 4;

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

// ---- The choice of a strategy.

class PlanMaker {
 public:
  PlanMaker(RegExpState* patternState, SearchPlan* searchPlan, uint8_t* scratch)
      : state(patternState), walk(*patternState), plan(searchPlan), work(scratch) {}

  void Run() {
    const bool isSingle = FactsOf(state)->firstAlternative == 0;  // no alternatives at top level
    plan->strategy = SearchPlan::kNoPrefilter;
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
    return walk.count > 0 && walk.nodes[0].op == OpAssert &&
           walk.nodes[0].a == RegExpAssertLineStart && walk.QuantifierAt(1) == nullptr &&
           Use(SearchPlan::kLineStart, kSlackLevels);
  }

  bool UseLiteral(int32_t index, int32_t distance, int32_t passes) {
    plan->literal = index;
    plan->distance = distance;
    return Use(SearchPlan::kPrefixLiteral, passes + kSlackLevels);
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
    return plan->strategy == SearchPlan::kInnerLiteral;
  }

  // Takes the literal if it is the first one, or rarer by far, in a run that ends with the line.
  void ConsiderLiteral(int32_t index, int32_t least, int32_t passes, bool isSimple) {
    const int32_t weight = RarestOf(walk.nodes[index]);
    const bool isFirst = plan->strategy != SearchPlan::kInnerLiteral;
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
    Use(SearchPlan::kInnerLiteral, passes + kSlackLevels);
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
        work[byte] = work[OtherCase(byte, IsCaseless(node.c))] = 0xFF;
      }
      return literal.length;
    }
    const CharacterSet* const set = HasSet(node) ? SetOf(node) : nullptr;
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
    return Use(SearchPlan::kHashedPairs, kSlackLevels);
  }

  void UseFilter() {
    const FirstBytes known =
        FindFirstBytes(walk, FactsOf(state)->firstAlternative, work, plan->bytes);
    plan->window = static_cast<uint8_t>(known.window);
    if (plan->window != 0) {
      Use(SearchPlan::kClassWindow, known.levels < 0 ? FactsOf(state)->mostDepth : known.levels);
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
      plan->strategy = SearchPlan::kPackedPair;
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
    if (count > 0) {
      kernels::RepeatLast(ranges, count);
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
  PatternFacts* const facts = FactsOf(state);
  if (facts->plan != 0) {
    return reinterpret_cast<const SearchPlan*>(reinterpret_cast<const uint8_t*>(state) +
                                               facts->plan);
  }
  if (facts->planless == kNeverPlanned) {
    return nullptr;
  }
  // Where groups repeat so that tries can grow without end, the plan's help is needed at once.
  const bool mayGrow = facts->mostDepth >= RegExpDefaultMatchLimit / RegExpDepthShare;
  if (length < kLongSubject && facts->planless < kManySearches && !mayGrow) {
    ++facts->planless;
    return nullptr;
  }
  constexpr int64_t kScratch = 2 * (kMostRecords + 1);
  static_assert(kScratch >= kPairHashes && kScratch >= 256);
  FreeRoom room(state);
  if (state->nodeCount > kMostRecords || facts->freeFrom == 0 ||
      room.Size() < static_cast<int64_t>(sizeof(SearchPlan)) + kScratch) {
    facts->planless = kNeverPlanned;
    return nullptr;
  }
  auto* const plan = reinterpret_cast<SearchPlan*>(room.Take(sizeof(SearchPlan)));
  *plan = {};
  PlanMaker(state, plan, room.Begin()).Run();
  if (plan->strategy == SearchPlan::kHashedPairs) {
    room.Take(kPairHashes);  // what was made there stays
  }
  facts->plan = room.OffsetOf(reinterpret_cast<const uint8_t*>(plan));
  return plan;
}

}  // namespace vekch::regexp
