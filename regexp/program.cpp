#include "regexp/program.h"

#include <stddef.h>

#include "regexp/object.h"

namespace vekch::regexp {

// The block's layout is part of the library's binary interface.
static_assert(sizeof(ProgramNode) == 24);
static_assert(offsetof(ProgramNode, op) == 0);
static_assert(offsetof(ProgramNode, a) == 4);
static_assert(offsetof(ProgramNode, b) == 8);
static_assert(offsetof(ProgramNode, c) == 12);
static_assert(offsetof(ProgramNode, ptr) == 16);

static_assert(offsetof(RegExpState, regExpTag) == 0);
static_assert(offsetof(RegExpState, compileFlags) == 4);
static_assert(offsetof(RegExpState, nodeCount) == 8);
static_assert(offsetof(RegExpState, captureCount) == 12);
static_assert(offsetof(RegExpState, requiredLiteralIndex) == 16);
static_assert(offsetof(RegExpState, matchLimit) == 20);
static_assert(offsetof(RegExpState, characterFormat) == 24);
static_assert(offsetof(RegExpState, searchMode) == 28);
static_assert(offsetof(RegExpState, workTableA) == 32);
static_assert(offsetof(RegExpState, workTableB) == 32 + 32000);
static_assert(sizeof(RegExpState::workTableA) == RegExpTableSize * 32);
static_assert(sizeof(RegExpState::workTableB) == RegExpTableSize * 16);
static_assert(sizeof(RegExpState) == 48032);
static_assert(alignof(RegExpState) == alignof(ProgramNode));

static_assert(ObjectSize(0) == sizeof(RegExpState) + sizeof(ProgramNode));
static_assert(ObjectSize(1) - ObjectSize(0) == sizeof(ProgramNode));

static_assert(OpChar == 0x10000000 && OpGrapheme == 0x1000001A);
static_assert(RegExpOperationEnd == OpGrapheme + 1);

}  // namespace vekch::regexp
