// SPDX-License-Identifier: MIT

// Translates a compiled program for the fast matcher.

#ifndef VEKCH_REGEXP_FAST_TRANSLATOR_H
#define VEKCH_REGEXP_FAST_TRANSLATOR_H

#include <stdint.h>

#include "regexp/fast/fast_program.h"

namespace vekch::regexp {

// The fast program of a compiled pattern in the format that is set: made at the first call, and
// anew where the format has changed. Null where the pattern holds what the fast matcher does not
// know, or the object has no room for it.
const FastProgram* FastProgramFor(RegExpState* state);

}  // namespace vekch::regexp

#endif
