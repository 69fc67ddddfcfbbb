// SPDX-License-Identifier: MIT
#include "tests/guarded_buffer.h"

#include <cstdlib>
#include <cstring>

#ifdef _WIN32
#include <windows.h>
#else
#include <sys/mman.h>
#endif

namespace vekch::test {
namespace {

constexpr size_t kPage = 4096;

#ifdef _WIN32
uint8_t* MapWithGuards(size_t size) {
  auto* all = static_cast<uint8_t*>(
      VirtualAlloc(nullptr, size + 2 * kPage, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
  DWORD old = 0;
  const bool mapped = all != nullptr && VirtualProtect(all, kPage, PAGE_NOACCESS, &old) != 0 &&
                      VirtualProtect(all + kPage + size, kPage, PAGE_NOACCESS, &old) != 0;
  return mapped ? all + kPage : nullptr;
}

void Unmap(uint8_t* begin, size_t /*size*/) { VirtualFree(begin - kPage, 0, MEM_RELEASE); }
#else
uint8_t* MapWithGuards(size_t size) {
  void* all = mmap(nullptr, size + 2 * kPage, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (all == MAP_FAILED) {
    return nullptr;
  }
  auto* begin = static_cast<uint8_t*>(all) + kPage;
  return mprotect(begin, size, PROT_READ | PROT_WRITE) == 0 ? begin : nullptr;
}

void Unmap(uint8_t* begin, size_t size) { munmap(begin - kPage, size + 2 * kPage); }
#endif

}  // namespace

GuardedBuffer::GuardedBuffer(size_t capacity)
    : begin_(nullptr), size_((capacity + kPage - 1) / kPage * kPage) {
  begin_ = MapWithGuards(size_);
  if (begin_ == nullptr) {
    std::abort();  // a test that can't have its guards must not run without them
  }
  std::memset(begin_, 0xA5, size_);
}

GuardedBuffer::~GuardedBuffer() { Unmap(begin_, size_); }

}  // namespace vekch::test
