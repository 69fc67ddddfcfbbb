// SPDX-License-Identifier: MIT

// UTF-16 is made of many lines at a time: text gathers in a buffer, and what could be the start of
// a character stays in it when the rest is converted.

#include "encoder.h"

#include <algorithm>
#include <cstring>

#include "vekch/vekch.h"

namespace examples::vektext {
namespace {

constexpr int32_t kCapacity = 32 << 10;

// Bytes of the sequence that the lead byte starts, up to six as the library counts them.
int32_t SequenceLength(uint8_t lead) {
  constexpr uint8_t kLeads[] = {0xC0, 0xE0, 0xF0, 0xF8, 0xFC, 0xFE};
  const auto* above = std::upper_bound(std::begin(kLeads), std::end(kLeads), lead);
  return above == std::end(kLeads) ? 1 : static_cast<int32_t>(above - kLeads) + 1;
}

// Length of the text without a sequence at its end that further bytes could complete.
int32_t CompleteLength(const uint8_t* text, int32_t length) {
  constexpr int32_t kMostBytesShort = 5;
  for (int32_t tail = 1; tail <= std::min(length, kMostBytesShort); ++tail) {
    const uint8_t byte = text[length - tail];
    if ((byte & 0xC0) != 0x80) {
      return SequenceLength(byte) > tail ? length - tail : length;
    }
  }
  return length;
}

void SwapBytes(uint16_t* units, int32_t count) {
  std::transform(units, units + count, units,
                 [](uint16_t unit) { return static_cast<uint16_t>(unit << 8 | unit >> 8); });
}

}  // namespace

Encoder::Encoder(Encoding textEncoding, Output& textOutput)
    : encoding(textEncoding), output(textOutput) {
  if (encoding != Encoding::kUtf8) {
    pending.resize(kCapacity);
    units.resize(kCapacity);  // never more units than bytes
    bytes.resize(encoding == Encoding::kLatin1 ? kCapacity : 0);
  }
}

void Encoder::Append(const uint8_t* text, int32_t length) {
  if (encoding == Encoding::kUtf8) {
    output.Append(text, {0, length});
    return;
  }
  for (int32_t at = 0; at < length;) {
    const int32_t count = std::min(length - at, kCapacity - used);
    std::memcpy(pending.data() + used, text + at, static_cast<size_t>(count));
    used += count;
    at += count;
    if (used == kCapacity) {
      Flush();
    }
  }
}

void Encoder::Flush() { Convert(CompleteLength(pending.data(), used)); }

void Encoder::End() { Convert(used); }

void Encoder::Convert(int32_t length) {
  if (length == 0) {
    return;  // and of UTF-8 there is never any here
  }
  int32_t consumed = length;
  int32_t written = kCapacity;
  veksConvertUTF_8u16u(pending.data(), &consumed, units.data(), &written, 0);
  // The library's own swapping leaves out surrogate pairs.
  if (encoding == Encoding::kUtf16Be) {
    SwapBytes(units.data(), written);
  }
  if (encoding == Encoding::kLatin1) {
    Narrow(written);
  } else {
    output.Append(reinterpret_cast<const uint8_t*>(units.data()), {0, 2 * written});
  }
  used -= consumed;
  std::memmove(pending.data(), pending.data() + consumed, static_cast<size_t>(used));
}

// Latin-1 is the first 256 code points. Of a surrogate pair the second half writes nothing.
void Encoder::Narrow(int32_t count) {
  int32_t length = 0;
  for (int32_t i = 0; i < count; ++i) {
    const uint16_t unit = units[static_cast<size_t>(i)];
    const bool fits = unit < 0x100;
    if (!fits && (unit & 0xFC00) == 0xDC00 && i > 0 &&
        (units[static_cast<size_t>(i - 1)] & 0xFC00) == 0xD800) {
      continue;
    }
    bytes[static_cast<size_t>(length++)] = fits ? static_cast<uint8_t>(unit) : uint8_t{'?'};
    lacking += fits ? 0 : 1;
  }
  output.Append(bytes.data(), {0, length});
}

}  // namespace examples::vektext
