// SPDX-License-Identifier: MIT

// A library with one small function and one small kernel that keeps every rule of
// binary_rules.py, or, with the macro FAULT set to one of the names below, breaks one of them.

#define SOUND 0
#define IMPORT 1
#define DATA 2
#define BSS 3
#define THREAD_DATA 4
#define EXTRA_EXPORT 5
#define STRAY_KERNEL 6
#define NO_KERNEL 7
#define BYTE_SHUFFLE 8
#define POPULATION_COUNT 9
#define WIDE_VECTOR 10
#define STORED_WORD 11
#define SYSTEM_CALL 12
#define START_UP 13
#define STRAY_TABLE 14

#if FAULT == STRAY_KERNEL || FAULT == NO_KERNEL
#define KERNEL __attribute__((noinline))
#else
#define KERNEL __attribute__((section("VEKCODE"), noinline))
#endif

#if FAULT == STRAY_TABLE
#define TABLE
#else
#define TABLE __attribute__((section("VEKDATA")))
#endif

#if FAULT == NO_KERNEL
namespace elsewhere {
#else
namespace vekch::kernels {
#endif
extern const unsigned char kDescriptorTable[3];
TABLE const unsigned char kDescriptorTable[3] = {0xEC, 0x63, 0};

KERNEL int Twice(int value) {
#if FAULT == BYTE_SHUFFLE
  asm volatile("pshufb %xmm0, %xmm0");
#elif FAULT == POPULATION_COUNT
  asm volatile("popcnt %0, %0" : "+r"(value));
#elif FAULT == WIDE_VECTOR
  asm volatile("vpaddb %xmm0, %xmm0, %xmm0");
#elif FAULT == STORED_WORD
  short word;
  asm volatile("pextrw $1, %%xmm0, %0" : "=m"(word));
#elif FAULT == SYSTEM_CALL
  asm volatile("syscall" ::: "rcx", "r11", "memory");
#else
  // What older processors run as a bit scan is not a breach.
  asm volatile("rep bsf %0, %0" : "+r"(value));
#endif
  return 2 * value + kDescriptorTable[value & 1];
}
}  // namespace

#if FAULT == DATA
int state = 1;
#elif FAULT == BSS
int state;
#elif FAULT == THREAD_DATA
__thread int state __attribute__((tls_model("initial-exec"))) = 1;
#else
static constexpr int state = 1;
#endif

extern "C" {

#if FAULT == IMPORT && defined(_WIN32)
__declspec(dllimport) unsigned long __stdcall GetTickCount();
#elif FAULT == IMPORT
void* malloc(unsigned long);
#endif

__attribute__((visibility("default"))) int Fourth(int value) {
#if FAULT == DATA || FAULT == BSS || FAULT == THREAD_DATA
  state = value;
#endif
#if FAULT == IMPORT && defined(_WIN32)
  value += static_cast<int>(GetTickCount());
#elif FAULT == IMPORT
  value += malloc(1) != nullptr;
#endif
#if FAULT == NO_KERNEL
  return elsewhere::Twice(value) + state;
#else
  return vekch::kernels::Twice(value) + state;
#endif
}

#if FAULT == EXTRA_EXPORT
__attribute__((visibility("default"))) int Seventh(int value) { return value; }
#endif

#ifdef _WIN32
int __stdcall DllMainCRTStartup(void*, unsigned long reason, void*) {
#if FAULT == START_UP
  return reason != 17;
#else
  (void)reason;
  return 1;
#endif
}
#elif FAULT == START_UP
__attribute__((constructor)) static void AtLoading() { asm volatile("nop"); }
#endif

}  // extern "C"
