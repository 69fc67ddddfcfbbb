// Kernels of the case mapping.

#ifndef VEKCH_STRINGS_KERNELS_CASE_KERNELS_H
#define VEKCH_STRINGS_KERNELS_CASE_KERNELS_H

#include <stdint.h>

namespace vekch::kernels {

// Copy `length` bytes, at least one, with the letters of the one case turned into the other. The
// destination may be the source itself; other overlaps are not supported.
void LowercaseLatin(const uint8_t* source, uint8_t* destination, int32_t length);
void UppercaseLatin(const uint8_t* source, uint8_t* destination, int32_t length);

}  // namespace vekch::kernels

#endif
