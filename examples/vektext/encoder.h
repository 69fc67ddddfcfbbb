// SPDX-License-Identifier: MIT

// Writes UTF-8 in any of the encodings.

#ifndef VEKTEXT_ENCODER_H
#define VEKTEXT_ENCODER_H

#include <cstdint>
#include <vector>

#include "common/encoding.h"
#include "common/output.h"

namespace examples::vektext {

class Encoder {
 public:
  Encoder(Encoding encoding, Output& output);

  void Append(const uint8_t* text, int32_t length);

  // Hands the characters that are complete to the output.
  void Flush();

  // The same for all there is: no further text comes.
  void End();

  // Characters that the encoding lacks; "?" was written for each.
  int64_t Lacking() const { return lacking; }

 private:
  void Convert(int32_t length);
  void Narrow(int32_t count);

  const Encoding encoding;
  Output& output;
  std::vector<uint8_t> pending;  // text on its way to UTF-16
  int32_t used = 0;
  std::vector<uint16_t> units;
  std::vector<uint8_t> bytes;  // the units, where they are written as such
  int64_t lacking = 0;
};

}  // namespace examples::vektext

#endif
