// SPDX-License-Identifier: MIT
#include "regexp/analyse/first_bytes.h"

#include "regexp/analyse/levels.h"
#include "regexp/characters/bytes.h"
#include "regexp/characters/character_set.h"
#include "regexp/characters/properties.h"
#include "regexp/characters/wide_bytes.h"

namespace vekch::regexp {
namespace {

// Follows every way through the program at once, a byte at a time. For each record there is a set
// of bits that says how it can have been reached: bit n where n bytes of a string, or n
// repetitions, have been consumed by it already; bit 0 else.
class PrefilterMaker {
 public:
  PrefilterMaker(const ProgramWalk& programWalk, int32_t firstAlternative, uint8_t* marks,
                 uint8_t* bytes)
      : walk(programWalk),
        topLevel(firstAlternative),
        now(marks),
        next(marks + programWalk.count + 1),
        prefilter(bytes) {}

  // Returns the number of bytes that are known.
  int32_t Run() {
    Clear(now);
    now[0] = 1;
    MarkAlternatives(topLevel);
    int32_t window = 0;
    for (;;) {
      Clear(next);
      ends = false;
      isUnknown = false;
      bit = static_cast<uint8_t>(1U << window);
      isLast = window == kMostWindow - 1 || mayBeWithin;
      if (mayBeWithin) {
        AddWithin();
      }
      Close();
      if (ends || isUnknown) {
        break;
      }
      CountLevels();
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
      prefilter[i] &= static_cast<uint8_t>((1U << window) - 1);
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

  // The epsilon closure: marks what is reached without a byte until nothing changes. Only repeated
  // groups lead back, to where each is entered: a second round adds no more than a first one.
  void Close() {
    do {
      changed = false;
      for (int32_t i = 0; i < walk.count && !ends && !isUnknown; ++i) {
        if (now[i] != 0) {
          Step(i);
        }
        i += walk.nodes[i].op == OpClass ? walk.nodes[i].b : 0;
      }
      ends = ends || now[walk.count] != 0;
    } while (changed);
  }

  // A record takes a level, and its repetition one more. Without a byte, the records of a repeated
  // group can be passed to its end, and once again by a further repetition.
  void CountLevels() {
    int32_t passes = 1;
    for (int32_t i = 0; i < walk.count; i = walk.AfterAtom(i)) {
      passes += IsOpening(walk.nodes[i]) && IsRepeated(walk.GroupEnd(i)) ? 1 : 0;
      levels += now[i] != 0 ? 2 * passes : 0;
      passes -= walk.nodes[i].op == OpGroupEnd && IsRepeated(i) ? 1 : 0;
    }
  }

  bool IsRepeated(int32_t groupEnd) const {
    const ProgramNode* const quantifier = walk.QuantifierAt(groupEnd + 1);
    return quantifier != nullptr && quantifier->b > 1;
  }

  void Mark(int32_t index, uint8_t bits = 1) {
    changed = changed || (index <= current && (now[index] | bits) != now[index]);
    now[index] |= bits;
  }

  void MarkAlternatives(int32_t alternative) {
    for (; alternative != 0; alternative = AlternativeNoteOf(walk.nodes[alternative]).next) {
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
        const int32_t groupEnd = AlternativeNoteOf(node).groupEnd;
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
    MarkAlternatives(FirstAlternativeOf(walk.nodes[index]));
  }

  void EndGroup(int32_t index) {
    // The match goes on after an atomic group by what slot 0 counts, not by where its bytes end.
    if (walk.nodes[index].a < 0 && CountsOtherwise()) {
      isUnknown = true;
      return;
    }
    const ProgramNode* const quantifier = walk.QuantifierAt(index + 1);
    Mark(quantifier == nullptr ? index + 1 : index + 2);
    if (IsRepeated(index)) {
      EnterBody(OpeningOf(walk.nodes[index]));
    }
  }

  // Whether slot 0 may count other bytes than those taken: for a byte that is its own code point,
  // and for a letter that folds to one of another length.
  bool CountsOtherwise() const {
    for (int32_t i = 0; i < walk.count; i = walk.AfterAtom(i)) {
      const ProgramNode& node = walk.nodes[i];
      if (node.op == OpCodePoint &&
          ((node.a >= 0x80 && node.a < 0x100) || IsCaseless(OptionsOf(node)))) {
        return true;
      }
    }
    return false;
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
    const int32_t following = walk.AfterAtom(index);
    const ProgramNode* const quantifier = walk.QuantifierAt(following);
    const int32_t minimum = quantifier == nullptr ? 1 : quantifier->a;
    const int32_t maximum = quantifier == nullptr ? 1 : quantifier->b;
    const int32_t after = quantifier == nullptr ? following : following + 1;
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
    prefilter[byte] |= bit;
    prefilter[OtherCase(byte, caseless)] |= bit;
  }

  // A character of several bytes leaves it open what is two bytes further: the window ends
  // with the byte after its first.
  void AddAtom(const ProgramNode& node) {
    switch (node.op) {
      case OpChar:
        AddByte(static_cast<uint8_t>(node.a), IsCaseless(node.c));
        return;
      case OpAnyByte:
        AddAll(0, 256);
        return;
      case OpCharType:
      case OpClass:  // one without a set has left no room for a plan
        AddSet(node, *SetOf(node));
        return;
      case OpGrapheme:  // what belongs to one may begin with any byte that no character is
        AddAll(0, 256);
        within = WideBytes::All();
        isGrapheme = mayBeWithin = true;
        return;
      default:
        for (int32_t value = 0; value < 256; ++value) {
          if (Accepts(value, node)) {
            prefilter[value] |= bit;
          }
        }
        AddWide(WideBytesOf(node));
        return;
    }
  }

  void AddSet(const ProgramNode& node, const CharacterSet& set) {
    for (int32_t value = 0; value < 256; ++value) {
      prefilter[value] |= static_cast<uint8_t>(set.member[value] & bit);
    }
    if (set.wide != Wide::kOutside) {
      AddWide(set.wide == Wide::kMixed ? WideBytesOf(node) : WideBytes::All());
    }
  }

  void AddWide(const WideBytes& bytes) {
    for (int32_t value = WideBytes::kLowestLead; value < 256; ++value) {
      prefilter[value] |= bytes.HasLead(value) ? bit : uint8_t{0};
    }
    within.seconds |= bytes.seconds;
    mayBeWithin = true;
  }

  // The bytes after the first of the characters that may have begun there.
  void AddWithin() {
    for (int32_t value = 0x80; value < 256; ++value) {
      prefilter[value] |= isGrapheme || within.HasSecond(value) ? bit : uint8_t{0};
    }
  }

  void AddAll(int32_t first, int32_t end) {
    for (int32_t value = first; value < end; ++value) {
      prefilter[value] |= bit;
    }
  }

  static bool Accepts(int32_t value, const ProgramNode& node) {
    if (node.op == OpCategory) {
      return InCategorySet(value, CategoriesOf(node));
    }
    const bool caseless = node.op == OpCodePoint && IsCaseless(OptionsOf(node));
    return MatchPropertyItem(value, &node, caseless ? 1 : 0) >= 0;
  }

  const ProgramWalk& walk;
  const int32_t topLevel;
  uint8_t* now;
  uint8_t* next;
  uint8_t* prefilter;
  uint8_t bit = 1;
  int32_t current = -1;
  int32_t levels = kSlackLevels;
  bool changed = false;
  bool ends = false;         // a match can be over here
  bool isUnknown = false;    // anything can follow here
  bool isLast = false;       // no further byte is asked for
  bool mayBeWithin = false;  // the byte may be within a character
  bool isGrapheme = false;   // or of a further character that belongs to it
  bool passesLookaround = false;
  WideBytes within = {0, 0};  // of characters that may have begun at the position before
};

}  // namespace

FirstBytes FindFirstBytes(const ProgramWalk& walk, int32_t firstAlternative, uint8_t* marks,
                          uint8_t* prefilter) {
  PrefilterMaker maker(walk, firstAlternative, marks, prefilter);
  const int32_t window = maker.Run();
  return {window, maker.Levels()};
}

}  // namespace vekch::regexp
