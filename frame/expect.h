// SPDX-License-Identifier: MIT

// Expectations that nothing but a fault of the library's own can fail: instrumented builds stop
// there, others take no notice of them.

#ifndef VEKCH_FRAME_EXPECT_H
#define VEKCH_FRAME_EXPECT_H

#ifdef VEKCH_CHECKED
#define VEK_EXPECT(condition) ((condition) ? static_cast<void>(0) : __builtin_trap())
#else
#define VEK_EXPECT(condition) static_cast<void>(sizeof((condition) ? 1 : 0))
#endif

#endif
