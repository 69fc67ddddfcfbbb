// SPDX-License-Identifier: MIT

// vektext: a filter that changes text on its way from standard input to standard output. It shows
// the library's toolkit on streams: conversions, trimming, splitting, case mapping and hashes are
// the library's; what is done here is to feed it streams of any length in buffers of bounded size,
// so that no character and no line is cut apart between two of them.
//
//   options  the command line
//   decoder  standard input as UTF-8
//   editor   what happens to lines and letters
//   encoder  UTF-8 as it is to be written
//
// What any such program needs stands in the folder common: reading chunks of whole lines in bounded
// memory, output, command lines, and what differs between the systems.

#include "common/platform.h"
#include "common/program.h"
#include "decoder.h"
#include "editor.h"
#include "encoder.h"
#include "options.h"

namespace examples::vektext {
namespace {

constexpr uint8_t kMark[] = {0xEF, 0xBB, 0xBF};  // U+FEFF, encoded like any other character

int Filter(const Options& options, Output& output) {
  File file;
  std::string fault;
  if (!file.Open("-", kStandardOutput, &fault)) {
    output.Complain("standard input", fault);
    return kTrouble;
  }
  Decoder decoder(file, options.from, options.marks);
  const bool byLine = options.ActsOnLines();
  Input input(byLine ? Input::Lines::kWhole : Input::Lines::kPieces, 0);
  input.Begin(decoder);
  Encoder encoder(options.to, output);
  if (options.marks && options.hash == nullptr) {
    encoder.Append(kMark, sizeof kMark);
  }
  Editor editor(options, encoder, output);
  Chunk chunk;
  while (output.Error() == 0 && input.Next(&chunk)) {
    editor.Edit(chunk);
    encoder.Flush();
    output.FlushToTerminal();
  }
  encoder.End();
  if (output.Error() == 0 && !input.Fault().empty()) {
    const std::string place = byLine ? "line " + std::to_string(editor.Lines() + 1) + ": " : "";
    output.Complain("standard input", place + input.Fault());
    return kTrouble;
  }
  return 0;
}

int Work(const std::vector<std::string>& arguments) {
  using Kind = CommandLine<Options>::Kind;
  const CommandLine<Options> commandLine = ParseCommandLine(arguments);
  Output output("vektext");
  switch (commandLine.kind) {
    case Kind::kHelp:
      output.Append(commandLine.text);
      return Finish(output, 0);
    case Kind::kFault:
      output.Complain(commandLine.text);
      return kTrouble;
    case Kind::kWork:
      break;
  }
  return Finish(output, Filter(commandLine.options, output));
}

}  // namespace
}  // namespace examples::vektext

namespace examples {

int Run(const std::vector<std::string>& arguments) {
  return RunWork("vektext", arguments, vektext::Work);
}

}  // namespace examples
