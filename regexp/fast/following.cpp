// SPDX-License-Identifier: MIT
#include "regexp/fast/following.h"

#include "regexp/characters/bytes.h"
#include "regexp/characters/character_set.h"
#include "regexp/characters/properties.h"
#include "regexp/characters/wide_bytes.h"

namespace vekch::regexp {
namespace {

constexpr int32_t kMostRounds = 12;
constexpr uint8_t kNewline = '\n';

void AddCharacters(const ProgramNode& node, NextBytes* result) {
  const WideBytes wide = WideBytesOf(node);
  const CharacterSet* const set = HasSet(node) ? SetOf(node) : nullptr;
  for (int32_t value = 0; value < NextBytes::kTable; ++value) {
    const bool isMember = set != nullptr          ? set->member[value] != 0
                          : node.op == OpCategory ? InCategorySet(value, CategoriesOf(node))
                                                  : MatchPropertyItem(value, &node, 0) >= 0;
    if (isMember || wide.HasLead(value)) {
      result->AddByte(static_cast<uint8_t>(value));
    }
  }
}

}  // namespace

bool Following::Find(int32_t used) {
  for (int32_t i = 0; i < used; ++i) {
    next[i] = NextBytes::None();
  }
  for (int32_t round = 0; round < kMostRounds; ++round) {
    bool changed = false;
    for (int32_t i = used - 1; i >= 0; --i) {
      const NextBytes found = NextBytesOf(ops[i]);
      changed = changed || !(found == next[i]);
      next[i] = found;
    }
    // Only choices and loops, which lie after the records' operations, lead to ones before them.
    if (!changed || used == walk.count + 1) {
      return true;
    }
  }
  return false;
}

NextBytes Following::NextBytesOf(const FastOp& op) const {
  NextBytes result = NextBytes::None();
  switch (op.code) {
    case FastCode::kJump:
      return result;
    case FastCode::kAccept:
      return NextBytes::All(true);
    case FastCode::kChoice:
      for (int32_t k = 0; k < op.ways.count; ++k) {
        result.Add(next[op.targets[k]]);
      }
      return result;
    case FastCode::kLoop:
      result = next[op.loop.againOrExit];
      result.Add(next[op.loop.exit]);
      if (op.loop.again != 0) {
        result.Add(next[op.loop.again]);
      }
      return result;
    case FastCode::kAtomic:
      return Captures(op) ? NextBytes::All(true) : next[op.targets[0]];
    case FastCode::kSubEnd:
      return NextBytes::All(true);
    case FastCode::kAssert:
    case FastCode::kAtStart:
    case FastCode::kAtEnd:
      return AtAssertion(op);
    case FastCode::kOpen:
    case FastCode::kClose:
    case FastCode::kEnterLoop:
      return next[op.next];
    case FastCode::kLookaround:
      return Captures(op) ? NextBytes::All(true) : next[op.next];
    default:
      break;
  }
  result = BytesOf(op);
  if (op.code >= FastCode::kByteRun && op.run.minimum == 0) {
    result.Add(next[op.next]);
  }
  return result;
}

bool Following::Captures(const FastOp& opening) const {
  const auto first = static_cast<int32_t>(&opening - ops);
  for (int32_t i = first; i < walk.GroupEnd(first); ++i) {
    if (walk.nodes[i].op == OpCapture) {
      return true;
    }
  }
  return false;
}

NextBytes Following::AtAssertion(const FastOp& op) const {
  NextBytes result = next[op.next];
  if (op.letter == 'z' || op.letter == 'Z' || op.letter == '$') {
    NextBytes ends = NextBytes::None();
    ends.atEnd = true;
    if (op.letter != 'z') {
      ends.AddByte(kNewline);
    }
    result.Keep(ends);
  }
  return result;
}

NextBytes Following::BytesOf(const FastOp& op) const {
  NextBytes result = NextBytes::None();
  switch (op.code) {
    case FastCode::kByte:
    case FastCode::kByteRun:
      result.AddByte(op.pair[0]);
      result.AddByte(op.pair[1]);
      break;
    case FastCode::kBytes:
      result.AddByte(op.bytes[0]);
      break;
    case FastCode::kCaselessBytes:
      result.AddByte(op.bytes[0]);
      if (IsAsciiLetter(op.bytes[0])) {
        result.AddByte(static_cast<uint8_t>(op.bytes[0] ^ 0x20));
      }
      break;
    case FastCode::kSet:
    case FastCode::kSetRun:
    case FastCode::kSetSpan:
    case FastCode::kOptionalSet:
    case FastCode::kLazySet:
      result.AddMembers(op.bytes);
      break;
    case FastCode::kOpenSet:
    case FastCode::kOpenSetRun:
    case FastCode::kLazyOpenSet:
      result.AddMembers(op.bytes);
      result.AddHigh();
      break;
    case FastCode::kCharacter:
    case FastCode::kCharacterRun:
    case FastCode::kLazyCharacter:
      AddCharacters(*op.record, &result);
      break;
    default:
      return NextBytes::All(false);
  }
  return result;
}

}  // namespace vekch::regexp
