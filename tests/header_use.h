// SPDX-License-Identifier: MIT
/*
 * What a program does with the public header and nothing else: it takes the address of every
 * exported name and calls one function of each family. Compiled as C99, as C++, and by the C
 * compiler alone, which brings no C++ run-time library.
 */
#include "vekch/regexp_help.h"
#include "vekch/vekch.h"

typedef void (*AnyFunction)(void);

static int UseHeader(void) {
#define USE(name) (AnyFunction) name,
  const AnyFunction functions[] = {
#include "use_exports.inc" /* made from frame/exports.list */
  };
  const int count = (int)(sizeof functions / sizeof functions[0]);
  const uint8_t text[] = {'a', 'b', 'c', 'B'};
  uint8_t copy[4];
  uint16_t units[4];
  int32_t unitCount = 4;
  int32_t byteCount = 4;
  uint32_t hash = 0;
  int32_t result = 0;
  int wrong = 0;
  int i = 0;
  for (i = 0; i < count; ++i) {
    wrong += functions[i] == functions[(i + 1) % count];
  }
  wrong += vekchGetLibVersion()->major != 2021;
  wrong += veksCompare_8u(text, text + 1, 3, &result) != StatusNoError || result != 'a' - 'b';
  wrong += veksLowercaseLatin_8u(text, copy, 4) != StatusNoError || copy[3] != 'b';
  wrong += veksFindC_8u(text, 4, 'c', &result) != StatusNoError || result != 2;
  wrong += veksTrimC_8u(text, 4, 'a', copy, &result) != StatusNoError || result != 3;
  wrong += veksConcat_8u(text, 1, text + 3, 1, copy) != StatusNoError || copy[1] != 'B';
  wrong += veksHashSJ2_8u32u(text, 3, &hash) != StatusNoError || hash != 96354;
  wrong += veksConvertUTF_8u16u(text, &byteCount, units, &unitCount, 0) != StatusNoError;
  wrong += byteCount != 4 || unitCount != 4 || units[3] != 'B';
  wrong += veksRegExpGetSize((const uint8_t*)"", &result) != StatusNoError || result != 48056;
  return wrong + (vekStatusText(StatusNullPointer) == vekStatusText(StatusNoError));
}
