// SPDX-License-Identifier: MIT

// Command lines by a table: an option is one row, which holds its names, its help and what it
// changes. The help text, the manual page and the completion of command interpreters are made from
// the same rows.
//
// Options and other arguments may be mixed; "--" ends the options. Letters may share an argument,
// and a long name may be shortened as far as it stays unambiguous.

#ifndef EXAMPLES_COMMON_COMMAND_LINE_H
#define EXAMPLES_COMMON_COMMAND_LINE_H

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace examples {

enum class Value { kNone, kRequired, kOptional };

// What the value of an option is, for completion.
enum class Completes { kNothing, kFile, kFolder };

// The letter of a row whose option is a number: -5.
constexpr char kNumberLetter = '#';

struct OptionInfo {
  char letter;        // 0: none
  const char* names;  // long ones with blanks between, the first of them shown; empty: none
  Value value;
  const char* valueName;  // "auto|always|never" where only these words are allowed
  const char* help;       // the first line is the summary; a row of nothing else is a heading
  Completes completes = Completes::kNothing;
};

template <typename Settings>
struct Option {
  OptionInfo info;
  // Changes the settings; a value that can't be taken goes into their `fault`.
  void (*apply)(Settings& settings, const std::string& value);
};

// What a program says of itself. The texts end with a newline.
struct Manual {
  const char* program;
  const char* purpose;  // a few words
  const char* synopsis;
  const char* introduction;
  std::vector<std::pair<const char*, const char*>> sections;  // after the options: title, text
};

// Hands every option given to `apply`, row and value, until that returns false. Returns the fault
// of an option that isn't known or lacks its value, else nothing.
std::string ParseArguments(const std::vector<OptionInfo>& rows,
                           const std::vector<std::string>& arguments,
                           const std::function<bool(size_t, const std::string&)>& apply,
                           std::vector<std::string>* operands);

std::string HelpText(const Manual& manual, const std::vector<OptionInfo>& rows);
std::string ManualPage(const Manual& manual, const std::vector<OptionInfo>& rows);
std::string BashCompletion(const Manual& manual, const std::vector<OptionInfo>& rows);
std::string VersionText(const Manual& manual);

// The message for a fault of the command line.
std::string UsageFault(const Manual& manual, const std::string& fault);

// A number without a sign; false if the value is none. What doesn't fit is the greatest that does.
bool ReadNumber(const std::string& value, int64_t* number);

// What settings begin with: what any program may be asked for.
struct CommonSettings {
  std::string fault;
  enum class Text { kNone, kHelp, kVersion, kManualPage, kCompletion } text = Text::kNone;
};

// Rows that every program has.
template <typename Settings>
std::vector<Option<Settings>> CommonOptions() {
  using Text = CommonSettings::Text;
  return {
      {{0, "help", Value::kNone, "", "print this text"},
       [](Settings& s, const std::string&) { s.text = Text::kHelp; }},
      {{'V', "version", Value::kNone, "", "print the version"},
       [](Settings& s, const std::string&) { s.text = Text::kVersion; }},
      {{0, "generate", Value::kRequired, "man|bash-completion",
        "print the manual page, or what completes command lines"},
       [](Settings& s, const std::string& value) {
         s.text = value == "man" ? Text::kManualPage : Text::kCompletion;
         s.fault = value == "man" || value == "bash-completion"
                       ? ""
                       : "'" + value + "' is not man or bash-completion";
       }},
  };
}

// What the command line of a program comes to. `text` is for standard output or, for a fault, a
// message for standard error.
template <typename Settings>
struct CommandLine {
  enum class Kind { kWork, kText, kFault };
  Kind kind = Kind::kWork;
  Settings settings = {};
  std::string text = {};
};

// Reads a command line by the rows. `finish` looks at what was given as a whole.
template <typename Settings>
CommandLine<Settings> ReadCommandLine(const Manual& manual,
                                      const std::vector<Option<Settings>>& options,
                                      const std::vector<std::string>& arguments,
                                      void (*finish)(Settings&, std::vector<std::string>&)) {
  using Line = CommandLine<Settings>;
  Line line;
  Settings& settings = line.settings;
  std::vector<OptionInfo> rows;
  for (const Option<Settings>& option : options) {
    rows.push_back(option.info);
  }
  std::vector<std::string> operands;
  const std::string fault = ParseArguments(
      rows, arguments,
      [&](size_t row, const std::string& value) {
        options[row].apply(settings, value);
        return settings.fault.empty() && settings.text == Settings::Text::kNone;
      },
      &operands);
  settings.fault = fault.empty() ? settings.fault : fault;
  if (settings.fault.empty() && settings.text == Settings::Text::kNone) {
    finish(settings, operands);
  }
  line.kind = settings.text == Settings::Text::kNone ? Line::Kind::kWork : Line::Kind::kText;
  switch (settings.text) {
    case Settings::Text::kHelp:
      line.text = HelpText(manual, rows);
      break;
    case Settings::Text::kVersion:
      line.text = VersionText(manual);
      break;
    case Settings::Text::kManualPage:
      line.text = ManualPage(manual, rows);
      break;
    case Settings::Text::kCompletion:
      line.text = BashCompletion(manual, rows);
      break;
    case Settings::Text::kNone:
      break;
  }
  if (!settings.fault.empty()) {
    line.kind = Line::Kind::kFault;
    line.text = UsageFault(manual, settings.fault);
  }
  return line;
}

}  // namespace examples

#endif
