// SPDX-License-Identifier: MIT

// Where the tables of a fast program lie, one after the other.

#ifndef VEKCH_REGEXP_FAST_TABLE_ROOM_H
#define VEKCH_REGEXP_FAST_TABLE_ROOM_H

#include <stdint.h>

#include "strings/kernels/block.h"

namespace vekch::regexp {

class TableRoom {
 public:
  TableRoom(uint8_t* first, const uint8_t* last) : begin(first), end(last) {}

  // What has not been taken.
  const uint8_t* Begin() const { return begin; }

  // So many bytes, or a little more, that are all zero; null if there is no room for them.
  uint8_t* Take(int64_t bytes) {
    const int64_t rounded = (bytes + kernels::kBlock - 1) & -int64_t{kernels::kBlock};
    if (rounded > end - begin) {
      return nullptr;
    }
    uint8_t* const taken = begin;
    begin += rounded;
    for (uint8_t* at = taken; at < begin; at += kernels::kBlock) {
      kernels::StoreAny(at, kernels::ZeroBlock());
    }
    return taken;
  }

  template <class Table>
  Table* Take(int64_t count = 1) {
    return reinterpret_cast<Table*>(Take(count * static_cast<int64_t>(sizeof(Table))));
  }

 private:
  uint8_t* begin;
  const uint8_t* end;
};

}  // namespace vekch::regexp

#endif
