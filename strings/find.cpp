// SPDX-License-Identifier: MIT

// The search family: argument checks and the results fixed for empty inputs, before the kernels.

#include "vekch/find.h"

#include "frame/checks.h"
#include "strings/kernels/byte_set.h"
#include "strings/kernels/find_end.h"
#include "strings/kernels/find_kernels.h"

namespace vekch {
namespace {

constexpr int32_t kNotFound = -1;

// With the scan in one function, in the kernels' section: a search of a short string costs no more
// than the call itself.
template <kernels::Direction kDirection>
VEK_INLINE vekStatus CheckedFindByte(const uint8_t* haystack, int32_t length, uint8_t value,
                                     int32_t* index) {
  if (AnyNull(haystack, index)) {
    return StatusNullPointer;
  }
  if (length <= 0) {
    if (length < 0) {
      return StatusLengthError;
    }
    *index = kNotFound;
    return StatusNoError;
  }
  *index =
      kernels::ScanFor<kDirection>(kernels::EqualsByte{haystack, kernels::Splat(value)}, length);
  return StatusNoError;
}

// `pattern` is a needle or a set; `canOccur` says whether a search makes sense at these lengths.
template <class CanOccur, class Kernel>
inline vekStatus CheckedFind(const uint8_t* haystack, int32_t length, const uint8_t* pattern,
                             int32_t patternLength, int32_t* index, CanOccur canOccur,
                             Kernel kernel) {
  if (AnyNull(haystack, pattern, index)) {
    return StatusNullPointer;
  }
  if (AnyNegative(length, patternLength)) {
    return StatusLengthError;
  }
  *index = canOccur(length, patternLength) ? kernel(haystack, length, pattern, patternLength)
                                           : kNotFound;
  return StatusNoError;
}

// An empty needle occurs nowhere.
constexpr auto kNeedleFits = [](int32_t length, int32_t needleLength) {
  return needleLength > 0 && needleLength <= length;
};

constexpr auto kNeitherEmpty = [](int32_t length, int32_t setLength) {
  return length > 0 && setLength > 0;
};

}  // namespace
}  // namespace vekch

vekStatus veksFind_8u(const uint8_t* haystack, int32_t haystackLength, const uint8_t* needle,
                      int32_t needleLength, int32_t* index) noexcept {
  return vekch::CheckedFind(haystack, haystackLength, needle, needleLength, index,
                            vekch::kNeedleFits, vekch::kernels::FindSubstring);
}

vekStatus veksFindRev_8u(const uint8_t* haystack, int32_t haystackLength, const uint8_t* needle,
                         int32_t needleLength, int32_t* index) noexcept {
  return vekch::CheckedFind(haystack, haystackLength, needle, needleLength, index,
                            vekch::kNeedleFits, vekch::kernels::FindLastSubstring);
}

VEK_KERNEL vekStatus veksFindC_8u(const uint8_t* haystack, int32_t haystackLength, uint8_t value,
                                  int32_t* index) noexcept {
  return vekch::CheckedFindByte<vekch::kernels::Direction::kForward>(haystack, haystackLength,
                                                                     value, index);
}

VEK_KERNEL vekStatus veksFindRevC_8u(const uint8_t* haystack, int32_t haystackLength, uint8_t value,
                                     int32_t* index) noexcept {
  return vekch::CheckedFindByte<vekch::kernels::Direction::kBackward>(haystack, haystackLength,
                                                                      value, index);
}

vekStatus veksFindCAny_8u(const uint8_t* haystack, int32_t haystackLength, const uint8_t* set,
                          int32_t setLength, int32_t* index) noexcept {
  return vekch::CheckedFind(haystack, haystackLength, set, setLength, index, vekch::kNeitherEmpty,
                            vekch::kernels::FindAnyOf);
}

vekStatus veksFindRevCAny_8u(const uint8_t* haystack, int32_t haystackLength, const uint8_t* set,
                             int32_t setLength, int32_t* index) noexcept {
  return vekch::CheckedFind(haystack, haystackLength, set, setLength, index, vekch::kNeitherEmpty,
                            vekch::kernels::FindLastOf);
}

vekStatus veksFind_Z_8u(const uint8_t* haystack, const uint8_t* needle, int32_t* index) noexcept {
  if (vekch::AnyNull(haystack, needle, index)) {
    return StatusNullPointer;
  }
  *index = vekch::kernels::FindInTerminated(haystack, needle);
  return StatusNoError;
}

VEK_READS_GROUPS VEK_KERNEL vekStatus veksFindC_Z_8u(const uint8_t* haystack, uint8_t value,
                                                     int32_t* index) noexcept {
  if (haystack == nullptr) {
    return StatusNullPointer;
  }
  if (value == 0) {  // a null index is a fault of the caller: it is not tested for
    *index = vekch::kernels::FindEnd(haystack, vekch::kernels::AtTerminator{});
    return StatusNoError;
  }
  if (index == nullptr) {
    return StatusNullPointer;
  }
  const int32_t found = vekch::kernels::FindEnd(
      haystack, vekch::kernels::AtTerminatorOr{vekch::kernels::Splat(value)});
  *index = haystack[found] == value ? found : vekch::kNotFound;
  return StatusNoError;
}
