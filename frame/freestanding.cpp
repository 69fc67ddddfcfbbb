// SPDX-License-Identifier: MIT

// What the compiler may call without being asked, and the DLL's load notification: the library is
// linked without start files and without any other library. Nothing here is exported.
//
// The loops are plain: compilers call these for small structures only, the library's own copies
// have kernels of their own.

#include <stddef.h>

extern "C" {

void* memcpy(void* destination, const void* source, size_t size) {
  auto* to = static_cast<unsigned char*>(destination);
  const auto* from = static_cast<const unsigned char*>(source);
  for (size_t i = 0; i < size; ++i) {
    to[i] = from[i];
  }
  return destination;
}

void* memmove(void* destination, const void* source, size_t size) {
  auto* to = static_cast<unsigned char*>(destination);
  const auto* from = static_cast<const unsigned char*>(source);
  if (to <= from) {
    return memcpy(destination, source, size);
  }
  for (size_t i = size; i > 0; --i) {
    to[i - 1] = from[i - 1];
  }
  return destination;
}

void* memset(void* destination, int value, size_t size) {
  auto* to = static_cast<unsigned char*>(destination);
  for (size_t i = 0; i < size; ++i) {
    to[i] = static_cast<unsigned char>(value);
  }
  return destination;
}

#ifdef _WIN32
// Called before a frame of a page or more is taken, with its size in rax, and keeps all registers:
// the system lets a stack grow by one page at a time, so each page below is touched in turn.
__asm__(
    ".globl ___chkstk_ms\n"
    "___chkstk_ms:\n"
    "  push %rax\n"
    "  push %rdx\n"
    "  lea 24(%rsp), %rdx\n"  // the stack before the call
    "1:\n"
    "  cmp $4096, %rax\n"
    "  jbe 2f\n"
    "  sub $4096, %rdx\n"
    "  sub $4096, %rax\n"
    "  testb %al, (%rdx)\n"
    "  jmp 1b\n"
    "2:\n"
    "  sub %rax, %rdx\n"
    "  testb %al, (%rdx)\n"
    "  pop %rdx\n"
    "  pop %rax\n"
    "  ret\n");

int __stdcall DllMainCRTStartup(void* /*module*/, unsigned long /*reason*/, void* /*reserved*/) {
  return 1;
}
#endif

}  // extern "C"
