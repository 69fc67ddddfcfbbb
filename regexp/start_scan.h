// Finds the places where a match may begin, by a pattern's plan.

#ifndef VEKCH_REGEXP_START_SCAN_H
#define VEKCH_REGEXP_START_SCAN_H

#include <stdint.h>

#include "regexp/search_plan.h"

namespace vekch::regexp {

class StartScan {
 public:
  // The text from `from` to `end`, of a subject that begins at `subject`. Places are those that a
  // walk from `from` on meets, by characters or by bytes; behind `from` itself those where a line
  // begins, if so asked.
  StartScan(const RegExpState* state, const SearchPlan* plan, const uint8_t* subject,
            const uint8_t* from, const uint8_t* end, bool isUtf8, bool atLineStarts);

  // The first place from `at` on where a match may begin, or null. `at` is a place, or lies one
  // behind the end.
  const uint8_t* Next(const uint8_t* at);

  // The place behind `at`, where there was no match, that is to be asked for next.
  const uint8_t* Behind(const uint8_t* at) const;

 private:
  const uint8_t* Candidate(const uint8_t* at);
  bool IsLineStart(const uint8_t* at) const { return at == subject_ || at[-1] == '\n'; }
  const uint8_t* NextLineStart(const uint8_t* at) const;
  const uint8_t* NextLiteral(const uint8_t* at) const;
  const uint8_t* NextInRun(const uint8_t* at);
  const uint8_t* NextByFilter(const uint8_t* at);
  const uint8_t* NextWindow(const uint8_t* at);
  const uint8_t* NextPair(const uint8_t* at);
  const uint8_t* NextWord(const uint8_t* at) const;
  bool IsPlace(const uint8_t* at) const;

  const ProgramNode* program_;
  const SearchPlan* plan_;
  const uint8_t* subject_;
  const uint8_t* from_;
  const uint8_t* end_;
  const bool isUtf8_;
  const bool atLineStarts_;
  const uint8_t* runStart_ = nullptr;    // where the run may begin that the literal ends
  const uint8_t* runLiteral_ = nullptr;  // the literal
  const uint8_t* pairsFrom_ = nullptr;   // 64 places that have been looked at
  uint64_t pairs_ = 0;                   // those of them that have the two bytes
};

}  // namespace vekch::regexp

#endif
