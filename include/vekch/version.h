// SPDX-License-Identifier: MIT
/**
 * @file
 * The version record of the loaded library.
 */
#ifndef VEKCH_VERSION_H
#define VEKCH_VERSION_H

#include <stdint.h>

#include "vekch/export.h"

/** One constant record in read-only memory, with the natural alignment of its fields. */
typedef struct LibraryVersion {
  int32_t major;
  int32_t minor;
  int32_t update;
  uint32_t build;        /**< revision number, shown in hexadecimal in the version text */
  char targetCpu[4];     /**< processor variant, padded with zero bytes: "m7" is SSE3 */
  const char* name;      /**< zero-terminated, for people */
  const char* version;   /**< zero-terminated: MAJOR.MINOR.UPDATE (r0xBUILD) */
  const char* buildDate; /**< zero-terminated */
} LibraryVersion;

VEKCH_BEGIN_DECLS

/**
 * The version record. Cannot fail; every call returns the same pointer, which stays valid as long
 * as the library is loaded. The caller neither writes nor frees it.
 *
 *     puts(vekchGetLibVersion()->name);
 */
VEKCH_API const LibraryVersion* vekchGetLibVersion(void) VEKCH_NOEXCEPT;

VEKCH_END_DECLS

#endif
