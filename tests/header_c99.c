// SPDX-License-Identifier: MIT
/*
 * A program that knows the public headers and nothing else takes the address of every exported
 * name. Compiled as C99, and as C++.
 */
#include "vekch/regexp_help.h"
#include "vekch/vekch.h"

typedef void (*AnyFunction)(void);

int main(void) {
#define USE(name) (AnyFunction) name,
  const AnyFunction functions[] = {
#include "use_exports.inc" /* made from frame/exports.list */
  };
  const int count = (int)(sizeof functions / sizeof functions[0]);
  int same = 0;
  int i = 0;
  for (i = 0; i < count; ++i) {
    same += functions[i] == functions[(i + 1) % count];
  }
  return same + (vekchGetLibVersion()->major != 2021);
}
