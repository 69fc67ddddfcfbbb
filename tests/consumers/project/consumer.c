// SPDX-License-Identifier: MIT
/* A program of a user of the library, built in each of the ways in which it can be taken in. */
#include <stdio.h>
#include <vekch/vekch.h>

int main(void) {
  const uint8_t text[] = {'a', 'b', 'c'};
  int32_t index = -1;
  const vekStatus status = veksFindC_8u(text, 3, 'c', &index);
  printf("%s: %s, %d\n", vekchGetLibVersion()->name, vekStatusText(status), (int)index);
  return status == StatusNoError && index == 2 ? 0 : 1;
}
