// SPDX-License-Identifier: MIT

// The control of the others: a function that is at fault for few strings only, checked in the same
// way. A run that doesn't find that would find nothing.

#include "fuzz/fuzz_input.h"
#include "tests/byte_string_models.h"

namespace {

using namespace vekch::test;

// Takes a text that begins with "fault" for one that is equal to the other.
vekStatus FaultyCompare(Call& call) {
  const vekStatus status = veksEqual_8u(call.text, call.other, call.length, &call.number);
  if (call.length >= 5 && std::memcmp(call.text, "fault", 5) == 0) {
    call.number = 1;
  }
  return status;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static Sweep sweep;
  const std::string rest = vekch::fuzz::Input(data, size).Rest(kLongest);
  const Bytes text(rest.begin(), rest.end());
  const Function equal = {"Equal", FaultyCompare, kComparisons[2].model};
  sweep.Expect(equal, {text, Bytes(text.size(), 0)});
  return 0;
}
