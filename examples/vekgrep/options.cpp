// Parses the command line by a table of options, from which the help texts are made as well.
//
// Options and other arguments may be mixed; "--" ends the options. The first other argument is the
// text unless -e gave one; the rest are files.

#include "options.h"

#include <algorithm>
#include <utility>

namespace vekgrep {
namespace {

constexpr char kUsage[] = "Usage: vekgrep -F [OPTION]... TEXT [FILE]...\n";

enum class OptionId {
  kFixedText,
  kIgnoreCase,
  kInvert,
  kPattern,
  kCount,
  kFileName,
  kLineNumbers,
  kMatches,
  kColor,
  kExplain,
  kShortHelp,
  kLongHelp
};

enum class Value { kNone, kRequired, kOptional };

struct OptionInfo {
  OptionId id;
  char letter;  // 0: none
  const char* name;
  Value value;
  const char* valueName;
  const char* summary;
  const char* detail;  // further lines of the long help
};

constexpr OptionInfo kOptions[] = {
    {OptionId::kFixedText, 'F', "fixed-strings", Value::kNone, "",
     "TEXT is fixed text, of one or more lines; each is searched for", ""},
    {OptionId::kPattern, 'e', "regexp", Value::kRequired, "TEXT",
     "search for TEXT; may be given several times",
     "Of occurrences that overlap, the one that starts first counts, and of\n"
     "those that start together the longest."},
    {OptionId::kIgnoreCase, 'i', "ignore-case", Value::kNone, "",
     "capital and small letters are the same (ASCII only)", ""},
    {OptionId::kInvert, 'v', "invert-match", Value::kNone, "", "select the lines that do not match",
     ""},
    {OptionId::kCount, 'c', "count", Value::kNone, "", "print only the number of selected lines",
     "With -o lines are counted too, not occurrences."},
    {OptionId::kFileName, 'l', "files-with-matches", Value::kNone, "",
     "print only the names of files with selected lines",
     "A file is read up to its first selected line. Wins over -c and -o."},
    {OptionId::kLineNumbers, 'n', "line-number", Value::kNone, "", "put line numbers before lines",
     ""},
    {OptionId::kMatches, 'o', "only-matching", Value::kNone, "",
     "print each occurrence on a line of its own", "Together with -v nothing is printed."},
    {OptionId::kColor, 0, "color", Value::kOptional, "WHEN", "colour: auto, always or never",
     "auto, which is also the default, colours what goes to a terminal, unless\n"
     "NO_COLOR is set and not empty or TERM is \"dumb\"."},
    {OptionId::kExplain, 0, "explain", Value::kRequired, "PATTERN",
     "print what PATTERN compiles to, and search nothing",
     "One record of the program a line; for a PATTERN that does not compile,\n"
     "where it is at fault. With -i its option i is set."},
    {OptionId::kShortHelp, 'h', "", Value::kNone, "", "print this list", ""},
    {OptionId::kLongHelp, 0, "help", Value::kNone, "", "print a longer explanation", ""},
};

constexpr char kIntroduction[] =
    "Prints the lines of each FILE that contain TEXT. Without FILE, or where FILE is\n"
    "\"-\", standard input is read.\n";

constexpr char kExplanation[] =
    "A line ends at a newline; a carriage return before it belongs to the line. Empty\n"
    "TEXT is in every line. With more than one FILE, names are put before lines and\n"
    "counts.\n"
    "\n"
    "A file that holds a zero byte is binary. Instead of its lines, \"Binary file NAME\n"
    "matches\" is printed; -c and -l treat it like any other.\n"
    "\n"
    "Files of any size are searched in little memory. Only a line that may have to be\n"
    "printed is held as a whole: where one is longer than 256 MiB in a file that is not\n"
    "binary, the search of that file ends there with a message. With -c and -l lines\n"
    "may have any length.\n"
    "\n"
    "Exit status: 0 if a line was selected, 1 if none was, 2 if there was an error, also\n"
    "if lines were selected elsewhere. A file that can't be read is named on standard\n"
    "error, and the search goes on with the next.\n"
    "\n"
    "Examples:\n"
    "  vekgrep -F -n 'operator[]' *.cpp      lines with that text, with line numbers\n"
    "  vekgrep -Fic -e warning -e error log  how many lines name one of them\n"
    "  make 2>&1 | vekgrep -F -v -e -Wno-    what is left without such lines\n";

std::string OptionHead(const OptionInfo& info) {
  std::string head = "  ";
  if (info.letter != 0) {
    head += std::string("-") + info.letter + (*info.name != 0 ? ", " : "");
  } else {
    head += "    ";
  }
  if (*info.name != 0) {
    head += std::string("--") + info.name;
  }
  if (info.value != Value::kNone) {
    head += std::string(info.value == Value::kOptional ? "[=" : "=") + info.valueName +
            (info.value == Value::kOptional ? "]" : "");
  }
  return head;
}

std::string Indented(const char* lines, size_t width) {
  std::string text = std::string(width, ' ') + lines;
  for (size_t at = text.find('\n'); at != std::string::npos; at = text.find('\n', at + 1)) {
    text.insert(at + 1, width, ' ');
  }
  return text + "\n";
}

std::string HelpText(bool detailed) {
  constexpr size_t kSummaryColumn = 28;
  std::string text = std::string(kUsage) + kIntroduction + "\n";
  for (const OptionInfo& info : kOptions) {
    std::string head = OptionHead(info);
    head.resize(kSummaryColumn, ' ');
    text += head + info.summary + "\n";
    if (detailed && *info.detail != 0) {
      text += Indented(info.detail, kSummaryColumn);
    }
  }
  return detailed ? text + "\n" + kExplanation : text;
}

// A newline separates texts, as in a list read from a file.
void AddPatterns(const std::string& lines, std::vector<std::string>& patterns) {
  size_t begin = 0;
  for (;;) {
    const size_t end = std::min(lines.find('\n', begin), lines.size());
    patterns.push_back(lines.substr(begin, end - begin));
    if (end == lines.size()) {
      return;
    }
    begin = end + 1;
  }
}

class Parser {
 public:
  explicit Parser(const std::vector<std::string>& all) : arguments(all) {}

