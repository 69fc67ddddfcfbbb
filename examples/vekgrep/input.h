// Reads a file, or standard input, as a sequence of chunks in bounded memory.
//
// A chunk ends where a line ends, so that searching it finds all that searching the file would.
// Lines that don't fit the buffer are met in two ways:
//
//   whole   the buffer grows until it holds the line; a line beyond kLongestLine is a fault
//   pieces  the line comes as several chunks, each beginning with the last bytes of the one
//           before, so that no occurrence is lost between them
//
// Whole lines are for lines that may have to be shown. In a binary file they are not, so it comes
// in pieces from its first zero byte on: images of disks may lack newlines altogether.

#ifndef VEKGREP_INPUT_H
#define VEKGREP_INPUT_H

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

namespace vekgrep {

// At least one byte.
struct Chunk {
  const uint8_t* text;
  int32_t length;
  bool endsLine;  // false for all but the last piece of a line
};

class Input {
 public:
  enum class Lines { kWhole, kPieces };

  // `overlap`: how many bytes two pieces of a line share, at least 1.
  Input(Lines lines, int32_t overlap);
  ~Input();
  Input(const Input&) = delete;
  Input& operator=(const Input&) = delete;

  // Begins with another file; "-" is standard input. `output` is the descriptor that must not be
  // the same file, or -1. After false, Fault() tells why.
  bool Open(const std::string& name, int output);

  // The next chunk, valid until the next call; false at the end or after a fault.
  bool Next(Chunk* chunk);

  // Whether a zero byte was seen, which is looked for only where whole lines are wanted.
  bool IsBinary() const { return binary; }

  // Why the file was not read to its end; empty if it was.
  const std::string& Fault() const { return fault; }

 private:
  struct Free {
    void operator()(uint8_t* memory) const { std::free(memory); }
  };

  bool Fail(const std::string& reason);
  void CloseFile();
  bool Grow();
  bool ReadMore();
  bool HandOut(Chunk* chunk, int32_t length, bool endsLine, int32_t kept);

  const Lines lines;
  const int32_t overlap;
  std::unique_ptr<uint8_t, Free> buffer;
  int32_t capacity = 0;
  int32_t used = 0;       // bytes in the buffer
  int32_t handedOut = 0;  // of them, those at the front that are done with
  int file = -1;
  bool ended = false;
  bool binary = false;
  std::string fault;
};

}  // namespace vekgrep

#endif
