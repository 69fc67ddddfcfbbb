// SPDX-License-Identifier: MIT

// The table of options and what they mean. The first argument that is no option is the pattern
// unless -e gave one; the rest are files.

#include "options.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "common/platform.h"

namespace examples::vekgrep {
namespace {

constexpr char kUsage[] = "Usage: vekgrep [OPTION]... PATTERN [FILE]...\n";

// What the stack of a program's main thread has room for on every system.
constexpr int32_t kHighestLimit = 100000;

enum OptionId {
  kFixedText,
  kIgnoreCase,
  kSingleLine,
  kMultiLine,
  kExtended,
  kBytes,
  kLimit,
  kInvert,
  kPattern,
  kCount,
  kFileName,
  kLineNumbers,
  kMatches,
  kGroups,
  kReplace,
  kRecursive,
  kColor,
  kExplain
};

const std::vector<OptionInfo> kOptions = {
    {kPattern, 'e', "regexp", Value::kRequired, "PATTERN",
     "search for PATTERN; may be given several times",
     "Of matches that overlap, the one that starts first counts, and of those\n"
     "that start together the longest."},
    {kFixedText, 'F', "fixed-strings", Value::kNone, "",
     "PATTERN is fixed text, of one or more lines; each is searched for", ""},
    {kIgnoreCase, 'i', "ignore-case", Value::kNone, "", "capital and small letters are the same",
     "ASCII letters, and code points that are given as such: \\x{E9}."},
    {kSingleLine, 's', "single-line", Value::kNone, "", "\".\" matches a newline too",
     "No line has one; this and -m make a difference to --explain alone."},
    {kMultiLine, 'm', "multi-line", Value::kNone, "", "\"^\" and \"$\" match at line breaks too",
     "Each line stands for itself, so that they match at its ends in any case."},
    {kExtended, 'x', "extended", Value::kNone, "",
     "white space and comments in PATTERN are ignored", ""},
    {kBytes, 0, "bytes", Value::kNone, "", "each byte is a character; else text is UTF-8", ""},
    {kLimit, 0, "limit", Value::kRequired, "N", "how deep a line's tries may nest; usually 10000",
     "It bounds the stack, not the time: \"(a+)+[bc]\" takes twice as long for each\n"
     "further a of a line. At most 100000. A line that is given up counts as one\n"
     "without a match; its file and number are told on standard error. Repetitions\n"
     "of a group that N leaves no room for just end, and nothing tells of it."},
    {kInvert, 'v', "invert-match", Value::kNone, "", "select the lines that do not match", ""},
    {kCount, 'c', "count", Value::kNone, "", "print only the number of selected lines",
     "With -o lines are counted too, not matches."},
    {kFileName, 'l', "files-with-matches", Value::kNone, "",
     "print only the names of files with selected lines",
     "A file is read up to its first selected line. Wins over -c, and both over\n"
     "-o, --groups and -r, of which one at most may be given."},
    {kLineNumbers, 'n', "line-number", Value::kNone, "", "put line numbers before lines", ""},
    {kMatches, 'o', "only-matching", Value::kNone, "", "print each match on a line of its own",
     "Empty ones are left out. Together with -v nothing is printed."},
    {kGroups, 0, "groups", Value::kNone, "", "print each match and, below it, each of its groups",
     ""},
    {kReplace, 'r', "replace", Value::kRequired, "TEMPLATE",
     "print lines with every match replaced by TEMPLATE",
     "In TEMPLATE, $1 to $9 are groups, $& is the match, and a backslash stands for\n"
     "nothing; it ends a group's number, as in $1\\0. Takes one PATTERN."},
    {kRecursive, 'R', "recursive", Value::kNone, "", "search the files in folders too",
     "Without FILE, those of the current folder. Links to folders are not followed."},
    {kColor, 0, "color", Value::kOptional, "WHEN", "colour: auto, always or never",
     "auto, which is also the default, colours what goes to a terminal, unless\n"
     "NO_COLOR is set and not empty or TERM is \"dumb\"."},
    {kExplain, 0, "explain", Value::kRequired, "PATTERN",
     "print what PATTERN compiles to, and search nothing",
     "One record of the program a line, and which lines would be searched; for a\n"
     "PATTERN that does not compile, where it is at fault."},
};

constexpr char kIntroduction[] =
    "Prints the lines of each FILE that match PATTERN. Without FILE, or where FILE is\n"
    "\"-\", standard input is read.\n";

constexpr char kExplanation[] =
    "In a pattern:\n"
    "  .  [a-z]  [^a-z]  [[:alpha:]]           a character: any, of a class, not of it\n"
    "  \\d \\s \\w \\D \\S \\W  \\p{Lu} \\P{Greek}     of a kind; of a Unicode property\n"
    "  x*  x+  x?  x{n,m}  x*?                 repeated; as few times as possible\n"
    "  x|y  (x)  (?:x)  (?>x)  \\1              alternatives, groups, what a group captured\n"
    "  ^  $  \\b  \\B                            start and end of the line, word boundary\n"
    "  (?=x)  (?!x)  (?<=x)  (?<!x)            what follows, what stands before\n"
    "  (?i)  (?(1)x|y)  \\Q...\\E               options, conditions, literal text\n"
    "A backslash before any other letter is that letter: \\h is an h.\n"
    "\n"
    "A line ends at a newline; a carriage return before it belongs to the line, and a\n"
    "match stays in a line. Empty TEXT is in every line. With more than one FILE, and\n"
    "with -R, names are put before lines and counts.\n"
    "\n"
    "A file that holds a zero byte is binary. Instead of its lines, \"Binary file NAME\n"
    "matches\" is printed; -c and -l treat it like any other.\n"
    "\n"
    "Files of any size are searched in little memory. Only a line that may have to be\n"
    "printed or matched is held as a whole: where one is longer than 256 MiB, the\n"
    "search of that file ends there with a message. With -F and -c or -l, and with -F\n"
    "in binary files, lines may have any length.\n"
    "\n"
    "Of a run that takes longer than a second, a line on the terminal tells how far it\n"
    "has come.\n"
    "\n"
    "Exit status: 0 if a line was selected, 1 if none was, 2 if there was an error, also\n"
    "if lines were selected elsewhere. A file that can't be read is named on standard\n"
    "error, and the search goes on with the next.\n"
    "\n"
    "Examples:\n"
    "  vekgrep -n '\\bTODO\\b' *.cpp             lines with that word, with line numbers\n"
    "  vekgrep -r '$2, $1' '(\\w+) (\\w+)' names  the lines, with the words exchanged\n"
    "  vekgrep -Fic -e warning -e error log    how many lines hold one of the texts\n"
    "  make 2>&1 | vekgrep -F -v -e -Wno-      what is left without such lines\n";

const Manual kManual = {"vekgrep", kUsage, kIntroduction, kOptions, kExplanation};

// A newline separates texts, as in a list read from a file.
void AddTexts(const std::string& lines, std::vector<std::string>& texts) {
  size_t begin = 0;
  for (;;) {
    const size_t end = std::min(lines.find('\n', begin), lines.size());
    texts.push_back(lines.substr(begin, end - begin));
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
        options.settings.letters += 'i';
        break;
      case kInvert:
        options.invert = true;
        break;
      case kLineNumbers:
        options.lineNumbers = true;
        break;
      case kRecursive:
        options.recursive = true;
        break;
      case kCount:
        counts = true;
        break;
      case kFileName:
        namesFiles = true;
        break;
      case kMatches:
        ApplyReport(Report::kMatches);
        break;
      case kGroups:
        ApplyReport(Report::kGroups);
        break;
      case kReplace:
        ApplyReport(Report::kReplaced);
        options.replacement = value;
        break;
      case kPattern:
        patterns.push_back(value);
        break;
      case kColor:
        ApplyColor(value);
        break;
      case kExplain:
        options.explains = true;
        options.pattern = value;
        break;
      default:
        ApplySetting(id, value);
        break;
    }
  }

