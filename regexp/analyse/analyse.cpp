// SPDX-License-Identifier: MIT

// One pass after the other, each in need of those before it:
//
//   LinkGroups     alternatives and ends of groups
//   DecideWays     how each group is gone through, by its alternatives and its quantifier
//   NoteOptions    the options in force, and the sets that depend on them
//   NoteFollowers  what must follow a repetition, by the sets and by the groups passed on the way
//   MostDepth      how deep a match can get
//
// The program's records stay what they are: the passes write notes, entries of groups and facts.

#include "regexp/analyse/analyse.h"

#include "regexp/analyse/follower.h"
#include "regexp/analyse/levels.h"
#include "regexp/characters/character_set.h"
#include "regexp/characters/properties.h"
#include "regexp/object/program_walk.h"
#include "regexp/object/record_notes.h"

namespace vekch::regexp {
namespace {

class Analysis {
 public:
  explicit Analysis(RegExpState* patternState)
      : state(patternState),
        nodes(ProgramOf(patternState)),
        count(patternState->nodeCount),
        facts(FactsOf(patternState)),
        groups(GroupsOf(patternState)),
        room(patternState),
        walk(*patternState) {}

  void Run() {
    if (LinkGroups()) {
      DecideWays();
    }
    NoteOptions();
    NoteFollowers();
    facts->mostDepth = MostDepth();
  }

 private:
  // ---- Groups, their alternatives and their ends.

  // Whether there are any.
  bool LinkGroups() {
    int32_t lastSerial = 0;
    int32_t lastAtTopLevel = 0;
    for (int32_t i = 0; i < count; i = walk.BehindAtom(i)) {
      ProgramNode& node = nodes[i];
      if (IsOpening(node)) {
        lastSerial = SerialOf(node);
        groups[lastSerial].analysing = {};
        Note(&node, GroupNote{0, GroupWay::kOnce});
      } else if (node.op == OpAlternative) {
        Note(&node, AlternativeNote{0, 0});
        if (SerialOf(node) == 0) {
          LinkAlternative(i, &lastAtTopLevel, &facts->firstAlternative);
        } else {
          LinkAlternativeOfGroup(i, &groups[SerialOf(node)]);
        }
      } else if (node.op == OpGroupEnd) {
        EndGroup(i, groups[SerialOf(node)].opening);
      }
    }
    room.Open(lastSerial);
    return lastSerial != 0;
  }

  void LinkAlternative(int32_t index, int32_t* last, int32_t* first) {
    if (*last == 0) {
      *first = index;
    } else {
      Note(&nodes[*last], AlternativeNote{index, 0});
    }
    *last = index;
  }

  void LinkAlternativeOfGroup(int32_t index, GroupEntry* group) {
    GroupNote note = GroupNoteOf(nodes[group->opening]);
    LinkAlternative(index, &group->analysing.lastAlternative, &note.firstAlternative);
    Note(&nodes[group->opening], note);
  }

  void EndGroup(int32_t end, int32_t opening) {
    NoteOpening(&nodes[end], opening);
    int32_t i = GroupNoteOf(nodes[opening]).firstAlternative;
    while (i != 0) {
      const int32_t next = AlternativeNoteOf(nodes[i]).next;
      Note(&nodes[i], AlternativeNote{next, end});
      i = next;
    }
  }

  // ---- How groups are gone through, and which are referred to while they are open.

  void DecideWays() {
    uint64_t isClosed[RegExpTableSize / 64 + 1] = {};  // a bit for each capture
    int32_t nesting = 0;
    for (int32_t i = 0; i < count; i = walk.BehindAtom(i)) {
      ProgramNode& node = nodes[i];
      if (IsOpening(node)) {
        GroupNote note = GroupNoteOf(node);
        note.way = WayOf(i, note.firstAlternative != 0, nesting == 0);
        Note(&node, note);
        ++nesting;
      } else if (node.op == OpGroupEnd) {
        const ProgramNode& opening = nodes[OpeningOf(node)];
        if (opening.op == OpCapture) {
          isClosed[opening.c / 64] |= uint64_t{1} << opening.c % 64;
        }
        --nesting;
      } else if (node.op == OpBackref && node.a < state->captureCount &&
                 (isClosed[node.a / 64] >> node.a % 64 & 1) == 0) {
        facts->readsOpenGroups = 1;
      }
    }
  }

