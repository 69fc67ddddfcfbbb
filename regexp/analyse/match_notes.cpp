#include "regexp/analyse/match_notes.h"

#include "regexp/analyse/levels.h"
#include "regexp/analyse/program_walk.h"
#include "regexp/characters/bytes.h"
#include "regexp/characters/properties.h"
#include "strings/kernels/block.h"

namespace vekch::regexp {
namespace {

constexpr int32_t kMostPasses = 100;

class NoteWriter {
 public:
  explicit NoteWriter(RegExpState* patternState)
      : state(patternState),
        nodes(ProgramOf(patternState)),
        count(patternState->nodeCount),
        facts(FactsOf(patternState)),
        groups(GroupsOf(patternState)),
        room(patternState) {}

  void Run() {
    LinkGroups();
    NoteSets();
    NoteRepetitions();
    NoteCertainGroups();
    facts->mostDepth = MostDepth();
  }

 private:
  // ---- Groups, their alternatives and their ends.

  void LinkGroups() {
    int32_t lastSerial = 0;
    int32_t lastAtTopLevel = 0;
    for (int32_t i = 0; i < count; ++i) {
      ProgramNode& node = nodes[i];
      if (node.op == OpClass) {
        i += node.b;
      } else if (IsOpening(node)) {
        lastSerial = SerialOf(node);
        groups[lastSerial].analysing = {};
        SetNote(&node, GroupNote{0, 0});
      } else if (node.op == OpAlternative) {
        GroupEntry& group = groups[SerialOf(node)];
        const bool isAtTopLevel = node.a == 0;
        LinkAlternative(i, isAtTopLevel ? nullptr : &group,
                        isAtTopLevel ? &lastAtTopLevel : &group.analysing.lastAlternative);
      } else if (node.op == OpGroupEnd) {
        EndGroup(i, groups[SerialOf(node)]);
      }
    }
    room.Open(lastSerial);
  }

  // Null stands for the top level.
  void LinkAlternative(int32_t index, const GroupEntry* group, int32_t* last) {
    SetNote(&nodes[index], AlternativeNote{0, 0});
    if (*last != 0) {
      SetNote(&nodes[*last], AlternativeNote{index, 0});
    } else if (group == nullptr) {
      facts->firstAlternative = index;
    } else {
      SetNote(&nodes[group->opening], GroupNote{index, 0});
    }
    *last = index;
  }

  void EndGroup(int32_t end, const GroupEntry& group) {
    nodes[end].ptr = static_cast<uint64_t>(group.opening);
    int32_t i = NoteOf<GroupNote>(nodes[group.opening]).firstAlternative;
    while (i != 0) {
      const int32_t next = NoteOf<AlternativeNote>(nodes[i]).next;
      SetNote(&nodes[i], AlternativeNote{next, end});
      i = next;
    }
  }

  // ---- Sets and options. The options in force follow from the order of the records alone.

  void NoteSets() {
    auto options = static_cast<int32_t>(state->compileFlags);
    for (int32_t i = 0; i < count; ++i) {
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
          node.ptr = static_cast<uint64_t>(options);
          break;
        case OpCharType: {
          node.ptr = reinterpret_cast<uintptr_t>(&ShorthandSet(node.a, options));
          break;
        }
        case OpCategory:
          node.ptr = CategorySet(node.a, node.b);
          break;
        case OpClass:
          node.ptr = static_cast<uint64_t>(options);
          if (auto* const set = reinterpret_cast<CharacterSet*>(room.Take(sizeof(CharacterSet)))) {
            FillClassSet(node, options, set);
            node.ptr = reinterpret_cast<uintptr_t>(set);
          }
          i += node.b;
          break;
        default:
          break;
      }
    }
  }

  // ---- What must follow a repetition.

  void NoteRepetitions() {
    const ProgramWalk walk(*state);
    for (int32_t i = 0; i < count; ++i) {
      const int32_t behind = walk.BehindAtom(i);
      if (!IsOpening(nodes[i]) && walk.QuantifierAt(behind) != nullptr) {
        SetNote(&nodes[behind], Follow(walk, nodes[i], behind + 1));
      }
      i = behind - 1;
    }
  }