  // What only patterns have.
  void ApplySetting(int id, const std::string& value) {
    onlyForPatterns = true;
    if (id == kBytes) {
      options.settings.bytes = true;
    } else if (id == kLimit) {
      ApplyLimit(value);
    } else {
      options.settings.letters += id == kSingleLine ? 's' : id == kMultiLine ? 'm' : 'x';
    }
  }

  void ApplyLimit(const std::string& value) {
    constexpr size_t kMostDigits = 9;
    const bool isNumber = !value.empty() && value.size() <= kMostDigits &&
                          value.find_first_not_of("0123456789") == std::string::npos;
    const int32_t limit = isNumber ? std::atoi(value.c_str()) : -1;
    if (!isNumber || limit > kHighestLimit) {
      fault = "'" + value + "' is not a number up to " + std::to_string(kHighestLimit);
    }
    options.settings.limit = limit;
  }

  void ApplyReport(Report report) {
    if (options.report != Report::kLines && options.report != report) {
      fault = "-o, --groups and -r exclude each other";
    }
    options.report = report;
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
    if (patterns.empty()) {
      if (operands.empty()) {
        fault = "nothing to search for";
        return;
      }
      patterns.push_back(operands.front());
      operands.erase(operands.begin());
    }
    FinishPatterns();
    for (const std::string& name : operands) {
      const std::vector<std::string> names = ExpandWildcards(name);
      options.files.insert(options.files.end(), names.begin(), names.end());
    }
    options.fileNames = options.files.size() > 1 || options.recursive;
    if (options.files.empty()) {
      options.files.emplace_back(options.recursive ? "." : "-");
    }
    options.report = namesFiles ? Report::kFileName : counts ? Report::kCount : options.report;
  }

  void FinishPatterns() {
    if (!options.fixedText) {
      options.patterns = patterns;
    } else if (onlyForPatterns || options.report == Report::kGroups ||
               options.report == Report::kReplaced) {
      fault = "-s, -m, -x, -r, --bytes, --limit and --groups are not for fixed text (-F)";
    } else {
      for (const std::string& lines : patterns) {
        AddTexts(lines, options.patterns);
      }
    }
    if (options.report == Report::kReplaced && patterns.size() > 1) {
      fault = "-r takes one pattern";
    }
  }

  std::vector<std::string> patterns;
  bool onlyForPatterns = false;
  bool counts = false;
  bool namesFiles = false;
  std::string fault;
  Options options;
};

}  // namespace

CommandLine<Options> ParseCommandLine(const std::vector<std::string>& arguments) {
  return Reader().Read(arguments);
}

}  // namespace examples::vekgrep
