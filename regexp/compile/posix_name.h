// SPDX-License-Identifier: MIT

// The names of sets that a bracket class may hold: "[:alpha:]", "[:^digit:]" and the like.

#ifndef VEKCH_REGEXP_COMPILE_POSIX_NAME_H
#define VEKCH_REGEXP_COMPILE_POSIX_NAME_H

#include <stdint.h>

#include "vekch/regexp_program.h"

namespace vekch::regexp {

// One item record: a range a to b, a byte a, or a shorthand a.
struct PosixItem {
  uint32_t op;
  int32_t a;
  int32_t b;
};

struct PosixSet {
  const char* name;
  int32_t count;
  PosixItem items[4];
};

struct PosixBracket {
  enum Kind {
    kName,       // a name of the table
    kMalformed,  // closed like a name, but none
    kLiteral     // no name at all: "[" and what follows it are two members
  };
  Kind kind;
  const uint8_t* next;  // after the bracket, or after the two members
  bool negated;
  const PosixSet* set;
};

// Reads what follows "[" and `opener`, one of ":", "." and "=".
PosixBracket ReadPosixBracket(const uint8_t* text, uint8_t opener);

}  // namespace vekch::regexp

#endif
