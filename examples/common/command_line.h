// SPDX-License-Identifier: MIT

// Command lines by a table of options, from which the help texts are made as well.
//
// Options and other arguments may be mixed; "--" ends the options. Every program has -h, which
// prints the table, and --help, which explains more.

#ifndef EXAMPLES_COMMON_COMMAND_LINE_H
#define EXAMPLES_COMMON_COMMAND_LINE_H

#include <string>
#include <vector>

namespace examples {

enum class Value { kNone, kRequired, kOptional };

struct OptionInfo {
  int id;
  char letter;       // 0: none
  const char* name;  // empty: none
  Value value;
  const char* valueName;
  const char* summary;
  const char* detail;  // further lines of the long help
};

// What a program tells of itself. The texts end with a newline.
struct Manual {
  const char* program;
  const char* usage;
  const char* introduction;
  std::vector<OptionInfo> options;
  const char* explanation;
};

struct GivenOption {
  int id;
  std::string value;
};

// What was given, in its order, up to the first fault or request for help.
struct Arguments {
  std::vector<GivenOption> options;
  std::vector<std::string> operands;
  std::string help;   // what to print, where it was asked for
  std::string fault;  // what is wrong, if something is
};

Arguments ParseArguments(const Manual& manual, const std::vector<std::string>& arguments);

// What the command line of a program comes to. `text` is help for standard output or, for a fault,
// a message for standard error.
template <typename Options>
struct CommandLine {
  enum class Kind { kWork, kHelp, kFault };
  Kind kind;
  Options options;
  std::string text;
};

// The message for a fault of the command line.
std::string UsageFault(const Manual& manual, const std::string& fault);

}  // namespace examples

#endif