  static FollowNote Follow(const ProgramWalk& walk, const ProgramNode& atom, int32_t next) {
    FollowNote note = {};
    int32_t passes = 0;
    const int32_t i = walk.SkipPassed(next, &passes);
    if (passes > kMostPasses || !walk.IsCertain(i)) {
      return note;
    }
    note.passes = static_cast<uint8_t>(passes);
    const ProgramNode& follower = walk.nodes[i];
    if (IsLiteral(follower)) {
      const uint8_t byte =
          follower.op == OpChar ? static_cast<uint8_t>(follower.a) : RunOf(follower)[0];
      note.kind = FollowNote::kByte;
      const uint32_t other = OtherCase(byte, IsCaseless(follower.c));
      note.target = (byte | other << 8) & 0xFFFFU;
    } else if (walk.SetAt(i) != nullptr) {
      note.kind = FollowNote::kSet;
      note.target = static_cast<uint32_t>(i);
    } else {
      return note;
    }
    note.isDisjoint = IsDisjoint(note, atom, walk.nodes) ? 1 : 0;
    return note;
  }

  // Whether no character of the atom begins with a byte that can follow.
  static bool IsDisjoint(const FollowNote& note, const ProgramNode& atom,
                         const ProgramNode* program) {
    if (atom.op == OpChar) {
      const auto byte = static_cast<uint8_t>(atom.a);
      return !Follows(note, byte, program) &&
             !Follows(note, OtherCase(byte, IsCaseless(atom.c)), program);
    }
    if (atom.op != OpCharType && atom.op != OpClass) {
      return false;
    }
    const CharacterSet* const set = SetNoteOf(atom);
    if (set == nullptr) {
      return false;
    }
    if (note.kind == FollowNote::kByte) {
      return !Has(*set, note.FirstByte()) && !Has(*set, note.SecondByte());
    }
    return AreDisjoint(*set, note.SetIn(program));
  }

  static bool Follows(const FollowNote& note, uint8_t byte, const ProgramNode* program) {
    return note.kind == FollowNote::kByte ? byte == note.FirstByte() || byte == note.SecondByte()
                                          : Has(note.SetIn(program), byte);
  }

  // A byte above 0x7F may begin a character that is a member.
  static bool Has(const CharacterSet& set, uint8_t byte) {
    return set.member[byte] != 0 || (byte >= 0x80 && set.wide != Wide::kOutside);
  }

  static bool AreDisjoint(const CharacterSet& a, const CharacterSet& b) {
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

  // ---- Budgets, and what need not be undone.

  // Every record takes a level, and a repetition one more; a group that is repeated takes its
  // levels again each time.
  int32_t MostDepth() {
    const ProgramWalk walk(*state);
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

  // At top level and without alternatives there, a group is passed by every match, and by nothing
  // else than a try that begins with its opening.
  void NoteCertainGroups() {
    uint64_t isClosed[RegExpTableSize / 64 + 1] = {};  // a bit for each capture
    const bool isSingle = facts->firstAlternative == 0;
    const ProgramWalk walk(*state);
    int32_t nesting = 0;
    for (int32_t i = 0; i < count; ++i) {
      ProgramNode& node = nodes[i];
      if (IsOpening(node)) {
        if (node.op == OpCapture) {
          const bool isRepeated = walk.QuantifierAt(walk.GroupEnd(i) + 1) != nullptr;
          GroupNote note = NoteOf<GroupNote>(node);
          note.isCertain = nesting == 0 && isSingle && !isRepeated ? 1 : 0;
          SetNote(&node, note);
        }
        ++nesting;
      } else if (node.op == OpGroupEnd) {
        const ProgramNode& opening = nodes[node.ptr];
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

  RegExpState* state;
  ProgramNode* nodes;
  int32_t count;
  PatternFacts* facts;
  GroupEntry* groups;
  FreeRoom room;
};

}  // namespace

void WriteNotes(RegExpState* state) { NoteWriter(state).Run(); }

}  // namespace vekch::regexp
