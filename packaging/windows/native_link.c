// SPDX-License-Identifier: MIT
/* Linked by a linker native to Windows, with vekchm7.lib and nothing else. Ends with 0 if the DLL
 * answers. */
#include <vekch/find.h>
#include <vekch/version.h>

int Start(void) {
  int32_t index = -1;
  const vekStatus status = veksFindC_8u((const uint8_t*)"abc", 3, 'c', &index);
  return status == StatusNoError && index == 2 && vekchGetLibVersion()->targetCpu[0] == 'm' ? 0 : 1;
}
