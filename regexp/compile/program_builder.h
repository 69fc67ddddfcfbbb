// SPDX-License-Identifier: MIT

// The state of the pass that builds the program, and its constructs. The pass reads the pattern
// once from left to right, without recursion and without memory of its own: it appends records,
// and goes back to change them where a group closes or a quantifier arrives.
//
//   compiler.cpp    the stages, and the dispatch over the constructs
//   literal.cpp     literal runs, and the suffix literal
//   escape.cpp      escapes, "." and the shorthands
//   class.cpp       bracket classes
//   group.cpp       groups: opening
//   group_end.cpp   groups: closing
//   quantifier.cpp  quantifiers
//
// What it has to know of groups lies in their entries of the object's room; the records hold
// nothing but the program.
//
// The program never outgrows the object. Every construct appends at most one record for each byte
// that it has read, and reads before it appends:
//
//   one byte, one record         a literal, an assertion, ".", "|", "(" of a capture, ")", "*",
//                                "[" and each single byte of a class
//   two bytes, at most two       "x-" before a POSIX name, "[:" that starts none
//   "(?(1)" and longer           two, for five bytes
//   "[:punct:]"                  four, the most of all names, for nine bytes
//   a run that is split          two for two bytes or more
//
// and the anchor before a leading ".*" is the one record for which the object has room beyond
// the pattern's bytes. The copies of literals fit as well: a run of n bytes, 2 or more, is one
// record, so that n - 1 records of 24 bytes stay free for its n bytes.

#ifndef VEKCH_REGEXP_COMPILE_PROGRAM_BUILDER_H
#define VEKCH_REGEXP_COMPILE_PROGRAM_BUILDER_H

#include <stdint.h>

#include "regexp/compile/escape_kind.h"
#include "regexp/compile/fault.h"
#include "regexp/object/object_layout.h"
#include "regexp/object/record.h"

namespace vekch::regexp {

constexpr int32_t kNoLiteral = -1;
constexpr int32_t kAlternatives = -2;

class ProgramBuilder {
 public:
  // The object's flags and number of captures are set; `recordsThere` records are already in its
  // program.
  ProgramBuilder(const uint8_t* pattern, const uint8_t* textEnd, RegExpState* state,
                 int32_t recordsThere)
      : at(pattern),
        patternEnd(textEnd),
        nodes(ProgramOf(state)),
        groups(GroupsOf(state)),
        nodeCount(recordsThere),
        options(static_cast<int32_t>(state->compileFlags)),
        captureCount(state->captureCount) {}

  Fault Run();

  // Copies the literals after the program.
  void Finish();

  int32_t NodeCount() const { return nodeCount; }
  int32_t SuffixLiteral() const { return suffixLiteral; }

 private:
  friend class ClassBuilder;

  // Each of these starts at its construct and ends after it; a fault names its position.
  Fault Construct();
  Fault Fail(vekStatus status, const uint8_t* position) const { return {status, position}; }

  // literal.cpp
  Fault LiteralByte();
  void FlushRun();
  void SplitRun();
  void AppendByte(uint8_t byte);
  void NoteLiteral();
  void SettleSuffixLiteral();

  // escape.cpp
  Fault Escape();
  Fault ByteEscape(const uint8_t* text, EscapeKind kind);
  Fault NumberEscape(const uint8_t* digits);
  Fault PropertyEscape(int32_t negated);
  Fault CharType(uint8_t letter, const uint8_t* next);
  void Quote(const uint8_t* text);

  // class.cpp
  Fault BracketClass();

  // group.cpp
  Fault OpenBracket();
  Fault OpenGroup(uint32_t op, int32_t length, int32_t c = 0);
  Fault Comment();
  Fault InlineOptions();
  Fault Conditional();
  Fault Alternative();

  // group_end.cpp
  Fault CloseGroup();
  void DissolveGroup(int32_t opening);
  void AppendGroupEnd(GroupEntry* group, bool isOneWide);
  bool IsConditional(const GroupEntry& group) const;
  bool SettleLookbehind(const GroupEntry& group);
  int32_t FixedBodyLength(int32_t opening) const;

  // quantifier.cpp
  Fault Quantifier();
  void QuantifyLiteral(int32_t minimum);

  void Append(uint32_t op, int32_t a = 0, int32_t b = 0, int32_t c = 0, uint64_t ptr = 0) {
    nodes[nodeCount++] = {op, a, b, c, ptr};
  }
  ProgramNode& Last() { return nodes[nodeCount - 1]; }

  // Whether a record is an item of the class that was built last, and not one of its own. Before
  // the last record or after it no other class can end.
  bool IsItem(int32_t index) const { return index + 1 == classEnd; }

  bool AtTopLevel() const { return innermost == 0; }

  const uint8_t* at;
  const uint8_t* patternEnd;
  ProgramNode* nodes;
  GroupEntry* groups;
  int32_t nodeCount;
  int32_t options;
  int32_t captureCount;

  const uint8_t* run = nullptr;  // literal bytes that have no record yet
  int32_t runLength = 0;
  int32_t lastOfRun = -1;  // the last record made of a run
  int32_t classEnd = -1;   // index after the items of the last class

  int32_t innermost = 0;  // serial of the innermost open group
  int32_t serial = 1;
  int32_t captureNumber = 1;

  const uint8_t* quantifierEnd = nullptr;  // after the last quantifier's text
  int32_t suffixLiteral = kNoLiteral;
};

}  // namespace vekch::regexp

#endif
