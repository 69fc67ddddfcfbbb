// SPDX-License-Identifier: MIT

// The compiler: a pattern's text in, records in the pattern object out.

#ifndef VEKCH_REGEXP_COMPILE_COMPILER_H
#define VEKCH_REGEXP_COMPILE_COMPILER_H

#include <stdint.h>

#include "regexp/compile/fault.h"
#include "vekch/regexp_program.h"

namespace vekch::regexp {

// Compiles a zero-terminated pattern of `length` bytes into a block of ObjectSize(length) zero
// bytes. `options` is a zero-terminated string of letters, or null. A failed compilation leaves
// what it has written: the header says so only if it failed before the program was begun.
Fault Compile(const uint8_t* pattern, uint32_t length, const uint8_t* options, RegExpState* state);

}  // namespace vekch::regexp

#endif
