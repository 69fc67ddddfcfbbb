// SPDX-License-Identifier: MIT
#include "regexp/analyse/follower.h"

#include "regexp/characters/bytes.h"
#include "regexp/characters/character_set.h"
#include "strings/kernels/block.h"

namespace vekch::regexp {
namespace {

constexpr int32_t kMostPasses = 100;

// A byte above 0x7F may begin a character that is a member.
bool Has(const CharacterSet& set, uint8_t byte) {
  return set.member[byte] != 0 || (byte >= 0x80 && set.wide != Wide::kOutside);
}

bool AreDisjoint(const CharacterSet& a, const CharacterSet& b) {
  if (a.wide != Wide::kOutside && b.wide != Wide::kOutside) {
    return false;
  }
  const kernels::Block zero = kernels::ZeroBlock();
  kernels::Block both = zero;
  for (int32_t i = 0; i < 256; i += kernels::kBlock) {
    both = both | (kernels::LoadAny(a.member + i) & kernels::LoadAny(b.member + i));
  }
  // The other's characters of several bytes begin with any byte above 0x7F, but it has none of
  // those bytes itself, as one of the two sets is of single bytes alone.
  return kernels::LaneBits(both == zero) == 0xFFFF;
}

bool Follows(const FollowNote& note, uint8_t byte, const ProgramNode* program) {
  return note.kind == FollowNote::kByte ? byte == note.FirstByte() || byte == note.SecondByte()
                                        : Has(note.SetIn(program), byte);
}

// Whether no character of the atom begins with a byte that can follow.
bool IsDisjoint(const FollowNote& note, const ProgramNode& atom, const ProgramNode* program) {
  if (atom.op == OpChar) {
    const auto byte = static_cast<uint8_t>(atom.a);
    return !Follows(note, byte, program) &&
           !Follows(note, OtherCase(byte, IsCaseless(atom.c)), program);
  }
  const CharacterSet* const set = HasSet(atom) ? SetOf(atom) : nullptr;
  if (set == nullptr) {
    return false;
  }
  return note.kind == FollowNote::kByte
             ? !Has(*set, note.FirstByte()) && !Has(*set, note.SecondByte())
             : AreDisjoint(*set, note.SetIn(program));
}

}  // namespace

FollowNote FollowerOf(const ProgramWalk& walk, int32_t atom, int32_t next) {
  FollowNote note = {};
  int32_t passes = 0;
  const int32_t i = walk.SkipPassed(next, &passes);
  if (passes > kMostPasses || !walk.IsCertain(i)) {
    return note;
  }
  note.passes = static_cast<uint8_t>(passes);
  const ProgramNode& follower = walk.nodes[i];
  if (IsLiteral(follower)) {
    const uint8_t byte = Literal(follower).bytes[0];
    const uint32_t other = OtherCase(byte, IsCaseless(follower.c));
    note.kind = FollowNote::kByte;
    note.target = byte | other << 8;
  } else if (walk.SetAt(i) != nullptr) {
    note.kind = FollowNote::kSet;
    note.target = static_cast<uint32_t>(i);
  } else {
    return note;
  }
  note.isDisjoint = IsDisjoint(note, walk.nodes[atom], walk.nodes) ? 1 : 0;
  return note;
}

}  // namespace vekch::regexp
