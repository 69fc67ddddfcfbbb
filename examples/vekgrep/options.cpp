// The table of options and what they mean. The first argument that is no option is the text unless
// -e gave one; the rest are files.

#include "options.h"

#include <algorithm>
#include <utility>

namespace examples::vekgrep {
namespace {

constexpr char kUsage[] = "Usage: vekgrep -F [OPTION]... TEXT [FILE]...\n";

enum OptionId {
  kFixedText,
  kIgnoreCase,
  kInvert,
  kPattern,
  kCount,
  kFileName,
  kLineNumbers,
  kMatches,
  kColor,
  kExplain
};

const std::vector<OptionInfo> kOptions = {
    {kFixedText, 'F', "fixed-strings", Value::kNone, "",
     "TEXT is fixed text, of one or more lines; each is searched for", ""},
    {kPattern, 'e', "regexp", Value::kRequired, "TEXT",
     "search for TEXT; may be given several times",
     "Of occurrences that overlap, the one that starts first counts, and of\n"
     "those that start together the longest."},
    {kIgnoreCase, 'i', "ignore-case", Value::kNone, "",
     "capital and small letters are the same (ASCII only)", ""},
    {kInvert, 'v', "invert-match", Value::kNone, "", "select the lines that do not match", ""},
    {kCount, 'c', "count", Value::kNone, "", "print only the number of selected lines",
     "With -o lines are counted too, not occurrences."},
    {kFileName, 'l', "files-with-matches", Value::kNone, "",
     "print only the names of files with selected lines",
     "A file is read up to its first selected line. Wins over -c and -o."},
    {kLineNumbers, 'n', "line-number", Value::kNone, "", "put line numbers before lines", ""},
    {kMatches, 'o', "only-matching", Value::kNone, "", "print each occurrence on a line of its own",
     "Together with -v nothing is printed."},
    {kColor, 0, "color", Value::kOptional, "WHEN", "colour: auto, always or never",
     "auto, which is also the default, colours what goes to a terminal, unless\n"
     "NO_COLOR is set and not empty or TERM is \"dumb\"."},
    {kExplain, 0, "explain", Value::kRequired, "PATTERN",
     "print what PATTERN compiles to, and search nothing",
     "One record of the program a line; for a PATTERN that does not compile,\n"
     "where it is at fault. With -i its option i is set."},
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

const Manual kManual = {"vekgrep", kUsage, kIntroduction, kOptions, kExplanation};

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

class Reader {
 public:
  CommandLine<Options> Read(const std::vector<std::string>& arguments) {
    Arguments given = ParseArguments(kManual, arguments);
    if (!given.help.empty()) {
      return {Kind::kHelp, {}, given.help};
    }
    fault = given.fault;
    for (const GivenOption& option : given.options) {
      if (fault.empty()) {
        Apply(option.id, option.value);
      }
    }
    if (fault.empty()) {
      Finish(given.operands);
    }
    if (!fault.empty()) {
      return {Kind::kFault, {}, UsageFault(kManual, fault)};
    }
    return {Kind::kWork, std::move(options), ""};
  }

 private:
  using Kind = CommandLine<Options>::Kind;

  void Apply(int id, const std::string& value) {
    switch (id) {
      case kFixedText:
        options.fixedText = true;
        break;
      case kIgnoreCase:
        options.ignoreCase = true;
        break;
      case kInvert:
        options.invert = true;
        break;
      case kLineNumbers:
        options.lineNumbers = true;
        break;
      case kCount:
        counts = true;
        break;
      case kFileName:
        namesFiles = true;
        break;
      case kMatches:
        onlyMatches = true;
        break;
      case kPattern:
        AddPatterns(value, options.patterns);
        hasPatterns = true;
        break;
      case kColor:
        ApplyColor(value);
        break;
      case kExplain:
        options.explains = true;
        options.pattern = value;
        break;
      default:
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

  void Finish(std::vector<std::string>& operands) {
    if (options.explains) {
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

  bool hasPatterns = false;
  bool counts = false;
  bool namesFiles = false;
  bool onlyMatches = false;
  std::string fault;
  Options options;
};

}  // namespace

CommandLine<Options> ParseCommandLine(const std::vector<std::string>& arguments) {
  return Reader().Read(arguments);
}

}  // namespace examples::vekgrep
