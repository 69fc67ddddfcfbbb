// SPDX-License-Identifier: MIT
/* atruntime LIBRARY: takes the library in while running, and calls a function of it by its name. */
#include <stdint.h>
#include <stdio.h>
#include <string.h>
#include <vekch/vekch.h>

#ifdef _WIN32
#include <windows.h>
typedef HMODULE Library;
static Library Open(const char* path) { return LoadLibraryA(path); }
static void Look(Library library, const char* name, void* function) {
  const FARPROC found = GetProcAddress(library, name);
  memcpy(function, &found, sizeof found);
}
static void Close(Library library) { FreeLibrary(library); }
#else
#include <dlfcn.h>
typedef void* Library;
static Library Open(const char* path) { return dlopen(path, RTLD_NOW); }
static void Look(Library library, const char* name, void* function) {
  void* const found = dlsym(library, name);
  memcpy(function, &found, sizeof found);
}
static void Close(Library library) { dlclose(library); }
#endif

typedef const LibraryVersion* (*VersionFunction)(void);
typedef vekStatus (*FindFunction)(const uint8_t*, int32_t, const uint8_t*, int32_t, int32_t*);

int main(int argc, char** argv) {
  VersionFunction version = NULL;
  FindFunction find = NULL;
  int32_t index = -1;
  const Library library = argc == 2 ? Open(argv[1]) : NULL;
  if (library == NULL) {
    puts("usage: atruntime LIBRARY (or it can't be loaded)");
    return 2;
  }
  Look(library, "vekchGetLibVersion", &version);
  Look(library, "veksFind_8u", &find);
  if (version == NULL || find == NULL) {
    puts("another library");
    return 1;
  }
  find((const uint8_t*)"haystack", 8, (const uint8_t*)"stack", 5, &index);
  printf("%s: found at %d\n", version()->targetCpu, (int)index);
  Close(library);
  return 0;
}
