// SPDX-License-Identifier: MIT

// Turns a source of text in any of the encodings into one of UTF-8.

#ifndef EXAMPLES_COMMON_DECODER_H
#define EXAMPLES_COMMON_DECODER_H

#include <cstdint>
#include <string>
#include <vector>

#include "common/encoding.h"
#include "common/input.h"

namespace examples {

class Decoder : public Source {
 public:
  // With `obeysMark` a byte order mark at the start decides the encoding and is dropped.
  Decoder(Source& source, Encoding encoding, bool obeysMark);

  int64_t Read(uint8_t* buffer, size_t size, std::string* fault) override;

 private:
  void ReadMark();
  bool FillText();
  void ReadRaw();
  void DropRaw(int32_t length);
  void ConvertLatin1();
  void ConvertUtf16();

  Source& source;
  Encoding encoding;
  bool atMark;               // the start is still to be looked at
  std::vector<uint8_t> raw;  // as read; of UTF-16, always from a unit's start on
  int32_t rawLength = 0;
  std::vector<uint8_t> text;  // UTF-8
  int32_t textLength = 0;
  int32_t handedOut = 0;  // bytes of the text that are done with
  int64_t total = 0;      // bytes read so far
  bool ended = false;
  std::string fault;
};

}  // namespace examples

#endif
