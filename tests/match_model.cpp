// SPDX-License-Identifier: MIT

// What a failure puts back is held in the arguments of the recursion (the positions in the program
// and in the subject, the options, the open groups) or, for the slots of captures, in a trail of
// old values: a record that fails takes the trail back to where it found it. An abort leaves the
// slots as they are, for the record that turns it into a failure or a match.

#include "tests/match_model.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "regexp/characters/properties.h"
#include "regexp/object/object_layout.h"
#include "regexp/object/record.h"
#include "unicode/utf8.h"

namespace vekch::test {
namespace {

using regexp::MatchPropertyItem;

bool IsAsciiLetter(int32_t c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }
bool IsDigit(int32_t c) { return c >= '0' && c <= '9'; }
bool IsWord(int32_t c) { return IsAsciiLetter(c) || IsDigit(c) || c == '_'; }
bool IsSpace(int32_t c) { return c == 9 || c == 10 || c == 12 || c == 13 || c == 32; }
bool IsMark(int32_t c) { return regexp::MatchCategory(c, regexp::kCategoryM, 0); }
int32_t ToUpper(int32_t c) { return c >= 'a' && c <= 'z' ? c - 0x20 : c; }
bool Has(uint32_t options, uint32_t option) { return (options & option) != 0; }

bool IsOfType(int32_t c, int32_t letter, uint32_t options) {
  if (letter == '.') {
    return c != '\n' || Has(options, RegExpOptionS);
  }
  const int32_t lower = letter | 0x20;
  const bool isInside = lower == 'd' ? IsDigit(c) : lower == 's' ? IsSpace(c) : IsWord(c);
  return isInside == (letter == lower);
}

bool HasItem(const ProgramNode& item, int32_t c, uint32_t options) {
  const bool folds = Has(options, RegExpOptionI);
  const int32_t other = folds && IsAsciiLetter(c) ? c ^ 0x20 : c;
  const auto lies = [&item](int32_t x) { return x >= item.a && x <= item.b; };
  switch (item.op) {
    case OpChar:
      return c == item.a || other == item.a;
    case OpClassRange:
      return lies(c) || lies(other);
    case OpCharType:
      return IsOfType(c, item.a, options);
    default:
      return MatchPropertyItem(c, &item, folds ? 1 : 0) >= 0;
  }
}

bool InClass(const ProgramNode* head, int32_t c, uint32_t options) {
  bool isMember = false;
  for (const ProgramNode *item = head + 1, *end = item + head->b; item < end && !isMember;) {
    // The items of a negated name are given by their first one.
    const bool isNegated = item->c == -1 && (item->op == OpChar || item->op == OpClassRange);
    const auto count = isNegated ? static_cast<int32_t>(item->ptr) : 1;
    const bool isIn = std::any_of(
        item, item + count, [&](const ProgramNode& each) { return HasItem(each, c, options); });
    isMember = isIn != isNegated;
    item += count;
  }
  return isMember != (head->a != 0);
}

// ---- Whether the program matches at one position.

class Matcher {
 public:
  Matcher(const RegExpState& object, const uint8_t* text, int32_t textLength, int64_t mostSteps)
      : state(object),
        program(regexp::ProgramOf(&object)),
        subject(text),
        subjectLength(textLength),
        workLeft(mostSteps) {}

 protected:
  enum Result { kOk, kFail, kAbort };

  struct Slot {
    int32_t start = 0;
    int32_t length = -1;
  };

  // How often something is repeated, and the record after it.
  struct Times {
    int32_t least;
    int32_t most;
    bool isLazy;
    int32_t next;

    Times OneLess() const { return {least - 1, most - 1, isLazy, next}; }
  };

  // A group that is open, in one of its repetitions.
  struct Group {
    const Group* outer;
    int32_t open;  // its records
    int32_t close;
    Times times;  // left, this one included
    uint32_t options;
    int32_t start;
  };

