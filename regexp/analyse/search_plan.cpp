// SPDX-License-Identifier: MIT
#include "regexp/analyse/search_plan.h"

#include "regexp/analyse/first_bytes.h"
#include "regexp/analyse/levels.h"
#include "regexp/characters/byte_ranges.h"
#include "regexp/characters/bytes.h"
#include "regexp/characters/character_set.h"
#include "regexp/characters/wide_bytes.h"
#include "regexp/object/program_walk.h"
#include "strings/kernels/block.h"
#include "strings/kernels/byte_frequency.h"
#include "strings/kernels/clear_words.h"

namespace vekch::regexp {
namespace {

constexpr int32_t kMostRecords = 2000;  // of a program that gets a plan
constexpr uint8_t kNewline = '\n';
constexpr int32_t kLongSubject = 128;  // for which a plan pays at once
constexpr int32_t kManySearches = 4;

// How often a byte above 0x7F occurs in a thousand of a text whose alphabet takes it: most lead
// bytes of everyday characters make up a large part of what they begin, and the others are spread
// evenly.
constexpr int32_t WeightAboveAscii(int32_t value) {
  constexpr int32_t kContinuation = 8;
  constexpr int32_t kLeadOfTwo = 250;
  constexpr int32_t kLeadOfThree = 60;
  return value < 0xC0 ? kContinuation : value < 0xE0 ? kLeadOfTwo : value < 0xF0 ? kLeadOfThree : 1;
}

// How often the bytes up to a value occur in texts, in about a thousand bytes.
struct Weights {
  int32_t upTo[256];

  constexpr Weights() : upTo() {
    int32_t sum = 0;
    for (int32_t value = 0; value < 256; ++value) {
      const int32_t rank = kernels::kByteFrequencyRank.of[value];
      // The most frequent byte but for its special rank has 78; frequencies fall as ranks rise.
      sum += value >= 0x80 ? WeightAboveAscii(value)
             : rank == 0   ? 1
             : rank == 255 ? 10
                           : 400 / (84 - rank);
      upTo[value] = sum;
    }
  }

  constexpr int32_t Of(uint8_t lowest, uint8_t highest) const {
    return upTo[highest] - (lowest == 0 ? 0 : upTo[lowest - 1]);
  }
};
constexpr Weights kWeights;
constexpr int32_t kEverySecond = 500;
constexpr int32_t kRarePair = 60;  // of a thousand positions
constexpr int32_t kLeastWord = 3;
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
    if (plan->isAtWordStart != 0 && !isRarePair) {
      plan->strategy = SearchPlan::kWordStart;
    }
    plan->runDecides = isSingle && plan->window != 0 && BeginsWithRun();
  }

 private:
  bool Use(SearchPlan::Strategy strategy, int32_t depth) {
    plan->strategy = strategy;
    plan->depth = depth;
    return true;
  }

