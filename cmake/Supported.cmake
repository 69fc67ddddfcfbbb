# SPDX-License-Identifier: MIT

# Says plainly what the library can't be built for, before a compiler does it in a hundred lines.
include(CheckCXXSourceCompiles)

if(APPLE)
  message(FATAL_ERROR "vekch is built for Linux and Windows; its linker options are unknown here.")
endif()
set(CMAKE_REQUIRED_FLAGS -msse3)
check_cxx_source_compiles("
#if !defined(__GNUC__) || !defined(__x86_64__) || !defined(__LP64__) && !defined(_WIN64)
#error not supported
#endif
#include <pmmintrin.h>
int main() {}
" VEKCH_SUPPORTED)
unset(CMAKE_REQUIRED_FLAGS)
if(NOT VEKCH_SUPPORTED)
  unset(VEKCH_SUPPORTED CACHE)  # so that the answer to other flags is not this one
  message(FATAL_ERROR
    "vekch is for 64-bit x86 processors with SSE3 and is compiled by g++ or clang++; "
    "${CMAKE_CXX_COMPILER_ID} (${CMAKE_CXX_COMPILER} ${CMAKE_CXX_FLAGS}) does not compile for them.")
endif()
