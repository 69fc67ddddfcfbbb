// SPDX-License-Identifier: MIT

// Templates of replacements: one walk over the text, which cuts it into pieces of literal text and
// references to groups. Every item stands for a byte of the text at least, so that the object has
// room for one item per byte.

#include "frame/checks.h"
#include "regexp/characters/bytes.h"
#include "regexp/object/object_layout.h"
#include "vekch/regexp_program.h"

namespace vekch::regexp {
namespace {

static_assert(sizeof(RegExpReplaceState) == 16 && sizeof(ReplaceItem) == 16);

class TemplateReader {
 public:
  TemplateReader(const uint8_t* text, ReplaceItem* items) : at(text), literal(text), end(items) {}

  vekStatus Run() {
    while (*at != 0) {
      if (*at == '$') {
        if (!Reference()) {
          return StatusRegExpFormatError;
        }
      } else if (*at == '\\') {
        // It vanishes: what follows is read as if nothing were before it.
        EndLiteral();
        BeginLiteral(at + 1);
      } else {
        ++at;
      }
    }
    EndLiteral();
    return StatusNoError;
  }

  const ReplaceItem* End() const { return end; }

 private:
  bool Reference() {
    EndLiteral();
    ++at;
    if (*at == '&') {
      AppendGroup(0);
      BeginLiteral(at + 1);
      return true;
    }
    uint32_t number = 0;
    for (; IsDigit(*at); ++at) {
      number += 10 * number + (*at - '0');  // kept as it is: "$10" is group 11
    }
    if (number == 0) {
      return false;
    }
    AppendGroup(number);
    BeginLiteral(at);
    return true;
  }

  void BeginLiteral(const uint8_t* text) {
    at = text;
    literal = text;
  }

  void EndLiteral() {
    if (at != literal) {
      *end++ = {ReplaceLiteral, static_cast<uint32_t>(at - literal), literal};
    }
  }

  void AppendGroup(uint32_t number) {
    end->kind = ReplaceGroup;
    end->value = number;  // the pointer is not set
    ++end;
  }

  const uint8_t* at;
  const uint8_t* literal;  // where the literal text that has not been stored yet begins
  ReplaceItem* end;        // after the last item
};

}  // namespace
}  // namespace vekch::regexp

vekStatus veksRegExpReplaceGetSize(const uint8_t* replacement, int32_t* size) noexcept {
  if (vekch::AnyNull(size)) {
    return StatusNullPointer;
  }
  const uint32_t length = replacement == nullptr ? 0 : vekch::regexp::LengthOf(replacement);
  // The size wraps for a template that no 32-bit size can hold: it is not checked for.
  *size = static_cast<int32_t>(sizeof(RegExpReplaceState) + sizeof(ReplaceItem) * length);
  return StatusNoError;
}

vekStatus veksRegExpReplaceInit(const uint8_t* replacement, RegExpReplaceState* state) noexcept {
  if (vekch::AnyNull(state)) {
    return StatusNullPointer;
  }
  if (replacement == nullptr) {
    state->items = nullptr;
    state->itemCount = 0;
    return StatusNoError;
  }
  state->items = reinterpret_cast<ReplaceItem*>(state + 1);
  vekch::regexp::TemplateReader reader(replacement, state->items);
  const vekStatus status = reader.Run();
  if (status == StatusNoError) {
    state->itemCount = static_cast<uint32_t>(reader.End() - state->items);
  }
  return status;
}
