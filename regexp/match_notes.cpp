#include "regexp/match_notes.h"

#include "regexp/bytes.h"
#include "regexp/properties.h"

namespace vekch::regexp {
namespace {

constexpr int32_t kMostPasses = 100;

// What an entry of the group table holds while the notes are written; searches begin with it anew.
struct OpenGroup {
  int32_t around;           // serial of the group around
  int32_t opening;          // index of its record
  int32_t lastAlternative;  // 0 for none yet
  int32_t unused[5];
};
static_assert(sizeof(OpenGroup) == sizeof(GroupEntry));

class NoteWriter {
 public:
  explicit NoteWriter(RegExpState* patternState)
      : state_(patternState),
        nodes_(ProgramOf(patternState)),
        count_(patternState->nodeCount),
        groups_(reinterpret_cast<OpenGroup*>(patternState->workTableA)) {}

  void Run() {
    LinkGroups();
    NoteSets();
    for (int32_t i = 0; i < count_; ++i) {
      if (IsQuantifier(nodes_[i])) {
        SetNote(&nodes_[i], Follow(i));
      }
    }
  }

 private:
  // ---- Groups, their alternatives and their ends.

  void LinkGroups() {
    int32_t innermost = 0;
    for (int32_t i = 0; i < count_; ++i) {
      ProgramNode& node = nodes_[i];
      if (node.op == OpClass) {
        i += node.b;
      } else if (IsOpening(node)) {
        const int32_t serial = node.a < 0 ? -node.a : node.a;
        groups_[serial] = {innermost, i, 0, {}};
        innermost = serial;
        lastSerial_ = serial > lastSerial_ ? serial : lastSerial_;
        SetNote(&node, GroupNote{0, 0});
      } else if (node.op == OpAlternative) {
        LinkAlternative(i, &groups_[innermost]);
      } else if (node.op == OpGroupEnd) {
        const OpenGroup group = groups_[innermost];
        groups_[innermost] = {};
        EndGroup(i, group);
        innermost = group.around;
      }
    }
    const int32_t first = groups_[0].opening;
    groups_[0] = {};
    GroupsOf(state_)[0].minimum = first;
  }

  void LinkAlternative(int32_t index, OpenGroup* group) {
    SetNote(&nodes_[index], AlternativeNote{0, 0});
    if (group->lastAlternative != 0) {
      SetNote(&nodes_[group->lastAlternative], AlternativeNote{index, 0});
    } else if (nodes_[index].a == 0) {
      group->opening = index;  // at top level, where no record opens
    } else {
      SetNote(&nodes_[group->opening], GroupNote{index, 0});
    }
    group->lastAlternative = index;
  }

  void EndGroup(int32_t end, const OpenGroup& group) {
    nodes_[end].ptr = static_cast<uint64_t>(group.opening);
    int32_t i = NoteOf<GroupNote>(nodes_[group.opening]).firstAlternative;
    while (i != 0) {
      const int32_t next = NoteOf<AlternativeNote>(nodes_[i]).next;
      SetNote(&nodes_[i], AlternativeNote{next, end});
      i = next;
    }
  }

  // ---- Sets and options. The options in force follow from the order of the records alone.

  void NoteSets() {
    auto options = static_cast<int32_t>(state_->compileFlags);
    uint8_t* room = reinterpret_cast<uint8_t*>(groups_ + lastSerial_ + 1);
    uint8_t* const end = reinterpret_cast<uint8_t*>(groups_ + RegExpTableSize);
    for (int32_t i = 0; i < count_; ++i) {
      ProgramNode& node = nodes_[i];
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
          const CharacterSet& set = ShorthandSet(node.a, (options & RegExpOptionS) != 0);
          node.ptr = reinterpret_cast<uintptr_t>(&set);
          break;
        }
        case OpCategory:
          node.ptr = CategorySet(node.a, node.b);
          break;
        case OpClass:
          node.ptr = static_cast<uint64_t>(options);
          if (end - room >= static_cast<ptrdiff_t>(sizeof(CharacterSet))) {
            FillClassSet(node, options, reinterpret_cast<CharacterSet*>(room));
            node.ptr = reinterpret_cast<uintptr_t>(room);
            room += sizeof(CharacterSet);
          }
          i += node.b;
          break;
        default:
          break;
      }
    }
  }

  // ---- What must follow a repetition.

  const ProgramNode* QuantifierAt(int32_t index) const {
    return index < count_ && IsQuantifier(nodes_[index]) ? &nodes_[index] : nullptr;
  }

  // Whether every way leads from a record to the next one, without anything read.
  bool IsPassed(const ProgramNode& node, int32_t index) const {
    switch (node.op) {
      case OpSetOptions:
        return true;
      case OpAssert:
        return QuantifierAt(index + 1) == nullptr;
      case OpGroupEnd:
        return node.a > 0 && QuantifierAt(index + 1) == nullptr;
      case OpCapture:
      case OpGroup:
      case OpOptionGroup:
        return NoteOf<GroupNote>(node).firstAlternative == 0 &&
               QuantifierAt(index + node.b + 2) == nullptr;
      default:
        return false;
    }
  }

  FollowNote Follow(int32_t quantifier) const {
    FollowNote note = {};
    int32_t i = quantifier + 1;
    while (i < count_ && note.passes < kMostPasses && IsPassed(nodes_[i], i)) {
      ++i;
      ++note.passes;
    }
    if (i >= count_ || !IsLiteral(nodes_[i])) {
      return note;
    }
    const ProgramNode* const repeated = QuantifierAt(i + 1);
    if (repeated != nullptr && repeated->a < 1) {
      return note;
    }
    const ProgramNode& literal = nodes_[i];
    const uint8_t byte = literal.op == OpChar ? static_cast<uint8_t>(literal.a) : RunOf(literal)[0];
    const bool hasCases = IsCaseless(literal.c) && IsAsciiLetter(byte);
    note.kind = FollowNote::kByte;
    note.bytes[0] = byte;
    note.bytes[1] = hasCases ? static_cast<uint8_t>(byte ^ 0x20) : byte;
    return note;
  }

  RegExpState* state_;
  ProgramNode* nodes_;
  int32_t count_;
  OpenGroup* groups_;
  int32_t lastSerial_ = 0;
};

}  // namespace

void WriteNotes(RegExpState* state) { NoteWriter(state).Run(); }

}  // namespace vekch::regexp
