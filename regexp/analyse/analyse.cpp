// SPDX-License-Identifier: MIT

// One pass after the other, each in need of those before it:
//
//   LinkGroups    alternatives and ends of groups
//   NoteOptions   the options in force, and the sets that depend on them
//   MostDepth     how deep a match can get
//   NoteRarest    what of a literal to look for first
//
// The program's records stay what they are: the passes write notes, entries of groups and facts.

#include "regexp/analyse/analyse.h"

#include "regexp/analyse/levels.h"
#include "regexp/characters/character_set.h"
#include "regexp/characters/properties.h"
#include "regexp/characters/rarest_bytes.h"
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
    LinkGroups();
    NoteOptions();
    facts->mostDepth = MostDepth();
    NoteRarest();
  }

 private:
  void NoteRarest() const {
    if (count > 0 && IsLiteral(nodes[0]) && IsCaseless(nodes[0].c)) {
      const RarestBytes rarest((Literal(nodes[0])));
      facts->rarest[0] = rarest.first;
      facts->rarest[1] = rarest.second;
    }
  }

  // ---- Groups, their alternatives and their ends, and whether one is referred to while it is
  // open.

  void LinkGroups() {
    uint64_t closed = 0;  // a bit for each of the first captures; the others count as open
    int32_t lastSerial = 0;
    int32_t lastAtTopLevel = 0;
    for (int32_t i = 0; i < count; i = walk.AfterAtom(i)) {
      ProgramNode& node = nodes[i];
      if (IsOpening(node)) {
        lastSerial = SerialOf(node);
        groups[lastSerial].analysing = {};
        NoteIfHidden(node);
        NoteFirstAlternative(&node, 0);
      } else if (node.op == OpAlternative) {
        Note(&node, AlternativeNote{0, 0});
        if (SerialOf(node) == 0) {
          LinkAlternative(i, &lastAtTopLevel, &facts->firstAlternative);
        } else {
          LinkAlternativeOfGroup(i, &groups[SerialOf(node)]);
        }
      } else if (node.op == OpGroupEnd) {
        const int32_t opening = groups[SerialOf(node)].opening;
        EndGroup(i, opening);
        if (nodes[opening].op == OpCapture) {
          closed |= nodes[opening].c < 64 ? uint64_t{1} << nodes[opening].c : 0;
        }
      } else if (node.op == OpBackref && node.a < state->captureCount &&
                 (node.a >= 64 || (closed >> node.a & 1) == 0)) {
        facts->readsOpenGroups = 1;
      }
    }
    room.Open(lastSerial);
  }

  // A capture that was not counted: the fast matcher could not say which slots are set for certain.
  void NoteIfHidden(const ProgramNode& opening) const {
    if (opening.op == OpCapture && opening.c >= state->captureCount) {
      facts->hasHiddenCaptures = 1;
      facts->isUntranslated = 1;
    }
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
    int32_t first = FirstAlternativeOf(nodes[group->opening]);
    LinkAlternative(index, &group->analysing.lastAlternative, &first);
    NoteFirstAlternative(&nodes[group->opening], first);
  }

  void EndGroup(int32_t end, int32_t opening) {
    NoteOpening(&nodes[end], opening);
    int32_t i = FirstAlternativeOf(nodes[opening]);
    while (i != 0) {
      const int32_t next = AlternativeNoteOf(nodes[i]).next;
      Note(&nodes[i], AlternativeNote{next, end});
      i = next;
    }
  }

  // ---- Options and sets. The options in force follow from the order of the records alone.

  void NoteOptions() {
    auto options = static_cast<int32_t>(state->compileFlags);
    for (int32_t i = 0; i < count; i = walk.AfterAtom(i)) {
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
