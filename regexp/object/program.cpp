#include "regexp/object/program.h"

#include <stddef.h>

#include "regexp/object/object.h"

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

int32_t FixedBodyLength(const ProgramNode& opening, int32_t count) {
  const ProgramNode* body = &opening + 1;
  int64_t length = 0;
  int64_t lastWidth = 0;  // of what a quantifier would repeat
  int64_t ofFirstAlternative = -1;
  for (int32_t i = 0; i < count; ++i) {
    const ProgramNode& node = body[i];
    switch (WidthRule(node)) {
      case RegExpWidthOne:
        lastWidth = 1;
        length += 1;
        break;
      case RegExpWidthRun:
        length += node.b;
        break;
      case RegExpWidthClass:
        lastWidth = 1;
        length += 1;
        i += node.b;
        break;
      case RegExpWidthRepeat:
        // "a{0}" still counts as one "a".
        length += node.a > 1 ? (int64_t{node.a} - 1) * lastWidth : 0;
        break;
      case RegExpWidthLookaround:
        i += node.b;
        break;
      case RegExpWidthGroup:
        if (NotedFixedLength(node) < 0) {
          return -1;
        }
        lastWidth = NotedFixedLength(node);
        length += lastWidth;
        i += node.b;
        break;
      case RegExpWidthAlternative:
        if (ofFirstAlternative >= 0 && length != ofFirstAlternative) {
          return -1;
        }
        ofFirstAlternative = length;
        length = 0;
        break;
      default:
        break;
    }
    length = length < INT32_MAX ? length : INT32_MAX;
  }
  const bool isFixed = ofFirstAlternative < 0 || length == ofFirstAlternative;
  return isFixed ? static_cast<int32_t>(length) : -1;
}

}  // namespace vekch::regexp
