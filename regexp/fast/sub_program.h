// SPDX-License-Identifier: MIT

// Programs in the program: look-arounds and atomic groups.

#ifndef VEKCH_REGEXP_FAST_SUB_PROGRAM_H
#define VEKCH_REGEXP_FAST_SUB_PROGRAM_H

#include <stdint.h>

#include "regexp/fast/machine.h"
#include "unicode/utf8.h"

namespace vekch::regexp::fast {

// So many characters before, or bytes where there are fewer characters.
inline const uint8_t* Before(const Text& text, const uint8_t* at, int32_t length) {
  const uint8_t* start = at;
  for (int32_t i = 0; i < length; ++i) {
    if (start == text.subject) {
      return at - length;
    }
    start = PreviousUtf8(start, text.subject, text.limit);
  }
  return start;
}

template <bool kRemembers>
[[gnu::noinline]] bool EnterSub(Machine<kRemembers>& m, Registers& r) {
  const FastOp& opening = *r.op;
  const uint8_t* bodyAt = r.at;
  if (opening.code == FastCode::kLookaround && (opening.flags & kIsBehind) != 0) {
    if (r.at - m.text.subject < opening.length) {
      return (opening.flags & kIsNegative) != 0 && m.GoOn(r);
    }
    bodyAt = Before(m.text, r.at, opening.length);
  }
  if (!m.HasRoom(r)) {
    return m.Stop(r, m.whenFull);
  }
  Frame* const frame = m.Push(r, FrameKind::kSub, r.at);
  frame->around = m.sub;
  m.sub = frame;
  r.at = bodyAt;
  return m.GoTo(r, opening.targets[0]);
}

// The sub-program has matched: its frames are dropped, and what its groups have captured stays.
template <bool kRemembers>
[[gnu::noinline]] bool LeaveSub(Machine<kRemembers>& m, Registers& r) {
  if (m.sub == nullptr) {  // its opening has made it
    return false;
  }
  const Frame frame = *m.sub;
  r.top = m.sub;
  m.sub = frame.around;
  const FastOp& opening = m.ops[frame.op];
  r.op = &opening;
  if (opening.code == FastCode::kLookaround) {
    r.at = frame.at;
    r.depth = frame.depth;
    if ((opening.flags & kIsNegative) != 0) {
      return false;
    }
  }
  return m.GoOn(r);
}

}  // namespace vekch::regexp::fast

#endif
