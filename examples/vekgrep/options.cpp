// SPDX-License-Identifier: MIT

// The table of options. The first argument that is no option is the pattern unless -e or -f gave
// one; the rest are files.

#include "options.h"

#include <algorithm>
#include <utility>

#include "common/input.h"
#include "common/platform.h"

namespace examples::vekgrep {
namespace {

// What the stack of a program's threads has room for on every system.
constexpr int64_t kHighestLimit = 100000;
constexpr int64_t kMostJobs = 256;

using Text = const std::string&;

void AddPatterns(Options& o, Text value) {
  o.patterns.push_back(value);
  o.hasPatterns = true;
}

// Reads a file to its end.
bool ReadFile(Text name, std::string* content, std::string* fault) {
  File file;
  if (!file.Open(name, -1, fault)) {
    return false;
  }
  uint8_t piece[4096];
  int64_t count;
  while ((count = file.Read(piece, sizeof piece, fault)) > 0) {
    content->append(reinterpret_cast<const char*>(piece), static_cast<size_t>(count));
  }
  return count == 0;
}

std::string ReadList(Options& o, Text name) {
  std::string content;
  std::string reason;
  if (!ReadFile(name, &content, &reason)) {
    o.fault = name + ": " + reason;
  }
  if (!content.empty() && content.back() == '\n') {
    content.pop_back();
  } else if (content.empty()) {
    content = '\0';  // no line at all
  }
  return content;
}

void AddFile(Options& o, Text name) {
  const std::string list = ReadList(o, name);
  if (list != std::string(1, '\0')) {
    AddPatterns(o, list);
  }
  o.hasPatterns = true;
}

template <typename Action>
void ForEachLine(const std::string& lines, Action action) {
  for (size_t begin = 0; begin <= lines.size();) {
    const size_t end = std::min(lines.find('\n', begin), lines.size());
    action(lines.substr(begin, end - begin));
    begin = end + 1;
  }
}

void SetNumber(Options& o, Text value, int64_t most, int64_t* number) {
  if (!ReadNumber(value, number) || *number > most) {
    o.fault = "'" + value + "' is not a number" +
              (most == Options::kNoBound ? "" : " up to " + std::to_string(most));
  }
}

void SetReport(Options& o, Report report) {
  const bool printsParts = PrintsLines(o.report) && o.report != Report::kLines;
  if (printsParts && PrintsLines(report) && o.report != report) {
    o.fault = "-o, --groups and --replace exclude each other";
  }
  // Of those that end a file at its first line, silence wins, then the last.
  if (o.report != Report::kNothing && (!EndsAtFirst(o.report) || EndsAtFirst(report))) {
    o.report = report;
  }
}

void SetColor(Options& o, Text when) {
  const auto isOneOf = [&](std::initializer_list<const char*> words) {
    return std::find(words.begin(), words.end(), when) != words.end();
  };
  if (isOneOf({"", "auto", "tty", "if-tty"})) {
    o.color = ColorMode::kAuto;
  } else if (isOneOf({"always", "yes", "force"})) {
    o.color = ColorMode::kAlways;
  } else if (isOneOf({"never", "no", "none"})) {
    o.color = ColorMode::kNever;
  } else {
    o.fault = "'" + when + "' is not auto, always or never";
  }
}

void SetBinaryFiles(Options& o, Text type) {
  if (type == "binary" || type == "text" || type == "without-match") {
    o.binaryFiles = type == "binary" ? BinaryFiles::kTell
                    : type == "text" ? BinaryFiles::kAsText
                                     : BinaryFiles::kLeaveOut;
  } else {
    o.fault = "'" + type + "' is not binary, text or without-match";
  }
}

void SetFolders(Options& o, Text action) {
  if (action == "read" || action == "skip" || action == "recurse") {
    o.folders = action == "read"   ? Folders::kRead
                : action == "skip" ? Folders::kSkip
                                   : Folders::kSearch;
    o.followsLinks = false;
  } else {
    o.fault = "'" + action + "' is not read, skip or recurse";
  }
}

void AddPatternLetter(Options& o, char letter) {
  o.settings.letters += letter;
  o.onlyForPatterns = true;
}

using Row = Option<Options>;

Row Heading(const char* title) { return {{0, "", Value::kNone, "", title}, nullptr}; }

std::vector<Row> MakeRows() {
  constexpr Value kNone = Value::kNone;
  constexpr Value kRequired = Value::kRequired;
  std::vector<Row> rows = {
      Heading("What is searched for"),
      {{'e', "regexp", kRequired, "PATTERN",
        "search for PATTERN; may be given several times\n"
        "Each line of PATTERN is a pattern. Of matches that overlap, the one that starts\n"
        "first counts, and of those that start together the longest."},
       AddPatterns},
      {{'f', "file", kRequired, "FILE", "search for the patterns in the lines of FILE",
        Completes::kFile},
       AddFile},
      {{'F', "fixed-strings", kNone, "", "patterns are fixed text"},
       [](Options& o, Text) { o.fixedText = true; }},
      {{'E', "extended-regexp", kNone, "", "patterns are patterns, as they are without it"},
       [](Options& o, Text) { o.fixedText = false; }},
      {{'P', "perl-regexp", kNone, "", "the same: the language is Perl's, but for what it lacks"},
       [](Options& o, Text) { o.fixedText = false; }},
      {{'G', "basic-regexp", kNone, "", "refused: the basic language isn't spoken here"},
       [](Options& o, Text) {
         o.fault =
             "-G: basic patterns are not supported; as a pattern, a group is (x), not \\(x\\)";
       }},
      {{'i', "ignore-case", kNone, "",
        "capital and small letters are the same\n"
        "ASCII letters, and code points that are given as such: \\x{E9}."},
       [](Options& o, Text) { o.ignoreCase = true; }},
      {{'y', "", kNone, "", "the same"}, [](Options& o, Text) { o.ignoreCase = true; }},
      {{0, "no-ignore-case", kNone, "", "they are not"},
       [](Options& o, Text) { o.ignoreCase = false; }},
      {{'w', "word-regexp", kNone, "", "a match has no word character (\\w) beside it"},
       [](Options& o, Text) {
         o.settings.bounds = o.settings.bounds == Bounds::kLine ? Bounds::kLine : Bounds::kWord;
       }},
      {{'x', "line-regexp", kNone, "", "a match is a whole line"},
       [](Options& o, Text) { o.settings.bounds = Bounds::kLine; }},
      {{'z', "null-data", kNone, "", "a line ends at a zero byte, not at a newline"},
       [](Options& o, Text) { o.lineEnd = 0; }},
      {{0, "single-line", kNone, "", "\".\" matches a newline too\nWithout -z no line has one."},
       [](Options& o, Text) { AddPatternLetter(o, 's'); }},
      {{0, "multi-line", kNone, "",
        "\"^\" and \"$\" match at newlines too\nWithout -z they match at the ends of lines in any "
        "case."},
       [](Options& o, Text) { AddPatternLetter(o, 'm'); }},
      {{0, "extended", kNone, "",
        "white space and comments in patterns are ignored\nA newline is white space then."},
       [](Options& o, Text) {
         AddPatternLetter(o, 'x');
         o.extended = true;
       }},
      {{0, "bytes", kNone, "", "each byte is a character; else text is UTF-8"},
       [](Options& o, Text) { o.settings.bytes = o.onlyForPatterns = true; }},
      {{0, "limit", kRequired, "N",
        "give up a line whose tries nest too deep\n"
        "About a fourth of N is how deep; usually N is 10000, and at most 100000. A line\n"
        "that is given up counts as one without a match; its file and number are reported on\n"
        "standard error. It bounds time as well, generously: about ten\n"
        "seconds for a search at 10000."},
       [](Options& o, Text value) {
         int64_t limit = 0;
         SetNumber(o, value, kHighestLimit, &limit);
         o.settings.limit = static_cast<int32_t>(limit);
         o.onlyForPatterns = true;
       }},

      Heading("Which lines are selected"),
      {{'v', "invert-match", kNone, "", "the lines that do not match"},
       [](Options& o, Text) { o.invert = true; }},
      {{'m', "max-count", kRequired, "N", "N lines of a file at most"},
       [](Options& o, Text value) { SetNumber(o, value, Options::kNoBound, &o.mostLines); }},

      Heading("What is printed of them"),
      {{'o', "only-matching", kNone, "",
        "each match on a line of its own\nEmpty ones are left out. Together with -v nothing is "
        "printed."},
       [](Options& o, Text) { SetReport(o, Report::kMatches); }},
      {{0, "groups", kNone, "", "each match and, below it, each of its groups"},
       [](Options& o, Text) { SetReport(o, Report::kGroups); }},
      {{0, "replace", kRequired, "TEMPLATE",
        "the lines with every match replaced by TEMPLATE\n"
        "In TEMPLATE, $1 to $9 are groups, $& is the match, and a backslash stands for\n"
        "nothing; it ends a group's number, as in $1\\0. Takes one PATTERN."},
       [](Options& o, Text value) {
         SetReport(o, Report::kReplaced);
         o.replacement = value;
       }},
      {{'c', "count", kNone, "",
        "only their number, of each file\nWith -o too: lines, not matches."},
       [](Options& o, Text) { o.counts = true; }},
      {{'l', "files-with-matches", kNone, "", "only the names of files that have any"},
       [](Options& o, Text) { SetReport(o, Report::kFileName); }},
      {{'L', "files-without-match", kNone, "", "only the names of files that have none"},
       [](Options& o, Text) { SetReport(o, Report::kFileNameWithout); }},
      {{'q', "quiet silent", kNone, "",
        "nothing; end with 0 at the first one\nWins over -l and -L, of which the last counts, "
        "these "
        "over -c, and that over the others."},
       [](Options& o, Text) { o.report = Report::kNothing; }},
      {{'n', "line-number", kNone, "", "the number of each line before it"},
       [](Options& o, Text) { o.lineNumbers = true; }},
      {{'b', "byte-offset", kNone, "", "the offset of each line or, with -o, match before it"},
       [](Options& o, Text) { o.byteOffsets = true; }},
      {{'H', "with-filename", kNone, "",
        "the name of the file before each line\nAs it is with more than one FILE, and with -r."},
       [](Options& o, Text) { o.whenFileNames = Options::FileNames::kAlways; }},
      {{'h', "no-filename", kNone, "", "no name before lines"},
       [](Options& o, Text) { o.whenFileNames = Options::FileNames::kNever; }},
      {{0, "label", kRequired, "NAME", "what standard input is called"},
       [](Options& o, Text value) { o.label = value; }},
      {{'T', "initial-tab", kNone, "", "a tab between what precedes the line and the line"},
       [](Options& o, Text) { o.initialTab = true; }},
      {{'Z', "null", kNone, "", "a zero byte after names of files"},
       [](Options& o, Text) { o.nullAfterName = true; }},
      {{'A', "after-context", kRequired, "N", "N lines that follow, too"},
       [](Options& o, Text value) { SetNumber(o, value, Options::kNoBound, &o.after); }},
      {{'B', "before-context", kRequired, "N", "N lines before it, too"},
       [](Options& o, Text value) { SetNumber(o, value, Options::kNoBound, &o.before); }},
      {{'C', "context", kRequired, "N", "N lines of both"},
       [](Options& o, Text value) { SetNumber(o, value, Options::kNoBound, &o.around); }},
      {{kNumberLetter, "", kNone, "N", "the same as -C N"},
       [](Options& o, Text value) { SetNumber(o, value, Options::kNoBound, &o.around); }},
      {{0, "group-separator", kRequired, "TEXT",
        "TEXT between groups of lines that are apart, not \"--\""},
       [](Options& o, Text value) {
         o.separates = true;
         o.separator = value;
       }},
      {{0, "no-group-separator", kNone, "", "nothing between them"},
       [](Options& o, Text) { o.separates = false; }},
      {{0, "color colour", Value::kOptional, "auto|always|never",
        "colours, as GREP_COLORS says\n"
        "auto, the default, colours what goes to a terminal, unless NO_COLOR is set and not\n"
        "empty or TERM is \"dumb\"."},
       SetColor},
      {{0, "line-buffered", kNone, "", "write after every line"},
       [](Options& o, Text) { o.lineBuffered = true; }},

      Heading("Which files are searched"),
      {{'r', "recursive", kNone, "",
        "folders too, and what is in them\n"
        "Without FILE, the current folder. Links are followed where they are named."},
       [](Options& o, Text) {
         o.folders = Folders::kSearch;
         o.followsLinks = false;
       }},
      {{'R', "dereference-recursive", kNone, "", "the same, and all links are followed"},
       [](Options& o, Text) {
         o.folders = Folders::kSearch;
         o.followsLinks = true;
       }},
      {{'d', "directories", kRequired, "read|skip|recurse",
        "what to do with folders\nread, the default, says that they are none to be read."},
       SetFolders},
      {{'D', "devices", kRequired, "read|skip", "what to do with devices, pipes and sockets"},
       [](Options& o, Text action) {
         o.skipsDevices = action == "skip";
         o.fault =
             action == "skip" || action == "read" ? "" : "'" + action + "' is not read or skip";
       }},
      {{0, "include", kRequired, "GLOB",
        "only files whose name matches GLOB (*, ?, [...])\n"
        "Of these rules and those of --exclude, the last that matches decides."},
       [](Options& o, Text glob) {
         o.fileRules.push_back({glob, true});
       }},
      {{0, "exclude", kRequired, "GLOB", "no files whose name matches GLOB"},
       [](Options& o, Text glob) {
         o.fileRules.push_back({glob, false});
       }},
      {{0, "exclude-from", kRequired, "FILE", "no files whose name matches a line of FILE",
        Completes::kFile},
       [](Options& o, Text name) {
         ForEachLine(ReadList(o, name), [&](Text glob) { o.fileRules.push_back({glob, false}); });
       }},
      {{0, "exclude-dir", kRequired, "GLOB", "no folders whose name matches GLOB",
        Completes::kFolder},
       [](Options& o, Text glob) {
         const size_t end = glob.find_last_not_of('/');
         o.leftOutFolders.push_back(end == std::string::npos ? glob : glob.substr(0, end + 1));
       }},
      {{0, "binary-files", kRequired, "binary|text|without-match",
        "what to do with files that hold a zero byte\n"
        "binary, the default, reports only that one matches; text treats them like others;\n"
        "without-match, as if nothing in them matched."},
       SetBinaryFiles},
      {{'a', "text", kNone, "", "the same as --binary-files=text"},
       [](Options& o, Text) { o.binaryFiles = BinaryFiles::kAsText; }},
      {{'I', "", kNone, "", "the same as --binary-files=without-match"},
       [](Options& o, Text) { o.binaryFiles = BinaryFiles::kLeaveOut; }},
      {{'U', "binary", kNone, "", "files are read as they are, as they are without it"},
       [](Options&, Text) {}},
      {{'s', "no-messages", kNone, "", "say nothing of files that can't be read"},
       [](Options& o, Text) { o.silentAboutFiles = true; }},
      {{'j', "jobs", kRequired, "N",
        "search with N threads\nUsually as many as there are processors. The output is the same."},
       [](Options& o, Text value) { SetNumber(o, value, kMostJobs, &o.jobs); }},

      Heading("Else"),
      {{0, "explain", kRequired, "PATTERN",
        "print what PATTERN compiles to, and search nothing\n"
        "One record of the program a line, what is left to the exact matcher, which is\n"
        "slower, and which lines would be searched; for a PATTERN that does not\n"
        "compile, where it is at fault."},
       [](Options& o, Text value) {
         o.explains = true;
         o.explained = value;
       }},
  };
  for (Row& row : CommonOptions<Options>()) {
    rows.push_back(row);
  }
  return rows;
}

const Manual kManual = {
    "vekgrep",
    "print the lines of files that match a pattern",
    "[OPTION]... PATTERN [FILE]...",
    "Prints the lines of each FILE that match PATTERN. Without FILE, or where FILE is \"-\",\n"
    "standard input is read.\n",
    {{"Patterns",
      ".  [a-z]  [^a-z]  [[:alpha:]]           a character: any, of a class, not of it\n"
      "\\d \\s \\w \\D \\S \\W  \\p{Lu} \\P{Greek}     of a kind; of a Unicode property\n"
      "x*  x+  x?  x{n,m}  x*?                 repeated; as few times as possible\n"
      "x|y  (x)  (?:x)  (?>x)  \\1              alternatives, groups, what a group captured\n"
      "^  $  \\b  \\B                            start and end of the line, word boundary\n"
      "(?=x)  (?!x)  (?<=x)  (?<!x)            what follows, what is before\n"
      "(?i)  (?(1)x|y)  \\Q...\\E               options, conditions, literal text\n"
      "A backslash before any other letter is that letter: \\h is an h.\n"},
     {"Lines and files",
      "A line ends at a newline; a carriage return before it belongs to the line, and a\n"
      "match stays in a line. An empty pattern is in every line.\n"
      "\n"
      "A file that holds a zero byte is binary. Instead of its lines, \"Binary file NAME\n"
      "matches\" is printed; -c, -l, -L and -q treat it like any other. A file that begins\n"
      "with the byte order mark of UTF-16 is searched as the UTF-8 that it stands for.\n"
      "\n"
      "Files of any size are searched in little memory. Only a line that may have to be\n"
      "printed or matched is held as a whole: where one is longer than 256 MiB, the\n"
      "search of that file ends there with a message. Fixed text is found in lines of any\n"
      "length with -c, -l, -L and -q, and in binary files.\n"
      "\n"
      "Of a run that takes longer than a second, a line on the terminal shows how far it\n"
      "has come.\n"},
     {"Exit status",
      "0 if a line was selected, 1 if none was, 2 if there was an error, also if lines were\n"
      "selected elsewhere; with -q 0 at the first line. A file that can't be read is named\n"
      "on standard error, and the search goes on with the next.\n"},
     {"Environment",
      "GREP_COLORS  colours, as mt=01;31 (matches), ms, mc, sl, cx, fn, ln, bn, se, rv, ne\n"
      "NO_COLOR     if not empty, no colours unless --color=always\n"},
     {"Examples",
      "vekgrep -n '\\bTODO\\b' *.cpp                   lines with that word, with their numbers\n"
      "vekgrep -rl 'operator\\[\\]' --include='*.h'     headers with that text in this folder\n"
      "vekgrep --replace '$2, $1' '(\\w+) (\\w+)' names  the lines, with the words exchanged\n"
      "vekgrep -Fic -e warning -e error log          how many lines hold one of the texts\n"
      "make 2>&1 | vekgrep -F -v -e -Wno-            what is left without such lines\n"}}};

// A newline separates patterns, but where it is white space.
void SplitPatterns(Options& o) {
  std::vector<std::string> all;
  for (const std::string& pattern : o.patterns) {
    if (o.extended) {
      all.push_back(pattern);
    } else {
      ForEachLine(pattern, [&](Text line) { all.push_back(line); });
    }
  }
  o.patterns = std::move(all);
}

void CheckPatterns(Options& o) {
  if (o.fixedText &&
      (o.onlyForPatterns || o.report == Report::kGroups || o.report == Report::kReplaced)) {
    o.fault =
        "--groups, --replace, --limit, --bytes, --single-line, --multi-line and --extended are not "
        "for fixed text (-F)";
  } else if (o.report == Report::kReplaced && o.patterns.size() != 1) {
    o.fault = "--replace takes one pattern";
  }
}

void FinishFiles(Options& o, const std::vector<std::string>& operands) {
  for (const std::string& name : operands) {
    const std::vector<std::string> names = ExpandWildcards(name);
    o.files.insert(o.files.end(), names.begin(), names.end());
  }
  const bool recursive = o.folders == Folders::kSearch;
  using FileNames = Options::FileNames;
  o.fileNames = o.whenFileNames == FileNames::kAlways ||
                (o.whenFileNames == FileNames::kIfSeveral && (o.files.size() > 1 || recursive));
  if (o.files.empty()) {
    o.currentFolder = recursive;
    o.files.emplace_back(recursive ? "." : "-");
  }
}

void FinishOptions(Options& o, std::vector<std::string>& operands) {
  o.settings.letters += o.ignoreCase ? "i" : "";
  o.settings.lineEnd = o.lineEnd;
  if (o.explains) {
    return;
  }
  if (!o.hasPatterns) {
    if (operands.empty()) {
      o.fault = "nothing to search for";
      return;
    }
    o.patterns.push_back(operands.front());
    operands.erase(operands.begin());
  }
  SplitPatterns(o);
  CheckPatterns(o);
  FinishFiles(o, operands);
  if (o.counts && PrintsLines(o.report)) {
    o.report = Report::kCount;
  }
}

}  // namespace

CommandLine<Options> ParseCommandLine(const std::vector<std::string>& arguments) {
  return ReadCommandLine<Options>(kManual, MakeRows(), arguments, FinishOptions);
}

}  // namespace examples::vekgrep
