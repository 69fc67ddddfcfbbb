// SPDX-License-Identifier: MIT

// What is found out about a program right after its compilation.

#ifndef VEKCH_REGEXP_ANALYSE_ANALYSE_H
#define VEKCH_REGEXP_ANALYSE_ANALYSE_H

#include "regexp/object/object_layout.h"

namespace vekch::regexp {

// Notes in the records of a compiled program what is noted there, keeps what is known of the
// pattern as a whole, and lays out the object's room: after the entries of the groups come the
// sets of the classes, then what is free.
void Analyse(RegExpState* state);

}  // namespace vekch::regexp

#endif
