// SPDX-License-Identifier: MIT

// vektext: a filter that changes text on its way from files to standard output. It shows the
// library's toolkit on streams: conversions, trimming, joining, case mapping, replacing and hashes
// are the library's; what is done here is to feed it streams of any length in buffers of bounded
// size, so that no character and no line is cut apart between two of them.
//
//   options  the command line
//   editor   what happens to lines and letters
//   encoder  UTF-8 as it is to be written
//
// What any such program needs is in the folder common: reading chunks of whole lines in bounded
// memory, turning them into UTF-8, output, command lines, and what differs between the systems.

#include "common/decoder.h"
#include "common/platform.h"
#include "common/program.h"
#include "editor.h"
#include "encoder.h"
#include "options.h"

namespace examples::vektext {
namespace {

constexpr uint8_t kMark[] = {0xEF, 0xBB, 0xBF};  // U+FEFF, encoded like any other character

class Filter {
 public:
  Filter(const Options& filterOptions, Output& textOutput)
      : options(filterOptions),
        output(textOutput),
        watched(IsTerminal(kStandardOutput)),
        encoder(options.to, output),
        editor(options, encoder, output) {}

  // The exit status.
  int Run() {
    if (options.writesMark && options.hash == nullptr) {
      encoder.Append(kMark, sizeof kMark);
    }
    for (const std::string& name : options.files) {
      if (!output.Failed()) {
        editor.BeginFile();
        FilterFile(name);
      }
    }
    encoder.End();
    if (encoder.Lacking() > 0) {
      Complain(std::to_string(encoder.Lacking()) + " characters are not in Latin-1");
    }
    return trouble ? kTrouble : 0;
  }

 private:
  void FilterFile(const std::string& name) {
    File file;
    std::string fault;
    const std::string label = name == "-" ? "standard input" : name;
    if (!file.Open(name, kStandardOutput, &fault)) {
      Complain(label + ": " + fault);
      return;
    }
    if (IsTerminal(file.Descriptor()) && name == "-") {
      output.Complain("reading what you type; end it by " +
                      std::string(EndsOnBrokenPipe() ? "Ctrl-Z and Enter" : "Ctrl-D"));
    }
    Decoder decoder(file, options.from, options.from != Encoding::kLatin1);
    const bool byLine = options.ActsOnLines();
    Input input(byLine ? Input::Lines::kWhole : Input::Lines::kPieces, 0, '\n');
    input.Begin(decoder);
    Chunk chunk;
    while (!output.Failed() && input.Next(&chunk)) {
      editor.Edit(chunk);
      encoder.Flush();
      if (watched) {
        output.Flush();
      }
    }
    if (!output.Failed() && !input.Fault().empty()) {
      encoder.Flush();
      const std::string position =
          byLine ? "line " + std::to_string(editor.Lines() + 1) + ": " : "";
      Complain(label + ": " + position + input.Fault());
    }
  }

  void Complain(const std::string& message) {
    output.Complain(message);
    trouble = true;
  }

  const Options& options;
  Output& output;
  const bool watched;  // somebody sees what is written
  Encoder encoder;
  Editor editor;
  bool trouble = false;
};

int Work(const std::vector<std::string>& arguments) {
  using Kind = CommandLine<Options>::Kind;
  const CommandLine<Options> commandLine = ParseCommandLine(arguments);
  StandardStreams streams("vektext");
  Output output("vektext", streams);
  switch (commandLine.kind) {
    case Kind::kText:
      output.Append(commandLine.text);
      return Finish(streams, output, 0);
    case Kind::kFault:
      output.Complain(commandLine.text);
      return kTrouble;
    case Kind::kWork:
      break;
  }
  return Finish(streams, output, Filter(commandLine.settings, output).Run());
}

}  // namespace
}  // namespace examples::vektext

namespace examples {

int Run(const std::vector<std::string>& arguments) {
  return RunWork("vektext", arguments, vektext::Work);
}

}  // namespace examples
