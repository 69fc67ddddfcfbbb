// SPDX-License-Identifier: MIT
#include <stdio.h>
#include <stdlib.h>
#include <vekch/regexp_help.h>

int main(void) {
  const uint8_t pattern[] = "(\\w+)=(\\d+)";
  const uint8_t text[] = "width=640, height=480";
  int32_t size, offset, count = 12; /* three elements a match: the whole and two groups */
  RegExpFindResult found[12];
  veksRegExpGetSize(pattern, &size);
  RegExpState* state = (RegExpState*)malloc((size_t)size);
  vekStatus status = veksRegExpInit(pattern, (const uint8_t*)"g", state, &offset);
  if (status != StatusNoError) {
    printf("%s at %d\n", vekRegExpFaultText(pattern, NULL, status, offset), (int)offset);
  } else {
    status = vekRegExpFindAll(text, sizeof text - 1, state, found, &count);
    for (int32_t i = 0; i < count; i += 3) {
      printf("%.*s is %.*s\n", (int)found[i + 1].length, (const char*)found[i + 1].pointer,
             (int)found[i + 2].length, (const char*)found[i + 2].pointer);
    }
  }
  free(state);
  return status;
}