  struct Scene {
    int32_t end;  // the record that ends the program, or the look-around that is tried
    uint32_t options;
    const Group* group;
  };

  Result Match(int32_t cursor, int32_t at, const Scene& scene) {
    if (--workLeft < 0) {
      return kOk;  // ends it all
    }
    if (depth < 0) {
      --steps;
      return kAbort;
    }
    if (steps - 1 < 0 || (at > end && cursor < scene.end)) {
      return kFail;
    }
    if (cursor >= scene.end) {
      return requiresNonEmpty && slots[0].length == 0 ? kFail : kOk;
    }
    const size_t mark = trail.size();
    --depth;
    --steps;
    const Result result = Execute(cursor, at, scene);
    ++depth;
    if (result != kAbort || program[cursor].op != OpChar) {
      ++steps;
    }
    if (result == kFail) {
      Undo(mark);
    }
    return result;
  }

  void Set(size_t slot, Slot value) {
    trail.emplace_back(slot, slots[slot]);
    slots[slot] = value;
  }

  void SetLength(int32_t length) { Set(0, {slots[0].start, length}); }

  // The alternatives from `first` on, up to where they close, until one doesn't fail.
  Result TryAlternatives(int32_t first, int32_t close, int32_t at, Scene scene, bool resets) {
    const int32_t serial = close == state.nodeCount ? 0 : program[close].a;
    for (;;) {
      const Result result = Match(first, at, scene);
      const int32_t alternative = NextAlternative(first, close, serial);
      if (result != kFail || alternative == close) {
        return result;
      }
      scene.options = OptionsAfter(alternative);
      first = alternative + 1;
      if (resets) {
        SetLength(at - slots[0].start);
      }
    }
  }

  int32_t NextAlternative(int32_t from, int32_t to, int32_t serial) const {
    while (from < to && (program[from].op != OpAlternative || program[from].a != serial)) {
      ++from;
    }
    return from;
  }

  uint32_t OptionsAfter(int32_t record) const { return static_cast<uint32_t>(program[record].b); }

  Utf8Character Read(int32_t at, bool isUtf8) const {
    return isUtf8 ? ReadUtf8(subject + at, subject + end) : Utf8Character{subject[at], 1};
  }

  const RegExpState& state;
  const ProgramNode* const program;
  const uint8_t* const subject;
  const int32_t subjectLength;
  int64_t workLeft;

  int32_t end = 0;  // of what is searched
  bool requiresNonEmpty = false;
  int32_t steps = state.matchLimit;
  int32_t depth = state.matchLimit / RegExpDepthShare;
  std::vector<Slot> slots;
  std::vector<std::pair<size_t, Slot>> trail;

 private:
  void Undo(size_t mark) {
    for (; trail.size() > mark; trail.pop_back()) {
      slots[trail.back().first] = trail.back().second;
    }
  }

  Result Execute(int32_t cursor, int32_t at, const Scene& scene) {
    const ProgramNode& node = program[cursor];
    switch (node.op) {
      case OpAssert:
        return Assert(cursor, at, scene);
      case OpAlternative:
        return node.a < 1 ? kOk : EndGroup(at, scene);
      case OpGroupEnd:
        return EndGroup(at, scene);
      case OpSetOptions:
        return Match(cursor + 1, at, {scene.end, static_cast<uint32_t>(node.a), scene.group});
      case OpCapture:
      case OpGroup:
      case OpOptionGroup:
      case OpConditional:
        return OpenGroup(cursor, at, scene);
      case OpLookahead:
      case OpNegLookahead:
      case OpLookbehind:
      case OpNegLookbehind:
        return LookAround(cursor, at, scene);
      case OpAtomic:
        return Atomic(cursor, at, scene, TimesAt(cursor + node.b + 2, scene));
      default:
        return Consume(cursor, at, scene);
    }
  }

