// SPDX-License-Identifier: MIT

// The search driver: a subject and a compiled pattern in, matches out.

#ifndef VEKCH_REGEXP_SEARCH_SEARCH_H
#define VEKCH_REGEXP_SEARCH_SEARCH_H

#include <stdint.h>

#include "vekch/regexp.h"
#include "vekch/regexp_program.h"

namespace vekch::regexp {

// Which of a match's slots a search of all matches reports: only a search for one match reports
// them alike for both.
enum class Report {
  kFind,     // those of the groups, or the whole match where there are none
  kReplace,  // the whole match, then each group
};

// Searches as veksRegExpFind_8u does once its pointers and sizes are checked; the object's tag is
// checked here. `*count` is the room in `results` on entry, and what was written on return.
vekStatus Search(const uint8_t* subject, int32_t length, RegExpState* state, Report report,
                 RegExpFindResult* results, int32_t* count);

}  // namespace vekch::regexp

#endif
