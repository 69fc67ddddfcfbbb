// SPDX-License-Identifier: MIT

// The version record: one constant, so that the pointer handed out is the same on every call.

#include "vekch/version.h"

#include <stddef.h>

namespace {

constexpr LibraryVersion kLibraryVersion = {
    2021,
    12,
    0,
    0x9b172c15U,
    {'m', '7', '\0', '\0'},
    "vekCH SSE3 (m7)",
    "2021.12.0 (r0x9b172c15)",
    "Apr 25 2024",
};

static_assert(offsetof(LibraryVersion, targetCpu) == 16 && offsetof(LibraryVersion, name) == 24 &&
                  sizeof(LibraryVersion) == 48,
              "the record crosses the boundary of the library");

}  // namespace

extern "C" const LibraryVersion* vekchGetLibVersion(void) noexcept { return &kLibraryVersion; }