  const ProgramNode* QuantifierAt(int32_t cursor, const Scene& scene) const {
    return cursor < scene.end && regexp::IsQuantifier(program[cursor]) ? program + cursor : nullptr;
  }

  Times TimesAt(int32_t cursor, const Scene& scene) const {
    const ProgramNode* quantifier = QuantifierAt(cursor, scene);
    return quantifier == nullptr
               ? Times{1, 1, false, cursor}
               : Times{quantifier->a, quantifier->b, quantifier->op == OpLazy, cursor + 1};
  }

  // ---- Records that consume.

  struct Taken {
    int32_t bytes;
    int32_t reported;

    Taken operator+(Taken more) const { return {bytes + more.bytes, reported + more.reported}; }
  };

  bool HasBytes(const uint8_t* bytes, int32_t count, int32_t at, uint32_t options) const {
    if (count > end - at) {
      return false;
    }
    const bool folds = Has(options, RegExpOptionI);
    return std::equal(bytes, bytes + count, subject + at, [folds](int32_t p, int32_t s) {
      return s == p || (folds && IsAsciiLetter(s) && (s ^ p) == 0x20);
    });
  }

  std::optional<Taken> Take(const ProgramNode& node, int32_t at, uint32_t options) const {
    const auto taken = [](bool matches, int32_t bytes) {
      return matches ? std::optional<Taken>({bytes, bytes}) : std::nullopt;
    };
    if (at >= end) {
      return std::nullopt;
    }
    // The format counts for classes and types alone.
    const bool isUtf8 = state.characterFormat == 1 || (node.op != OpClass && node.op != OpCharType);
    const auto [read, length] = Read(at, isUtf8);
    const auto value = static_cast<int32_t>(read);
    const int32_t folds = Has(options, RegExpOptionI) ? 1 : 0;
    switch (node.op) {
      case OpChar: {
        const auto byte = static_cast<uint8_t>(node.a);
        return taken(HasBytes(&byte, 1, at, options), 1);
      }
      case OpString:
        return taken(HasBytes(regexp::RunOf(node), node.b, at, options), node.b);
      case OpBackref: {
        const Slot slot = slots[static_cast<size_t>(node.a)];
        return taken(slot.length >= 0 && HasBytes(subject + slot.start, slot.length, at, options),
                     slot.length);
      }
      case OpClass:
        return taken(InClass(&node, value, options), length);
      case OpCharType:
        return taken(IsOfType(value, node.a, options), length);
      case OpAnyByte:
        return taken(true, 1);
      case OpCodePoint:
        if (MatchPropertyItem(value, &node, folds) < 0) {
          return std::nullopt;
        }
        return {{length, Utf8Length(static_cast<uint32_t>(node.a))}};
      case OpCategory:
      case OpRange:
      case OpScript:
        return taken(MatchPropertyItem(value, &node, folds) >= 0, length);
      case OpGrapheme: {
        int32_t after = at + length;
        while (after < end && IsMark(static_cast<int32_t>(Read(after, true).value))) {
          after += Read(after, true).length;
        }
        return taken(!IsMark(value), after - at);
      }
      default:
        return std::nullopt;
    }
  }

  Result Consume(int32_t cursor, int32_t at, const Scene& scene) {
    const ProgramNode& node = program[cursor];
    const int32_t next = cursor + 1 + (node.op == OpClass ? node.b : 0);
    if (node.op == OpClass || QuantifierAt(next, scene) != nullptr) {
      return Repeat(node, TimesAt(next, scene), at, scene);
    }
    const std::optional<Taken> taken = Take(node, at, scene.options);
    if (!taken) {
      return kFail;
    }
    SetLength(slots[0].length + taken->reported);
    const Result result = Match(next, at + taken->bytes, scene);
    return result == kAbort ? AbortAfter(node.op) : result;
  }

