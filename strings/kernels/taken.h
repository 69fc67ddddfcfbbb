// SPDX-License-Identifier: MIT

// Which of several ways was taken, since a way that is lost changes no answer. A test has the
// sources compiled a second time with VEKCH_NOTES_TAKEN, and counts; in the library a note is
// nothing.

#ifndef VEKCH_STRINGS_KERNELS_TAKEN_H
#define VEKCH_STRINGS_KERNELS_TAKEN_H

#ifdef VEKCH_NOTES_TAKEN
namespace vekch {
void NoteTaken(const char* way);
}
#define VEKCH_TAKEN(way) ::vekch::NoteTaken(way)
#else
#define VEKCH_TAKEN(way) static_cast<void>(0)
#endif

#endif
