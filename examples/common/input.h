// SPDX-License-Identifier: MIT

// Reads a source, such as a file, as a sequence of chunks in bounded memory.
//
// A chunk ends where a line ends, so that searching it finds all that searching the source would.
// Lines that don't fit the buffer are met in two ways:
//
//   whole   the buffer grows until it holds the line; a line beyond kLongestLine is a fault
//   pieces  the line comes as several chunks, each beginning with the last bytes of the one
//           before, so that no occurrence is lost between them
//
// Whole lines are for lines that have to be shown or changed as such. Where binary files are only
// searched, they may come in pieces from their first zero byte on: images of disks may lack
// newlines altogether.

#ifndef EXAMPLES_COMMON_INPUT_H
#define EXAMPLES_COMMON_INPUT_H

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

namespace examples {

// Where bytes come from.
class Source {
 public:
  virtual ~Source() = default;

  // Bytes read, 0 at the end, or -1 with the reason in `fault`.
  virtual int64_t Read(uint8_t* buffer, size_t size, std::string* fault) = 0;
};

class File : public Source {
 public:
  File() = default;
  ~File() override;
  File(const File&) = delete;
  File& operator=(const File&) = delete;

  // Goes over to another file; "-" is standard input. `output` is the descriptor that must not be
  // the same file, or -1. After false, `fault` says why.
  bool Open(const std::string& name, int output, std::string* fault);
  int64_t Read(uint8_t* buffer, size_t size, std::string* fault) override;

  // Its descriptor.
  int Descriptor() const { return file; }

 private:
  void CloseFile();

  int file = -1;
};

// At least one byte, which may be changed where pieces don't overlap.
struct Chunk {
  uint8_t* text;
  int32_t length;
  int64_t offset;  // of its first byte in the source
  bool endsLine;   // false for all but the last piece of a line
};

class Input {
 public:
  enum class Lines {
    kWhole,
    kWholeReportBinary,  // and IsBinary is known
    kWholeUnlessBinary,  // and IsBinary is known
    kPieces
  };

  // `overlap`: how many bytes two pieces of a line share. `lineEnd` ends a line.
  Input(Lines lines, int32_t overlap, uint8_t lineEnd);

  // Goes over to another source, which must last as long as it is read.
  void Begin(Source& source);

  // Looks at the first bytes before the first chunk is asked for: up to `count` of them.
  std::string Peek(int32_t count);

  // What Peek has read of the source, and the rest of the source.
  Source& Rest(std::string* read);

  // The next chunk, valid until the next call; false at the end or after a fault.
  bool Next(Chunk* chunk);

  // Whether a zero byte was seen, which is looked for only where it makes a difference.
  bool IsBinary() const { return binary; }

  // Why the source was not read to its end; empty if it was.
  const std::string& Fault() const { return fault; }

 private:
  struct Free {
    void operator()(uint8_t* memory) const { std::free(memory); }
  };

  bool Fail(const std::string& reason);
  bool Grow();
  bool ReadMore();
  bool HandOut(Chunk* chunk, int32_t length, bool endsLine, int32_t kept);

  const Lines lines;
  const int32_t overlap;
  const uint8_t lineEnd;
  std::unique_ptr<uint8_t, Free> buffer;
  int32_t capacity = 0;
  int32_t used = 0;       // bytes in the buffer
  int32_t handedOut = 0;  // of them, those at the front that are done with
  int64_t offset = 0;     // of the buffer's first byte in the source
  Source* source = nullptr;
  bool ended = false;
  bool binary = false;
  std::string fault;
};

}  // namespace examples

#endif