  static Result AbortAfter(uint32_t op) {
    return op == OpChar || op == OpBackref       ? kAbort
           : op == OpCharType || op == OpAnyByte ? kFail
                                                 : kOk;
  }

  Result Repeat(const ProgramNode& node, const Times& times, int32_t at, const Scene& scene) {
    const int32_t most = std::max(times.least, std::min(times.most, end - at));
    std::vector<Taken> ways;  // by as many as are due, by one more ...
    std::optional<Taken> all = Taken{0, slots[0].length};
    for (int32_t count = 0; all && count <= most; ++count) {
      if (count >= times.least) {
        ways.push_back(*all);
      }
      const std::optional<Taken> one = Take(node, at + all->bytes, scene.options);
      all = one ? std::optional<Taken>(*all + *one) : std::nullopt;
    }
    if (!times.isLazy) {
      std::reverse(ways.begin(), ways.end());
    }
    const size_t mark = trail.size();
    --depth;
    Result result = kFail;
    for (size_t i = 0; i < ways.size() && result != kOk; ++i) {
      Undo(mark);
      SetLength(ways[i].reported);
      result = Match(times.next, at + ways[i].bytes, scene);
    }
    ++depth;
    return result == kOk ? kOk : kFail;
  }

  // ---- Groups.

  Result OpenGroup(int32_t cursor, int32_t at, const Scene& scene) {
    const ProgramNode& node = program[cursor];
    const int32_t close = cursor + node.b + 1;
    const Times times = TimesAt(close + 1, scene);
    const bool setsOptions = node.op == OpOptionGroup;
    const uint32_t options = setsOptions ? static_cast<uint32_t>(node.c) : scene.options;
    const Group group = {scene.group, cursor, close, times, options, at};
    if (times.most == 0 || (times.isLazy && times.least == 0)) {
      const Result skipped = Match(times.next, at, scene);
      if (times.most == 0 || skipped != kFail) {
        return skipped;
      }
    }
    const Slot old = slots[static_cast<size_t>(node.op == OpCapture ? node.c : 0)];
    if (node.op == OpCapture) {
      Set(static_cast<size_t>(node.c), {at, 0});
    }
    const Result result = TryBody(group, at, scene.end);
    if (result != kFail || times.least > 0 || times.isLazy) {
      return result;
    }
    if (node.op == OpCapture) {
      Set(static_cast<size_t>(node.c), old);
    }
    return Match(times.next, at, {scene.end, OptionsAfter(close), scene.group});
  }

  // One repetition, and all that follows.
  Result TryBody(const Group& group, int32_t at, int32_t programEnd) {
    const ProgramNode& open = program[group.open];
    Scene inside = {programEnd, group.options, &group};
    int32_t first = group.open + 1;
    if (open.op == OpConditional) {
      const ProgramNode& condition = program[first];
      Result holds = kFail;
      if (condition.op == OpBackref) {
        holds =
            condition.a < state.captureCount && slots[static_cast<size_t>(condition.a)].length != -1
                ? kOk
                : kFail;
        first += 1;
      } else {
        const int32_t after = first + condition.b + 2;
        holds = Match(first, at, {after, group.options, &group});
        first = after;
      }
      if (holds == kFail) {
        first = NextAlternative(first, group.close, open.a);
        if (first < group.close) {
          inside.options = OptionsAfter(first++);
        }
      }
      return holds == kAbort ? kAbort : Match(first, at, inside);
    }
    return TryAlternatives(first, group.close, at, inside, true);
  }

