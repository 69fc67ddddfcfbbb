// SPDX-License-Identifier: MIT
#include "regexp/fast/lone_run.h"

#include "frame/expect.h"
#include "regexp/fast/wide_length.h"
#include "strings/kernels/range_set.h"

namespace vekch::regexp {
namespace {

constexpr uint8_t kNewline = '\n';

// The members by their table, for sets of many ranges and for what is shorter than a group.
struct TableSet {
  const uint8_t* member;

  VEK_INLINE uint64_t MembersAmong(const uint8_t* at, int64_t count) const {
    uint64_t bits = 0;
    for (int64_t i = 0; i < count; ++i) {
      bits |= uint64_t{member[at[i]] & 1U} << i;
    }
    return bits;
  }
  VEK_INLINE uint64_t MembersInGroup(const uint8_t* at) const {
    return MembersAmong(at, kernels::kGroup);
  }
};

class RunFinder {
 public:
  RunFinder(const FastProgram& program, const uint8_t* textEnd, const RunResults& wanted)
      : run(*program.loneRun), isUtf8(program.isUtf8), limit(textEnd), results(wanted) {}

  int32_t Find(const uint8_t* at) {
    if (run.wide != nullptr) {
      FindCharacters(at);
      return count;
    }
    const TableSet table = {run.member};
    if (run.end == RunEnd::kTextEnd || run.end == RunEnd::kTextEndOrNewline) {
      FindLast(at, table);
      return count;
    }
    if (run.set == nullptr) {
      FindBytes(at, table, table);
    } else {
      kernels::WithLoaded(*run.set,
                          [&](const auto& loaded) { return FindBytes(at, loaded, table); });
    }
    return count;
  }

 private:
  VEK_INLINE bool Ends(const uint8_t* at) const {
    switch (run.end) {
      case RunEnd::kAnything:
        return true;
      case RunEnd::kLineEnd:
        return at == limit || *at == kNewline;
      case RunEnd::kTextEnd:
        return at == limit;
      case RunEnd::kTextEndOrNewline:
        break;
    }
    return at == limit || (limit - at == 1 && *at == kNewline);
  }

  // Whether there is room for another match.
  VEK_INLINE bool Add(const uint8_t* from, const uint8_t* to) {
    if (to - from >= run.minimum && Ends(to)) {
      const RegExpFindResult match = {const_cast<uint8_t*>(from), static_cast<int32_t>(to - from)};
      results.first[count++] = match;
      if (results.perMatch > 1 && count < results.room) {
        results.first[count++] = match;
      }
    }
    return count < results.room;
  }

  // Where the members of 64 bytes begin and end in turn.
  template <class Set>
  int32_t FindBytes(const uint8_t* at, const Set& set, const TableSet& table) {
    const uint8_t* open = nullptr;  // where a run began that has not ended yet
    for (; at < limit; at += kernels::kGroup) {
      VEK_EXPECT(at != nullptr);
      const int64_t left = limit - at;
      const uint64_t members =
          left >= kernels::kGroup ? set.MembersInGroup(at) : table.MembersAmong(at, left);
      if (run.isOne) {
        if (!AddEach(at, members)) {
          return count;
        }
        continue;
      }
      uint64_t edges = members ^ (members << 1 | (open != nullptr ? 1 : 0));
      while (edges != 0) {
        if (open == nullptr) {
          open = at + kernels::LowestBit(edges);
          edges &= edges - 1;
          if (edges == 0) {
            break;
          }
        }
        if (!Add(open, at + kernels::LowestBit(edges))) {
          return count;
        }
        open = nullptr;
        edges &= edges - 1;
      }
    }
    if (open != nullptr) {
      Add(open, limit);
    }
    return count;
  }

  VEK_INLINE bool AddEach(const uint8_t* at, uint64_t members) {
    for (; members != 0; members &= members - 1) {
      const uint8_t* const position = at + kernels::LowestBit(members);
      if (!Add(position, position + 1)) {
        return false;
      }
    }
    return true;
  }

  // One match at most: what ends where the text does, or before its last newline, which is no
  // member of a run before an end.
  void FindLast(const uint8_t* at, const TableSet& table) {
    const uint8_t* to = limit;
    const bool passesNewline =
        run.end == RunEnd::kTextEndOrNewline && to > at && to[-1] == kNewline;
    to -= passesNewline ? 1 : 0;
    const uint8_t* from = to;
    while (from > at && table.member[from[-1]] != 0) {
      --from;
    }
    if (from < to) {
      Add(from, to);
    }
  }

  void FindCharacters(const uint8_t* at) {
    WideSet* const set = run.wide;
    while (at < limit) {
      int32_t length = SignedLength(set, at, limit);
      if (length < 0) {
        at += isUtf8 ? -length : 1;
        continue;
      }
      const uint8_t* const start = at;
      do {
        at += length;
        length = at < limit ? SignedLength(set, at, limit) : -1;
      } while (length > 0);
      if (!Add(start, at)) {
        return;
      }
      at += isUtf8 ? -length : 1;  // no member, or one after the end
    }
  }

  const LoneRun& run;
  const bool isUtf8;
  const uint8_t* const limit;
  const RunResults results;
  int32_t count = 0;
};

}  // namespace

int32_t FindRuns(const FastProgram& program, const uint8_t* at, const uint8_t* limit,
                 const RunResults& results) {
  return RunFinder(program, limit, results).Find(at);
}

}  // namespace vekch::regexp
