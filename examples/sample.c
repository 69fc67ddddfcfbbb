#include <stdio.h>
#include <vekch/vekch.h>

int main(void) {
  const uint8_t text[] = "key = value";
  int32_t index = -1;
  const vekStatus status = veksFindC_8u(text, sizeof text - 1, '=', &index);
  printf("%s: '=' stands at %d\n", vekStatusText(status), (int)index);
  return status == StatusNoError ? 0 : 1;
}