  // The end of a repetition. What is aborted after it has failed.
  Result EndGroup(int32_t at, const Scene& scene) {
    const Group& group = *scene.group;
    const ProgramNode& open = program[group.open];
    const Scene after = {scene.end, OptionsAfter(group.close), group.outer};
    const int32_t consumed = at - group.start;
    const Times left = group.times.OneLess();
    const Group again = {group.outer, group.open, group.close, left, group.options, at};
    if (open.op == OpCapture) {
      Set(static_cast<size_t>(open.c), {at - consumed, consumed});
    }
    const bool isLast = (left.most < 1 && !left.isLazy) || consumed == 0;
    if (!isLast) {
      if (depth - 1 < 0) {
        return kFail;
      }
      const size_t mark = trail.size();
      if (left.isLazy && left.least < 1) {
        if (Match(left.next, at, after) == kOk) {
          return kOk;
        }
        Undo(mark);
      }
      const Result result = left.most > 0 ? TryBody(again, at, scene.end) : kFail;
      if (result != kFail || left.least > 0 || left.isLazy) {
        return result == kOk ? kOk : kFail;
      }
    }
    return Match(left.next, at, after) == kOk ? kOk : kFail;
  }

  // ---- Look-arounds and atomic groups: programs of their own.

  // Tries what is inside. Slot 0 is afterwards as before, `*taken` is what it grew by; the captures
  // of a match stay for good.
  Result TryInside(int32_t cursor, int32_t at, const Scene& scene, int32_t* taken) {
    const int32_t close = cursor + program[cursor].b + 1;
    const size_t mark = trail.size();
    const int32_t length = slots[0].length;
    const Scene inside = {close, scene.options, scene.group};
    const Result result = TryAlternatives(cursor + 1, close, at, inside, false);
    if (result == kOk) {
      *taken = slots[0].length - length;
      slots[0].length = length;
      trail.resize(mark);
    }
    return result;
  }

  Result LookAround(int32_t cursor, int32_t at, const Scene& scene) {
    const ProgramNode& node = program[cursor];
    const bool isPositive = node.op == OpLookahead || node.op == OpLookbehind;
    Result result = kFail;
    if (!regexp::IsLookbehind(node) || at >= node.c) {
      const int32_t from = regexp::IsLookbehind(node) ? StepBack(at, node.c) : at;
      int32_t taken = 0;
      result = TryInside(cursor, from, scene, &taken);
    }
    return result == kAbort                ? kAbort
           : (result == kOk) == isPositive ? Match(cursor + node.b + 2, at, scene)
                                           : kFail;
  }

  int32_t StepBack(int32_t at, int32_t count) const {
    std::vector<int32_t> starts;
    for (int32_t i = 0; i < at; i += Read(i, true).length) {
      starts.push_back(i);
    }
    const auto back = static_cast<size_t>(count);
    return count == 0 ? at : starts.size() < back ? at - count : starts[starts.size() - back];
  }

  Result Atomic(int32_t cursor, int32_t at, const Scene& scene, const Times& left) {
    if (left.isLazy && left.least < 1) {
      const Result result = Match(left.next, at, scene);
      if (result != kFail) {
        return result;
      }
    }
    int32_t taken = 0;
    const Result inside = left.most < 1 ? kFail : TryInside(cursor, at, scene, &taken);
    if (inside == kAbort || (inside == kFail && (left.least > 0 || left.isLazy))) {
      return inside;
    }
    const size_t mark = trail.size();
    SetLength(slots[0].length + taken);
    if (taken > 0) {
      const Times less = left.OneLess();
      const Result result = Atomic(cursor, at + taken, scene, less);
      if (result != kFail || less.least >= 0 || left.isLazy) {
        return result;
      }
      Undo(mark);
    }
    return Match(left.next, at, scene);
  }

  // ---- Assertions.

  Result Assert(int32_t cursor, int32_t at, const Scene& scene) {
    const ProgramNode* quantifier = QuantifierAt(cursor + 1, scene);
    const bool isOptional = quantifier != nullptr && quantifier->a == 0;
    return isOptional || Holds(program[cursor].a, at, scene.options)
               ? Match(cursor + (quantifier == nullptr ? 1 : 2), at, scene)
               : kFail;
  }

