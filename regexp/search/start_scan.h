// Finds the places where a match may begin, by a pattern's plan.

#ifndef VEKCH_REGEXP_SEARCH_START_SCAN_H
#define VEKCH_REGEXP_SEARCH_START_SCAN_H

#include <stdint.h>

#include "regexp/analyse/search_plan.h"

namespace vekch::regexp {

class StartScan {
 public:
  // What is searched. Places are those that a walk from `first` on meets, by characters or by
  // bytes; behind `first` itself only those where a line begins, if so asked.
  struct Text {
    const uint8_t* subject;
    const uint8_t* first;
    const uint8_t* end;
    bool isUtf8;
    bool atLineStarts;
  };

  StartScan(const RegExpState* state, const SearchPlan* searchPlan, const Text& text);

  // The first place from `at` on where a match may begin, or null. `at` is a place, or lies one
  // behind the end.
  const uint8_t* Next(const uint8_t* at);

  // The place behind `at`, where there was no match at no cost of steps, that is to be asked for
  // next.
  const uint8_t* Behind(const uint8_t* at) const;

 private:
  const uint8_t* Candidate(const uint8_t* at);
  bool IsLineStart(const uint8_t* at) const { return at == subject || at[-1] == '\n'; }
  const uint8_t* NextLineStart(const uint8_t* at) const;
  const uint8_t* NextLiteral(const uint8_t* at) const;
  const uint8_t* NextInRun(const uint8_t* at);
  const uint8_t* NextByFilter(const uint8_t* at);
  const uint8_t* NextWindow(const uint8_t* at);
  const uint8_t* NextPair(const uint8_t* at);
  const uint8_t* NextWord(const uint8_t* at) const;
  bool IsPlace(const uint8_t* at) const;

  const ProgramNode* program;
  const SearchPlan* plan;
  const uint8_t* subject;
  const uint8_t* first;
  const uint8_t* textEnd;
  const bool isUtf8;
  const bool atLineStarts;
  const uint8_t* runStart = nullptr;    // where the run may begin that the literal ends
  const uint8_t* runLiteral = nullptr;  // the literal
  const uint8_t* pairsFrom = nullptr;   // 64 places that have been looked at
  uint64_t pairs = 0;                   // those of them that have the two bytes
};

}  // namespace vekch::regexp

#endif