  GroupWay WayOf(int32_t opening, bool chooses, bool isAtTopLevel) const {
    const ProgramNode* const quantifier = walk.QuantifierAt(walk.GroupEnd(opening) + 1);
    if (quantifier != nullptr) {
      return quantifier->b == 0 ? GroupWay::kPassedOver
             : quantifier->op == OpGreedy
                 ? quantifier->a == 0 ? GroupWay::kOptional : GroupWay::kGreedy
             : quantifier->a == 0 ? GroupWay::kSkippedFirst
                                  : GroupWay::kLazy;
    }
    const uint32_t op = nodes[opening].op;
    if (op == OpGroup || op == OpOptionGroup) {
      return chooses ? GroupWay::kChoice : GroupWay::kTransparent;
    }
    // At top level and without alternatives there, a group is passed by every match, and by
    // nothing else than a try that begins with its opening.
    if (op == OpCapture && isAtTopLevel && facts->firstAlternative == 0) {
      return chooses ? GroupWay::kCertainChoice : GroupWay::kCertain;
    }
    return GroupWay::kOnce;
  }

  // ---- Options and sets. The options in force follow from the order of the records alone.

  void NoteOptions() {
    auto options = static_cast<int32_t>(state->compileFlags);
    for (int32_t i = 0; i < count; i = walk.BehindAtom(i)) {
      ProgramNode& node = nodes[i];
      switch (node.op) {
        case OpSetOptions:
          options = node.a;
          break;
        case OpOptionGroup:
          options = node.c;
          break;
        case OpAlternative:
        case OpGroupEnd:
          options = node.b;
          break;
        case OpAssert:
        case OpBackref:
        case OpCodePoint:
          regexp::NoteOptions(&node, options);
          break;
        case OpCharType:
          NoteSet(&node, &ShorthandSet(node.a, options));
          break;
        case OpCategory:
          NoteCategories(&node, CategorySet(node.a, node.b));
          break;
        case OpClass:
          NoteClass(&node, options);
          break;
        default:
          break;
      }
    }
  }

  // A class whose set finds no room is tested item by item.
  void NoteClass(ProgramNode* node, int32_t options) {
    auto* const set = reinterpret_cast<CharacterSet*>(room.Take(sizeof(CharacterSet)));
    if (set == nullptr) {
      regexp::NoteOptions(node, options);
      return;
    }
    FillClassSet(*node, options, set);
    NoteSet(node, set);
  }

  // ---- What must follow a repetition.

  void NoteFollowers() {
    for (int32_t i = 0; i < count;) {
      const int32_t behind = walk.BehindAtom(i);
      if (!IsOpening(nodes[i]) && nodes[i].op != OpGroupEnd &&
          walk.QuantifierAt(behind) != nullptr) {
        Note(&nodes[behind], FollowerOf(walk, i, behind + 1));
      }
      i = behind;
    }
  }

  // ---- Depth.

  // Every record takes a level, and a repetition one more; a group that is repeated takes its
  // levels again each time.
  int32_t MostDepth() {
    int64_t depth = kSlackLevels;
    for (int32_t i = 0; i < count; ++i) {
      const ProgramNode& node = nodes[i];
      depth = depth < INT32_MAX - 2 ? depth + 2 : INT32_MAX;
      if (IsOpening(node)) {
        groups[SerialOf(node)].analysing.depth = static_cast<int32_t>(depth);
        depth = 2;
      } else if (node.op == OpGroupEnd) {
        const ProgramNode* const quantifier = walk.QuantifierAt(i + 1);
        const int64_t times = quantifier == nullptr ? 1 : quantifier->b + int64_t{1};
        depth = groups[SerialOf(node)].analysing.depth + depth * times;
      }
      depth = depth < INT32_MAX ? depth : INT32_MAX;
    }
    return static_cast<int32_t>(depth);
  }

  RegExpState* state;
  ProgramNode* nodes;
  int32_t count;
  PatternFacts* facts;
  GroupEntry* groups;
  FreeRoom room;
  ProgramWalk walk;
};

}  // namespace

void Analyse(RegExpState* state) { Analysis(state).Run(); }

}  // namespace vekch::regexp