  bool Holds(int32_t letter, int32_t at, uint32_t options) const {
    const bool isStart = at == 0;
    const bool isEnd = at == end;
    const bool isAfterNewline = !isStart && subject[at - 1] == '\n';
    const bool isAtNewline = !isEnd && subject[at] == '\n';
    const bool isLastNewline = isAtNewline && at + 1 == end;
    const bool isBoundary =
        (!isStart && IsWord(subject[at - 1])) != (at < subjectLength && IsWord(subject[at]));
    const bool byLines = Has(options, RegExpOptionM);
    switch (letter) {
      case 'A':
      case 'G':
        return isStart;
      case 'Z':
        return isEnd || isLastNewline;
      case 'z':
        return isEnd;
      case '^':
        return isStart || (byLines && isAfterNewline && !isEnd);
      case '$':
        return isEnd || isLastNewline || (byLines && isAtNewline);
      case 'b':
      case 'B':
        return isBoundary == (letter == 'b');
      case RegExpAssertLineStart:
        return isStart || isAfterNewline;
      default:
        return false;
    }
  }
};

// ---- Where it matches.

class Searcher : Matcher {
 public:
  using Matcher::Matcher;

  SearchAnswer Run(int32_t room, Slots reported) {
    windowEnd = subjectLength;
    if (state.requiredLiteralIndex >= 0) {
      const ProgramNode& literal = program[state.requiredLiteralIndex];
      const int32_t last = FindLiteral(literal, (literal.c & RegExpOptionI) != 0, true);
      windowEnd = last < 0 ? 0 : last + LiteralLength(literal);
    }
    const bool findsAll = Has(state.compileFlags, RegExpOptionG);
    const bool folds = Has(state.compileFlags, RegExpOptionI);
    answer.count = room;
    if (state.searchMode == 2 && !findsAll) {
      FindLiterals(folds);
      return answer;
    }
    const int32_t from =
        state.searchMode == 1 ? std::max(FindLiteral(program[0], folds, false), 0) : 0;
    ChooseStarts();
    if (findsAll) {
      FindAll(from, reported == Slots::kGroupsAlone && state.captureCount > 1 ? 1 : 0);
    } else {
      FindOne(from);
    }
    answer.isComplete = workLeft >= 0;
    return answer;
  }

 private:
  enum class Starts { kAnywhere, kFirst, kLines };

  static int32_t LiteralLength(const ProgramNode& literal) {
    return literal.op == OpChar ? 1 : literal.b;
  }

  // The first or last position of a literal in the window, -1 for none.
  int32_t FindLiteral(const ProgramNode& literal, bool folds, bool last) const {
    const auto byte = static_cast<uint8_t>(literal.a);
    const uint8_t* text = literal.op == OpChar ? &byte : regexp::RunOf(literal);
    const uint8_t* textEnd = text + LiteralLength(literal);
    const uint8_t* stop = subject + windowEnd;
    const auto isSame = [folds](int32_t a, int32_t b) {
      return folds ? ToUpper(a) == ToUpper(b) : a == b;
    };
    const uint8_t* found = last ? std::find_end(subject, stop, text, textEnd, isSame)
                                : std::search(subject, stop, text, textEnd, isSame);
    return found == stop ? -1 : static_cast<int32_t>(found - subject);
  }

  void FindLiterals(bool folds) {
    answer.count = 0;
    int32_t best = -1;
    for (int32_t i = 0; i < state.nodeCount; i += 2) {
      const int32_t position = FindLiteral(program[i], folds, false);
      if (position >= 0 && (best < 0 || position < best)) {
        best = position;
        answer.results = {{subject + position, LiteralLength(program[i])}};
        answer.count = 1;
      }
    }
  }

