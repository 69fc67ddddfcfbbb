// SPDX-License-Identifier: MIT
#include "regexp/search/literals.h"

#include "regexp/search/start_positions.h"

namespace vekch::regexp {
namespace {

// Looks for all alternatives at once, by the plan's prefilter.
bool FindAnyByPlan(const Stretch& text, const RegExpState& state, const SearchPlan& plan,
                   RegExpFindResult* match) {
  const ProgramNode* const program = ProgramOf(&state);
  const uint8_t* const end = text.begin + text.length;
  StartPositions starts(&state, {StartRule::kEveryCharacter, &plan},
                        {text.begin, text.begin, end, false});
  for (const uint8_t* at = starts.First(); at != nullptr; at = starts.After(at, true)) {
    for (int32_t i = 0; i < state.nodeCount; i += 2) {
      if (StandsAt(program[i], at, end)) {
        *match = {at, Literal(program[i]).length};
        return true;
      }
    }
  }
  return false;
}

bool FindEach(const Stretch& text, const RegExpState& state, RegExpFindResult* match) {
  const ProgramNode* const program = ProgramOf(&state);
  const bool caseless = IsCaseless(static_cast<int32_t>(state.compileFlags));
  int32_t best = kNotFound;
  for (int32_t i = 0; i < state.nodeCount; i += 2) {
    const Literal literal(program[i]);
    // A later one counts only if it begins before the best.
    const int64_t end = best == kNotFound ? text.length : int64_t{best} + literal.length - 1;
    const auto within = static_cast<int32_t>(end < text.length ? end : text.length);
    const int32_t at = FindFirst(text.begin, within, literal, caseless);
    if (at != kNotFound) {
      best = at;
      *match = {text.begin + best, literal.length};
    }
  }
  return best != kNotFound;
}

}  // namespace

bool FindAlternatives(const Stretch& text, RegExpState* state, RegExpFindResult* match) {
  const SearchPlan* const plan = PlanFor(state, text.length);
  return plan != nullptr && plan->strategy == SearchPlan::kHashedPairs
             ? FindAnyByPlan(text, *state, *plan, match)
             : FindEach(text, *state, match);
}

}  // namespace vekch::regexp
