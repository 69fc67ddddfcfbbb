// SPDX-License-Identifier: MIT

// Where a match may begin: one iterator, whatever it goes by.

#ifndef VEKCH_REGEXP_SEARCH_START_POSITIONS_H
#define VEKCH_REGEXP_SEARCH_START_POSITIONS_H

#include <stdint.h>

#include "regexp/analyse/search_plan.h"
#include "unicode/utf8.h"

namespace vekch::regexp {

// How the start positions of a pattern are chosen.
struct StartRule {
  enum Way : uint8_t {
    kFirst,           // where the search begins, alone. "^abc", not "^*abc"
    kLineStarts,      // there, and where a line begins. "^abc" with option m, not without
    kEveryCharacter,  // at every character, in the byte format at every byte. "abc"
  };
  Way way;
  // Of these positions only those that a plan doesn't pass over; null for all of them.
  const SearchPlan* plan;
};

// As the pattern's first record says.
StartRule::Way WayOf(const RegExpState& state);

// The rule for searches in a subject of so many bytes.
StartRule StartRuleFor(RegExpState* state, int32_t length);

class StartPositions {
 public:
  // What is searched. The first position is `first`; all others are met on a walk from there on by
  // characters or by bytes, the end included.
  struct Text {
    const uint8_t* subject;
    const uint8_t* first;
    const uint8_t* end;
    bool isUtf8;
  };

  StartPositions(const RegExpState* state, const StartRule& startRule, const Text& searched)
      : program(ProgramOf(state)), rule(startRule), plan(startRule.plan), text(searched) {}

  // Begins anew at a later position, with what has been found out of the text.
  void GoOnFrom(const uint8_t* first) { text.first = first; }

  // The first position, or null.
  const uint8_t* First() { return plan != nullptr ? NextByPlan(text.first) : text.first; }

  // The next position after one where there was no match, or null. `wasFree` says that the try has
  // cost no step: one that did would cost some again, or fail otherwise with those that are left.
  const uint8_t* After(const uint8_t* at, bool wasFree) {
    if (plan != nullptr) {
      return NextByPlan(wasFree && plan->runDecides != 0 ? AfterRun(at) : at + 1);
    }
    if (at >= text.end || rule.way == StartRule::kFirst) {
      return nullptr;
    }
    if (rule.way == StartRule::kLineStarts) {
      return NextLineStart(at + 1);
    }
    return at + (text.isUtf8 ? ReadUtf8(at, text.end).length : 1);
  }

 private:
  bool IsLineStart(const uint8_t* at) const { return at == text.subject || at[-1] == '\n'; }
  const uint8_t* NextLineStart(const uint8_t* at) const;

  // By the plan: the first position from `at` on, which is one or lies one after the end.
  const uint8_t* NextByPlan(const uint8_t* at);
  const uint8_t* Candidate(const uint8_t* at);
  const uint8_t* NextLiteral(const uint8_t* at) const;
  const uint8_t* NextInRun(const uint8_t* at);
  const uint8_t* AfterRun(const uint8_t* at) const;
  const uint8_t* NextByClasses(const uint8_t* at);
  const uint8_t* NextWindow(const uint8_t* at);
  template <class FindGroup, class FindLast>
  const uint8_t* NextOfGroups(const uint8_t* at, FindGroup findGroup, FindLast findLast);
  const uint8_t* NextPair(const uint8_t* at);
  const uint8_t* NextWordStart(const uint8_t* at);
  const uint8_t* FindWordStarts(const uint8_t* at, const uint8_t* end);
  const uint8_t* NextWord(const uint8_t* at) const;
  bool IsPosition(const uint8_t* at) const;

  const ProgramNode* program;
  const StartRule rule;
  const SearchPlan* const plan;
  Text text;
  const uint8_t* runStart = nullptr;    // where the run may begin that the literal ends
  const uint8_t* runLiteral = nullptr;  // the literal
  const uint8_t* groupFrom = nullptr;   // 64 positions that have been looked at
  uint64_t group = 0;                   // those of them that are worth a closer look
};

}  // namespace vekch::regexp

#endif
