// SPDX-License-Identifier: MIT

// A library with one small function and one small kernel that keeps every rule of
// tools/binary_rules.py, or, with one of the macros FAULT_... defined, breaks one of them.

#if defined(FAULT_STRAY_KERNEL) || defined(FAULT_NO_KERNEL)
#define KERNEL __attribute__((noinline))
#else
#define KERNEL __attribute__((section("VEKCODE"), noinline))
#endif

#if defined(FAULT_STRAY_TABLE)
#define TABLE
#else
#define TABLE __attribute__((section("VEKDATA")))
#endif

#if defined(FAULT_NO_KERNEL)
namespace elsewhere {
#else
namespace vekch::kernels {
#endif
extern const unsigned char kDescriptorTable[3];
TABLE const unsigned char kDescriptorTable[3] = {0xEC, 0x63, 0};

KERNEL int Twice(int value) {
#if defined(FAULT_BYTE_SHUFFLE)
  asm volatile("pshufb %xmm0, %xmm0");
#elif defined(FAULT_POPULATION_COUNT)
  asm volatile("popcnt %0, %0" : "+r"(value));
#elif defined(FAULT_WIDE_VECTOR)
  asm volatile("vpaddb %xmm0, %xmm0, %xmm0");
#elif defined(FAULT_STORED_WORD)
  short word;
  asm volatile("pextrw $1, %%xmm0, %0" : "=m"(word));
#elif defined(FAULT_SYSTEM_CALL)
  asm volatile("syscall" ::: "rcx", "r11", "memory");
#else
  // What older processors run as a bit scan is not a breach.
  asm volatile("rep bsf %0, %0" : "+r"(value));
#endif
  return 2 * value + kDescriptorTable[value & 1];
}
}  // namespace

#if defined(FAULT_DATA)
int state = 1;
#elif defined(FAULT_BSS)
int state;
#elif defined(FAULT_THREAD_DATA)
__thread int state __attribute__((tls_model("initial-exec"))) = 1;
#else
static constexpr int state = 1;
#endif

extern "C" {

#if defined(FAULT_IMPORT) && defined(_WIN32)
__declspec(dllimport) unsigned long __stdcall GetTickCount();
#elif defined(FAULT_IMPORT)
void* malloc(unsigned long);
#endif

__attribute__((visibility("default"))) int Fourth(int value) {
#if defined(FAULT_DATA) || defined(FAULT_BSS) || defined(FAULT_THREAD_DATA)
  state = value;
#endif
#if defined(FAULT_IMPORT) && defined(_WIN32)
  value += static_cast<int>(GetTickCount());
#elif defined(FAULT_IMPORT)
  value += malloc(1) != nullptr;
#endif
#if defined(FAULT_NO_KERNEL)
  return elsewhere::Twice(value) + state;
#else
  return vekch::kernels::Twice(value) + state;
#endif
}

#if defined(FAULT_EXTRA_EXPORT)
__attribute__((visibility("default"))) int Seventh(int value) { return value; }
#endif

#ifdef _WIN32
int __stdcall DllMainCRTStartup(void*, unsigned long reason, void*) {
#if defined(FAULT_START_UP)
  return reason != 17;
#else
  (void)reason;
  return 1;
#endif
}
#elif defined(FAULT_START_UP)
__attribute__((constructor)) static void AtLoading() { asm volatile("nop"); }
#endif

}  // extern "C"
