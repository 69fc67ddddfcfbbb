// SPDX-License-Identifier: MIT

// Raw bytes are appended to those left from last time, and turned into text but for what the next
// bytes could still belong to: half a unit, or a high surrogate.

#include "common/decoder.h"

#include <algorithm>
#include <cstring>

#include "vekch/vekch.h"

namespace examples {
namespace {

constexpr int32_t kRawCapacity = 64 << 10;

struct Mark {
  const char* bytes;
  Encoding encoding;
};

constexpr Mark kMarks[] = {{"\xEF\xBB\xBF", Encoding::kUtf8},
                           {"\xFF\xFE", Encoding::kUtf16Le},
                           {"\xFE\xFF", Encoding::kUtf16Be}};
constexpr int32_t kLongestMark = 3;

}  // namespace

Decoder::Decoder(Source& rawSource, Encoding rawEncoding, bool obeysMark)
    : source(rawSource),
      encoding(rawEncoding),
      atMark(obeysMark),
      raw(kRawCapacity),
      text(2 * kRawCapacity) {}  // what the raw bytes come to at most

int64_t Decoder::Read(uint8_t* buffer, size_t size, std::string* why) {
  if (atMark) {
    ReadMark();
  }
  while (handedOut == textLength) {
    if (!FillText()) {
      *why = fault;
      return fault.empty() ? 0 : -1;
    }
  }
  const size_t count = std::min(size, static_cast<size_t>(textLength - handedOut));
  std::memcpy(buffer, text.data() + handedOut, count);
  handedOut += static_cast<int32_t>(count);
  return static_cast<int64_t>(count);
}

void Decoder::ReadMark() {
  while (!ended && rawLength < kLongestMark) {
    ReadRaw();
  }
  for (const Mark& mark : kMarks) {
    const auto length = static_cast<int32_t>(std::strlen(mark.bytes));
    if (rawLength >= length && std::memcmp(raw.data(), mark.bytes, std::strlen(mark.bytes)) == 0) {
      encoding = mark.encoding;
      DropRaw(length);
      break;
    }
  }
  atMark = false;
}

// Begins the text anew; false at the end. What was read before a fault is still handed out.
bool Decoder::FillText() {
  handedOut = textLength = 0;
  if (!ended && rawLength < kRawCapacity) {
    ReadRaw();
  }
  if (rawLength == 0) {
    return false;
  }
  if (encoding == Encoding::kUtf8) {
    text.swap(raw);  // either has the room
    textLength = rawLength;
    rawLength = 0;
  } else if (encoding == Encoding::kLatin1) {
    ConvertLatin1();
  } else {
    ConvertUtf16();
  }
  return true;
}

// Each byte is the unit of its value.
void Decoder::ConvertLatin1() {
  std::vector<uint16_t> units(raw.begin(), raw.begin() + rawLength);
  int32_t count = rawLength;
  textLength = static_cast<int32_t>(text.size());
  veksConvertUTF_16u8u(units.data(), &count, text.data(), &textLength, 0);
  rawLength = 0;
}

void Decoder::ConvertUtf16() {
  const auto* source16 = reinterpret_cast<const uint16_t*>(raw.data());
  const int32_t swapped = encoding == Encoding::kUtf16Be ? 1 : 0;
  int32_t units = rawLength / 2;
  if (!ended && units > 0) {
    const uint8_t upperHalf = raw[static_cast<size_t>(2 * units - 1 - swapped)];
    units -= (upperHalf & 0xFC) == 0xD8 ? 1 : 0;
  }
  textLength = static_cast<int32_t>(text.size());
  veksConvertUTF_16u8u(source16, &units, text.data(), &textLength, swapped);
  DropRaw(2 * units);
  if (ended && rawLength == 1) {
    rawLength = 0;
    if (fault.empty()) {
      fault = "half a UTF-16 unit ends the input, the byte at offset " + std::to_string(total - 1);
    }
  }
}

void Decoder::ReadRaw() {
  const auto room = static_cast<size_t>(kRawCapacity - rawLength);
  const int64_t count = source.Read(raw.data() + rawLength, room, &fault);
  ended = count <= 0;
  if (!ended) {
    rawLength += static_cast<int32_t>(count);
    total += count;
  }
}

void Decoder::DropRaw(int32_t length) {
  rawLength -= length;
  std::memmove(raw.data(), raw.data() + length, static_cast<size_t>(rawLength));
}

}  // namespace examples
