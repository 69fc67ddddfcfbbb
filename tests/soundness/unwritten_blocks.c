// SPDX-License-Identifier: MIT

/*
 * Preloaded into a program that runs under valgrind: each block that a pattern or a template is
 * compiled into is filled with 0xAA and counts as never written, whatever it held. What compiling
 * leaves unwritten and a search reads is then reported.
 *
 * With VEKCH_UNWRITTEN_AFTER set the block counts as never written after compiling instead, so that
 * the first search must be reported: that shows that this is taken in.
 */
#define _GNU_SOURCE /* RTLD_NEXT */
#include <dlfcn.h>
#include <stdlib.h>
#include <string.h>
#include <valgrind/memcheck.h>

#include "vekch/vekch.h"

/* ISO C has no cast from what dlsym gives to a function; POSIX has this. */
static void Find(const char* name, void* function) {
  void* found = dlsym(RTLD_NEXT, name);
  if (found == NULL) {
    abort();
  }
  memcpy(function, &found, sizeof found);
}

static void MakeUnwritten(void* block, int32_t size, int isAfter) {
  const int wantsAfter = getenv("VEKCH_UNWRITTEN_AFTER") != NULL;
  if (isAfter != wantsAfter || size <= 0) {
    return;
  }
  if (!isAfter) {
    memset(block, 0xAA, (size_t)size);
  }
  (void)VALGRIND_MAKE_MEM_UNDEFINED(block, (size_t)size);
}

VEKCH_API vekStatus veksRegExpInit(const uint8_t* pattern, const uint8_t* options,
                                   RegExpState* state, int32_t* errorOffset) {
  vekStatus (*next)(const uint8_t*, const uint8_t*, RegExpState*, int32_t*) = NULL;
  vekStatus status = StatusNoError;
  int32_t size = 0;
  Find("veksRegExpInit", &next);
  if (pattern == NULL || state == NULL || errorOffset == NULL) {
    return next(pattern, options, state, errorOffset);
  }
  (void)veksRegExpGetSize(pattern, &size);
  MakeUnwritten(state, size, 0);
  status = next(pattern, options, state, errorOffset);
  MakeUnwritten(state, size, 1);
  return status;
}

VEKCH_API vekStatus veksRegExpReplaceInit(const uint8_t* replacement, RegExpReplaceState* state) {
  vekStatus (*next)(const uint8_t*, RegExpReplaceState*) = NULL;
  int32_t size = 0;
  Find("veksRegExpReplaceInit", &next);
  if (state != NULL) {
    (void)veksRegExpReplaceGetSize(replacement, &size);
    MakeUnwritten(state, size, 0);
  }
  return next(replacement, state);
}