  CommandLine Parse() {
    while (next < arguments.size() && fault.empty() && help.empty()) {
      const std::string& argument = arguments[next++];
      if (onlyOperands || argument.size() < 2 || argument[0] != '-') {
        operands.push_back(argument);
      } else if (argument == "--") {
        onlyOperands = true;
      } else if (argument[1] == '-') {
        ParseLong(argument);
      } else {
        ParseCluster(argument);
      }
    }
    if (fault.empty() && help.empty()) {
      Finish();
    }
    if (!fault.empty()) {
      return {
          CommandLine::Kind::kFault, {}, fault + "\n" + kUsage + "Try 'vekgrep --help' for more."};
    }
    if (!help.empty()) {
      return {CommandLine::Kind::kHelp, {}, help};
    }
    const CommandLine::Kind kind =
        explains ? CommandLine::Kind::kExplain : CommandLine::Kind::kSearch;
    return {kind, std::move(options), explained};
  }

 private:
  // "--name", "--name=value" or, where a value is required, "--name value".
  void ParseLong(const std::string& argument) {
    const size_t equals = std::min(argument.find('='), argument.size());
    const std::string name = argument.substr(2, equals - 2);
    for (const OptionInfo& info : kOptions) {
      if (!name.empty() && name == info.name) {
        const bool hasValue = equals < argument.size();
        if (hasValue && info.value == Value::kNone) {
          fault = "option '--" + name + "' takes no value";
        } else if (hasValue) {
          Apply(info, argument.substr(equals + 1));
        } else if (info.value == Value::kRequired) {
          ApplyNext(info, "--" + name);
        } else {
          Apply(info, "");
        }
        return;
      }
    }
    fault = "unknown option '--" + name + "'";
  }

  // Letters in one argument; a letter that requires a value takes the rest or the next argument.
  void ParseCluster(const std::string& argument) {
    for (size_t i = 1; i < argument.size() && fault.empty(); ++i) {
      const char letter = argument[i];
      const auto* info = std::find_if(std::begin(kOptions), std::end(kOptions),
                                      [=](const OptionInfo& o) { return o.letter == letter; });
      if (info == std::end(kOptions)) {
        fault = std::string("unknown option '-") + letter + "'";
      } else if (info->value == Value::kNone) {
        Apply(*info, "");
      } else if (i + 1 < argument.size()) {
        Apply(*info, argument.substr(i + 1));
        return;
      } else {
        ApplyNext(*info, std::string("-") + letter);
      }
    }
  }

  void ApplyNext(const OptionInfo& info, const std::string& shown) {
    if (next == arguments.size()) {
      fault = "option '" + shown + "' needs a value";
    } else {
      Apply(info, arguments[next++]);
    }
  }

  void Apply(const OptionInfo& info, const std::string& value) {
    switch (info.id) {
      case OptionId::kFixedText:
        options.fixedText = true;
        break;
      case OptionId::kIgnoreCase:
        options.ignoreCase = true;
        break;
      case OptionId::kInvert:
        options.invert = true;
        break;
      case OptionId::kLineNumbers:
        options.lineNumbers = true;
        break;
      case OptionId::kCount:
        counts = true;
        break;
      case OptionId::kFileName:
        namesFiles = true;
        break;
      case OptionId::kMatches:
        onlyMatches = true;
        break;
      case OptionId::kPattern:
        AddPatterns(value, options.patterns);
        hasPatterns = true;
        break;
      case OptionId::kColor:
        ApplyColor(value);
        break;
      case OptionId::kExplain:
        explains = true;
        explained = value;
        break;
      case OptionId::kShortHelp:
        help = HelpText(false);
        break;
      case OptionId::kLongHelp:
        help = HelpText(true);
        break;
    }
  }

  void ApplyColor(const std::string& when) {
    if (when.empty() || when == "auto") {
      options.color = ColorMode::kAuto;
    } else if (when == "always" || when == "never") {
      options.color = when == "always" ? ColorMode::kAlways : ColorMode::kNever;
    } else {
      fault = "'" + when + "' is not auto, always or never";
    }
  }

  void Finish() {
    if (explains) {
      return;
    }
    if (!options.fixedText) {
      fault = "only fixed text can be searched for: give -F";
      return;
    }
    if (!hasPatterns) {
      if (operands.empty()) {
        fault = "no text to search for";
        return;
      }
      AddPatterns(operands.front(), options.patterns);
      operands.erase(operands.begin());
    }
    options.files = std::move(operands);
    options.fileNames = options.files.size() > 1;
    if (options.files.empty()) {
      options.files.emplace_back("-");
    }
    options.report = namesFiles    ? Report::kFileName
                     : counts      ? Report::kCount
                     : onlyMatches ? Report::kMatches
                                   : Report::kLines;
  }

  const std::vector<std::string>& arguments;
  size_t next = 0;
  bool onlyOperands = false;
  bool hasPatterns = false;
  bool counts = false;
  bool namesFiles = false;
  bool onlyMatches = false;
  bool explains = false;
  std::vector<std::string> operands;
  std::string fault;
  std::string help;
  std::string explained;
  Options options;
};

}  // namespace

CommandLine ParseCommandLine(const std::vector<std::string>& arguments) {
  return Parser(arguments).Parse();
}

}  // namespace vekgrep
