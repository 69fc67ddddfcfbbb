// SPDX-License-Identifier: MIT
#include "regexp/characters/wide_set.h"

#include "regexp/characters/bytes.h"
#include "regexp/characters/character_set.h"
#include "regexp/characters/properties.h"
#include "regexp/object/record_notes.h"
#include "strings/kernels/block.h"

namespace vekch::regexp {

bool AcceptsWide(const ProgramNode& atom, int32_t codePoint) {
  if (HasSet(atom)) {
    return InClass(codePoint, atom, IsCaseless(SetOf(atom)->options));
  }
  return atom.op == OpCategory ? InCategorySet(codePoint, CategoriesOf(atom))
                               : MatchPropertyItem(codePoint, &atom, 0) >= 0;
}

void WideSet::Begin(const ProgramNode& record) {
  atom = &record;
  for (uint16_t& block : blocks) {
    block = 0;
  }
  blocks[0] = 1;  // one whose entry is another, as 0 is for the others
  for (int32_t value = 0; value < 256; ++value) {
    const bool isMember =
        HasSet(record) ? SetOf(record)->member[value] != 0 : AcceptsWide(record, value);
    member[value] = isMember ? 0xFF : 0;
  }
}

void WideSet::Find(uint32_t block) {
  uint64_t found = 0;
  for (uint32_t i = 0; i < kBlockSize; ++i) {
    found |= uint64_t{AcceptsWide(*atom, static_cast<int32_t>(block * kBlockSize + i))} << i;
  }
  bits[block % kEntries] = found;
  blocks[block % kEntries] = static_cast<uint16_t>(block);
}

}  // namespace vekch::regexp
