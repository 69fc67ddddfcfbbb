// SPDX-License-Identifier: MIT
/* What the Python package calls besides the library's functions: the header-only helpers, as
 * functions that can be looked up, and results as pairs of offsets. */
#include "vekch/regexp_help.h"

#define HELPER __attribute__((visibility("default")))

HELPER int32_t vekch_python_groups(const RegExpState* state);
HELPER int32_t vekch_python_groups(const RegExpState* state) { return vekRegExpGroupCount(state); }

HELPER const char* vekch_python_cause(const uint8_t* pattern, const uint8_t* options,
                                      vekStatus status, int32_t offset);
HELPER const char* vekch_python_cause(const uint8_t* pattern, const uint8_t* options,
                                      vekStatus status, int32_t offset) {
  return vekRegExpFaultText(pattern, options, status, offset);
}

/* All matches, or the first of an object without option g. The elements become pairs of 32-bit
 * offsets, start and end, from the front of their memory on; -1 and -1 for a group without part. */
HELPER vekStatus vekch_python_find_all(const uint8_t* text, int32_t length, RegExpState* state,
                                       RegExpFindResult* found, int32_t* count);
HELPER vekStatus vekch_python_find_all(const uint8_t* text, int32_t length, RegExpState* state,
                                       RegExpFindResult* found, int32_t* count) {
  const vekStatus status = vekRegExpFindAll(text, length, state, found, count);
  int32_t i;
  for (i = 0; status >= 0 && i < *count; ++i) {
    const RegExpFindResult one = found[i];
    int32_t span[2] = {-1, -1};
    if (one.length >= 0) {
      span[0] = (int32_t)(one.pointer - text);
      span[1] = one.length < length - span[0] ? span[0] + one.length : length;
    }
    memcpy((uint8_t*)found + (size_t)i * sizeof span, span, sizeof span);
  }
  return status;
}
