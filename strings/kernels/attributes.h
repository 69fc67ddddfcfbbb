// SPDX-License-Identifier: MIT

// Where code is placed.

#ifndef VEKCH_STRINGS_KERNELS_ATTRIBUTES_H
#define VEKCH_STRINGS_KERNELS_ATTRIBUTES_H

// Kernels have a code section of their own, so that they lie together in memory. What they are
// made of is always inlined: it would otherwise be placed in the ordinary code section.
#define VEK_KERNEL __attribute__((section("VEKCODE")))
#ifdef VEKCH_NOT_INLINED  // to count branches
#define VEK_INLINE inline
#else
#define VEK_INLINE inline __attribute__((always_inline))
#endif

#endif