  void ChooseStarts() {
    const ProgramNode& first = program[0];
    if (state.nodeCount < 1 || first.op != OpAssert ||
        NextAlternative(0, state.nodeCount, 0) < state.nodeCount) {
      return;
    }
    if (first.a == '^' && Has(state.compileFlags, RegExpOptionM)) {
      starts = Starts::kLines;
    } else if (first.a == '^' || first.a == 'A' || first.a == 'G') {
      const bool isOptional =
          state.nodeCount > 1 && regexp::IsQuantifier(program[1]) && program[1].a == 0;
      starts = isOptional ? Starts::kAnywhere : Starts::kFirst;
    }
  }

  void FindOne(int32_t from) {
    answer.count = std::min(answer.count, state.captureCount);
    const Result result = TryStarts(from, windowEnd);
    if (result == kAbort || (result == kFail && steps < 0)) {
      answer.count = result == kAbort ? 0 : answer.count;
      answer.status = StatusRegExpMatchLimit;
    } else if (result == kFail) {
      answer.count = 0;
    } else {
      Append(0, answer.count);
      answer.status =
          answer.count < state.captureCount ? StatusRegExpResultsTruncated : StatusNoError;
    }
  }

  void FindAll(int32_t at, int32_t firstSlot) {
    const int32_t room = answer.count;
    const auto written = [this] { return static_cast<int32_t>(answer.results.size()); };
    while (at <= windowEnd && written() < room && TryStarts(at, windowEnd) == kOk) {
      Append(firstSlot, room - written());
      at = std::min(slots[0].start + slots[0].length, windowEnd);
      if (slots[0].length == 0) {
        if (written() < room && at < windowEnd) {
          requiresNonEmpty = true;
          if (TryStarts(at, at + 1) == kOk) {
            Append(firstSlot, room - written());
          }
          requiresNonEmpty = false;
        }
        ++at;
      }
    }
    if (steps < 0) {
      answer.status = StatusRegExpMatchLimit;
      answer.results.clear();
      return;
    }
    answer.count = written();
    answer.status = written() != 0 && written() < state.captureCount - firstSlot
                        ? StatusRegExpResultsTruncated
                        : StatusNoError;
  }

  void Append(int32_t slot, int32_t most) {
    for (; slot < state.captureCount && most > 0; ++slot, --most) {
      const Slot& from = slots[static_cast<size_t>(slot)];
      answer.results.push_back({from.length < 0 ? nullptr : subject + from.start, from.length});
    }
  }

  Result TryStarts(int32_t from, int32_t to) {
    end = to;
    --depth;
    Result result = kFail;
    for (int32_t at = from; at <= to; at = NextStart(at)) {
      slots.assign(slotCount, {});
      slots[0] = {at, 0};
      trail.clear();
      const Scene scene = {state.nodeCount, state.compileFlags, nullptr};
      result = TryAlternatives(0, state.nodeCount, at, scene, true);
      if (result != kFail) {
        break;
      }
    }
    ++depth;
    return result;
  }

  int32_t NextStart(int32_t at) const {
    if (starts == Starts::kFirst) {
      return end + 1;
    }
    do {
      at += at < end ? Read(at, state.characterFormat == 1).length : 1;
    } while (starts == Starts::kLines && at <= end && subject[at - 1] != '\n');
    return at;
  }

  // Captures that were not counted write to slots too.
  size_t SlotCount() const {
    int32_t count = state.captureCount;
    for (int32_t i = 0; i < state.nodeCount; ++i) {
      count = std::max(count, program[i].op == OpCapture ? program[i].c + 1 : 0);
    }
    return static_cast<size_t>(count);
  }

  const size_t slotCount = SlotCount();
  int32_t windowEnd = 0;
  Starts starts = Starts::kAnywhere;
  SearchAnswer answer;
};

}  // namespace

SearchAnswer AnswerOfModel(const RegExpState& state, const uint8_t* subject, int32_t length,
                           int32_t room, int64_t mostSteps, Slots reported) {
  return Searcher(state, subject, length, mostSteps).Run(room, reported);
}

}  // namespace vekch::test