  // The anchor before a leading ".*", which nothing repeats.
  bool BeginsLine() {
    return walk.count > 0 && walk.nodes[0].op == OpAssert &&
           walk.nodes[0].a == RegExpAssertLineStart && Use(SearchPlan::kLineStart, kSlackLevels);
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

  // "(?<=x)" with a literal of as many bytes as characters. Its quantifier would leave no record.
  bool UseLiteralBefore() {
    if (walk.count < 3 || walk.nodes[0].op != OpLookbehind || walk.nodes[0].b != 1 ||
        !IsExactLiteral(1)) {
      return false;
    }
    const ProgramNode& literal = walk.nodes[1];
    const int32_t length = literal.op == OpString ? literal.b : 1;
    return IsAscii(literal) && UseLiteral(1, -length, 2);
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

  // Sets and literals one after the other, at least one of them repeated without end or of much
  // varying length: the rarest literal after it ends a run of the bytes that may be before it.
  bool UseRun() {
    constexpr int32_t kMuch = 4;
    int32_t passes = 0;
    int32_t least = 0;
    int32_t most = 0;
    int32_t sets = 0;
    const auto isSimple = [&] {
      return isExact && sets == 1 && least <= 1 && most == INT32_MAX && passes == 2;
    };
    int32_t i = walk.SkipPassed(0, &passes);
    for (; i < walk.count; i = walk.SkipPassed(i, &passes)) {
      if (most - least >= kMuch && IsExactLiteral(i)) {
        ConsiderLiteral(i, {least, most, passes}, isSimple());
      }
      const int32_t width = AddToRun(walk.nodes[i]);
      if (width == 0) {
        break;
      }
      const int32_t after = walk.AfterAtom(i);
      const ProgramNode* const quantifier = walk.QuantifierAt(after);
      least =
          quantifier == nullptr ? Plus(least, width) : Plus(least, int64_t{quantifier->a} * width);
      most = Plus(most, quantifier == nullptr ? MostWidth(walk.nodes[i], width)
                        : quantifier->b == RegExpUnbounded
                            ? INT32_MAX
                            : int64_t{quantifier->b} * MostWidth(walk.nodes[i], width));
      ++sets;
      passes += 2;
      i = quantifier == nullptr ? after : after + 1;
    }
    if (most == INT32_MAX && i < walk.count && walk.nodes[i].op == OpLookahead &&
        !walk.HasAlternatives(i) && IsExactLiteral(i + 1)) {
      const bool simple = isSimple();
      ConsiderLiteral(i + 1, {least, most, passes + 2}, simple);
    }
    return plan->strategy == SearchPlan::kInnerLiteral;
  }

  // Bytes that the atom of a run takes at most.
  int32_t MostWidth(const ProgramNode& atom, int32_t least) const {
    const bool isWide = HasSet(atom) && SetOf(atom)->wide != Wide::kOutside;
    return isWide ? WideBytes::kLongest : least;
  }

  // How far a literal is from where a match begins.
  struct RunDistance {
    int32_t least;
    int32_t most;
    int32_t passes;
  };

  // Takes the literal if it is the first one, or rarer by far, in a run that ends with the line.
  void ConsiderLiteral(int32_t index, const RunDistance& distance, bool isSimple) {
    const int32_t weight = RarestOf(walk.nodes[index]);
    const bool isFirst = plan->strategy != SearchPlan::kInnerLiteral;
    if (!isFirst && (weight * 2 >= literalWeight || work[kNewline] != 0)) {
      return;
    }
    literalWeight = weight;
    plan->literal = index;
    plan->distance = distance.least;
    plan->reach = distance.most;
    for (int32_t value = 0; value < 256; ++value) {
      plan->bytes[value] = work[value];
    }
    const uint8_t first = Literal(walk.nodes[index]).bytes[0];
    plan->runDecides = isSimple && work[first] == 0 && !LooksBack(index);
    Use(SearchPlan::kInnerLiteral, distance.passes + kSlackLevels);
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
    if (!HasSet(node)) {
      return 0;
    }
    const CharacterSet* const set = SetOf(node);  // a class without one has left no room for a plan
    isExact = isExact && set->wide == Wide::kOutside;
    for (int32_t value = 0; value < 256; ++value) {
      const bool isWide = value >= 0x80 && set->wide != Wide::kOutside;
      work[value] |= isWide ? 0xFF : set->member[value];
    }
    return 1;
  }

  // Whether what is from a record on may depend on where the match began.
  bool LooksBack(int32_t index) const {
    for (; index < walk.count; ++index) {
      const uint32_t op = walk.nodes[index].op;
      if (op == OpBackref || op == OpLookbehind || op == OpNegLookbehind || op == OpConditional) {
        return true;
      }
    }
    return false;
  }

  // Alternatives begin with literals of three bytes or more.
  bool UseWords() {
    int32_t passes = 0;
    const int32_t shortest = ShortestWord(&passes);
    if (shortest < kLeastWord) {
      return false;
    }
    auto* const table = reinterpret_cast<uint8_t*>(plan + 1);
    kernels::ClearWords(table, kPairHashes / 8);
    ForEachWord([&](int32_t i) {
      const ProgramNode& node = walk.nodes[i];
      const uint8_t* const bytes = Literal(node).bytes;
      for (int32_t k = 0; k + 1 < shortest; ++k) {
        AddPair(bytes[k], bytes[k + 1], IsCaseless(node.c), static_cast<uint8_t>(1U << k), table);
      }
    });
    plan->window = static_cast<uint8_t>(shortest - 1);
    return Use(SearchPlan::kHashedPairs, 2 * passes + kSlackLevels);
  }

  static void AddPair(uint8_t first, uint8_t second, bool caseless, uint8_t mark, uint8_t* table) {
    const uint8_t firsts[2] = {first, OtherCase(first, caseless)};
    const uint8_t seconds[2] = {second, OtherCase(second, caseless)};
    for (const uint8_t a : firsts) {
      for (const uint8_t b : seconds) {
        table[PairHash(a, b)] |= mark;
      }
    }
  }

  // Calls `use` with the records that alternatives begin with: of the whole pattern where it is
  // nothing else, or of a group that every match begins with.
  template <class Use>
  void ForEachWord(Use use) const {
    int32_t passes = 0;
    const int32_t group = walk.SkipPassed(0, &passes);
    int32_t next = FactsOf(state)->firstAlternative;
    if (next == 0) {
      next = FirstAlternativeOf(walk.nodes[group]);
      use(group + 1);
    } else {
      use(0);
    }
    for (; next != 0; next = AlternativeNoteOf(walk.nodes[next]).next) {
      use(next + 1);
    }
  }

  // The least length of these literals, or how many bytes of each are looked at; 0 where they are
  // no literals, or no alternatives.
  int32_t ShortestWord(int32_t* passes) const {
    const int32_t group = walk.SkipPassed(0, passes);
    *passes += 2;
    const bool isGroup = FactsOf(state)->firstAlternative == 0 && group < walk.count &&
                         IsPlainGroup(walk.nodes[group]) && walk.HasAlternatives(group) &&
                         walk.QuantifierAt(walk.GroupEnd(group) + 1) == nullptr;
    if (!isGroup && FactsOf(state)->firstAlternative == 0) {
      return 0;
    }
    int32_t shortest = kMostWindow + 1;
    ForEachWord([&](int32_t i) {
      const int32_t length =
          i < walk.count && walk.IsCertainLiteral(i) && walk.QuantifierAt(i + 1) == nullptr
              ? Literal(walk.nodes[i]).length
              : 0;
      shortest = length < shortest ? length : shortest;
    });
    return shortest;
  }

  static bool IsPlainGroup(const ProgramNode& node) {
    return node.op == OpCapture || node.op == OpGroup || node.op == OpOptionGroup;
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
    for (int32_t position = 0; position < plan->window; ++position) {
      kernels::Ranges ranges;
      const int32_t count = RangesOf(plan->bytes, static_cast<uint8_t>(1U << position), &ranges);
      const int32_t weight = count == 0 ? kEverySecond : WeightOf(ranges, count);
      const int32_t worse = best[0] > best[1] ? 0 : 1;
      if (weight < best[worse]) {
        best[worse] = weight;
        pair.offsets[worse] = position;
        pair.sets[worse] = ranges;
        pair.rangeCount = count > pair.rangeCount ? count : pair.rangeCount;
      }
    }
    for (int32_t side = 0; side < 2; ++side) {
      if (best[side] == kEverySecond) {  // only one position has a set that serves
        pair.offsets[side] = pair.offsets[1 - side];
        pair.sets[side] = pair.sets[1 - side];
      }
    }
    const bool isKnown = best[0] < kEverySecond || best[1] < kEverySecond;
    isRarePair = isKnown && best[0] * best[1] < kRarePair * kEverySecond;
    if (isRarePair || (isKnown && pair.rangeCount <= kFewRanges)) {
      plan->strategy = SearchPlan::kPackedPair;
    }
  }

  static int32_t WeightOf(const kernels::Ranges& ranges, int32_t count) {
    int32_t weight = 0;
    for (int32_t i = 0; i < count; ++i) {
      const bool isRepeated = i > 0 && ranges.lowest[i] == ranges.lowest[i - 1];
      weight += isRepeated ? 0 : kWeights.Of(ranges.lowest[i], ranges.highest[i]);
    }
    return weight < kEverySecond ? weight : kEverySecond;
  }

  // An endless run of bytes first, which has the fewer ends the later it begins: where
  // none of them leads on, none does for a start further along the run. A program that has a window
  // takes a byte, and no opening is the last record.
  bool BeginsWithRun() const {
    int32_t i = 0;
    while (IsPlainGroup(walk.nodes[i]) && walk.IsPassed(i)) {
      ++i;
    }
    const CharacterSet* const set = walk.SetAt(i);
    const ProgramNode* const quantifier =
        set == nullptr ? nullptr : walk.QuantifierAt(walk.AfterAtom(i));
    return quantifier != nullptr && quantifier->a == 1 && quantifier->b == RegExpUnbounded &&
           set->wide != Wide::kMixed && !LooksBack(i);
  }

  // "\b" before a word byte.
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
  bool isRarePair = false;
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
  static_assert(sizeof(SearchPlan) + kScratch >= sizeof(CharacterSet),
                "where there is room for a plan, every class has got its set");
  FreeRoom room(state);
  if (state->nodeCount > kMostRecords ||
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
