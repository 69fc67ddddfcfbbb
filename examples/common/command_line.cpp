// SPDX-License-Identifier: MIT

// The parser goes through the arguments once; what the options mean is the rows' affair. The texts
// that describe them go through the rows in their order.

#include "common/command_line.h"

#include <algorithm>
#include <limits>
#include <sstream>

#include "vekch/vekch.h"

namespace examples {
namespace {

std::vector<std::string> SplitAt(const std::string& text, char separator) {
  std::vector<std::string> parts;
  std::istringstream stream(text);
  for (std::string part; std::getline(stream, part, separator);) {
    parts.push_back(part);
  }
  return parts;
}

bool IsHeading(const OptionInfo& row) { return row.letter == 0 && *row.names == 0; }

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

class Parser {
 public:
  Parser(const std::vector<OptionInfo>& optionRows, const std::vector<std::string>& all,
         const std::function<bool(size_t, const std::string&)>& applied,
         std::vector<std::string>* rest)
      : rows(optionRows), arguments(all), apply(applied), operands(rest) {}

  std::string Parse() {
    bool onlyOperands = false;
    while (next < arguments.size() && !done) {
      const std::string& argument = arguments[next++];
      if (onlyOperands || argument.size() < 2 || argument[0] != '-') {
        operands->push_back(argument);
      } else if (argument == "--") {
        onlyOperands = true;
      } else if (argument[1] == '-') {
        ParseLong(argument);
      } else {
        ParseCluster(argument);
      }
    }
    return fault;
  }

 private:
  void Fail(const std::string& reason) {
    fault = reason;
    done = true;
  }

  void Give(size_t row, const std::string& value) { done = !apply(row, value); }

  void GiveNext(size_t row, const std::string& shown) {
    if (next == arguments.size()) {
      Fail("option '" + shown + "' needs a value");
    } else {
      Give(row, arguments[next++]);
    }
  }

  // The row with a long name, or with the only one that begins so; else their number.
  size_t RowOf(const std::string& beginning) {
    size_t found = rows.size();
    std::string candidates;
    for (size_t row = 0; row < rows.size(); ++row) {
      for (const std::string& name : SplitAt(rows[row].names, ' ')) {
        if (name == beginning) {
          return row;
        }
        if (name.compare(0, beginning.size(), beginning) == 0 && found != row) {
          candidates += " --" + name;
          found = row;
        }
      }
    }
    if (candidates.empty()) {
      Fail("unknown option '--" + beginning + "'");
    } else if (candidates.find(' ', 1) != std::string::npos) {
      Fail("option '--" + beginning + "' could be any of" + candidates);
    }
    return done ? rows.size() : found;
  }

  // "--name", "--name=value" or, where a value is required, "--name value".
  void ParseLong(const std::string& argument) {
    const size_t equals = std::min(argument.find('='), argument.size());
    const std::string shown = argument.substr(0, equals);
    const size_t row = RowOf(shown.substr(2));
    if (row == rows.size()) {
      return;
    }
    const bool hasValue = equals < argument.size();
    if (hasValue && rows[row].value == Value::kNone) {
      Fail("option '" + shown + "' takes no value");
    } else if (hasValue) {
      Give(row, argument.substr(equals + 1));
    } else if (rows[row].value == Value::kRequired) {
      GiveNext(row, shown);
    } else {
      Give(row, "");
    }
  }

  // Letters in one argument; a letter that requires a value takes the rest or the next argument.
  void ParseCluster(const std::string& argument) {
    for (size_t i = 1; i < argument.size() && !done; ++i) {
      const bool isNumber = IsDigit(argument[i]);
      const char letter = isNumber ? kNumberLetter : argument[i];
      const auto info = std::find_if(rows.begin(), rows.end(),
                                     [=](const OptionInfo& row) { return row.letter == letter; });
      const auto row = static_cast<size_t>(info - rows.begin());
      if (info == rows.end() || (letter == kNumberLetter && !isNumber)) {
        Fail(std::string("unknown option '-") + argument[i] + "'");
      } else if (isNumber) {
        const size_t begin = i;
        i = std::min(argument.find_first_not_of("0123456789", i), argument.size()) - 1;
        Give(row, argument.substr(begin, i + 1 - begin));
      } else if (info->value != Value::kRequired) {
        Give(row, "");
      } else if (i + 1 < argument.size()) {
        Give(row, argument.substr(i + 1));
        return;
      } else {
        GiveNext(row, std::string("-") + letter);
      }
    }
  }

  const std::vector<OptionInfo>& rows;
  const std::vector<std::string>& arguments;
  const std::function<bool(size_t, const std::string&)>& apply;
  std::vector<std::string>* operands;
  size_t next = 0;
  bool done = false;
  std::string fault;
};

// "-e, --regexp=PATTERN", with marks around the parts that are to be bold and slanted.
std::string OptionHead(const OptionInfo& row, const std::string& bold, const std::string& slanted,
                       const std::string& plain) {
  std::string head;
  const std::string value = slanted + row.valueName + plain;
  const std::vector<std::string> names = SplitAt(row.names, ' ');
  if (row.letter == kNumberLetter) {
    return bold + "-" + plain + value;
  }
  if (row.letter != 0) {
    head += bold + "-" + row.letter + plain;
    head += names.empty() && row.value == Value::kRequired ? " " + value : "";
  }
  if (!names.empty()) {
    head += (head.empty() ? "" : ", ") + bold + "--" + names[0] + plain;
    head += row.value == Value::kRequired   ? "=" + value
            : row.value == Value::kOptional ? "[=" + value + "]"
                                            : "";
  }
  return head;
}

std::string Indented(const std::string& lines, size_t width) {
  std::string text;
  for (const std::string& line : SplitAt(lines, '\n')) {
    text += line.empty() ? "\n" : std::string(width, ' ') + line + "\n";
  }
  return text;
}

std::string HelpOfOption(const OptionInfo& row) {
  constexpr size_t kHelpColumn = 28;
  std::string head = std::string(row.letter == 0 ? 6 : 2, ' ') + OptionHead(row, "", "", "");
  const std::string help = Indented(row.help, kHelpColumn);
  if (head.size() + 2 > kHelpColumn) {
    return head + "\n" + help;
  }
  head.resize(kHelpColumn, ' ');
  return head + help.substr(kHelpColumn);
}

// Text as the formatter of manual pages takes it.
std::string Escaped(const std::string& text) {
  std::string escaped;
  for (const char c : text) {
    const bool startsLine = escaped.empty() || escaped.back() == '\n';
    escaped += c == '\\'                               ? "\\e"
               : c == '-'                              ? "\\-"
               : startsLine && (c == '.' || c == '\'') ? std::string("\\&") + c
                                                       : std::string(1, c);
  }
  return escaped;
}

// Lines stay as they are.
std::string Verbatim(const std::string& text) { return ".nf\n" + Escaped(text) + ".fi\n"; }

std::string Uppercase(std::string text) {
  auto* bytes = reinterpret_cast<uint8_t*>(text.data());
  veksUppercaseLatin_8u_I(bytes, static_cast<int32_t>(text.size()));
  return text;
}

// Options that wait for a certain kind of value, for the completion's first decision.
std::string CompletionCase(const OptionInfo& row) {
  const std::string words = row.valueName;
  const bool hasWords = words.find('|') != std::string::npos;
  std::string reply;
  if (hasWords) {
    std::string list = words;
    std::replace(list.begin(), list.end(), '|', ' ');
    reply = "mapfile -t COMPREPLY < <(compgen -W '" + list + "' -- \"$current\")";
  } else if (row.completes != Completes::kNothing) {
    reply = std::string("mapfile -t COMPREPLY < <(compgen -") +
            (row.completes == Completes::kFile ? "f" : "d") + " -- \"$current\")";
  }
  if (row.value != Value::kRequired && !(row.value == Value::kOptional && hasWords)) {
    return "";
  }
  std::string labels;
  for (const std::string& name : SplitAt(row.names, ' ')) {
    labels += (labels.empty() ? "--" : " | --") + name;
  }
  if (row.letter != 0 && row.value == Value::kRequired) {
    labels += std::string(labels.empty() ? "-" : " | -") + row.letter;
  }
  return "    " + labels + ")\n      " + (reply.empty() ? "" : reply + "\n      ") + "return ;;\n";
}

}  // namespace

std::string ParseArguments(const std::vector<OptionInfo>& rows,
                           const std::vector<std::string>& arguments,
                           const std::function<bool(size_t, const std::string&)>& apply,
                           std::vector<std::string>* operands) {
  return Parser(rows, arguments, apply, operands).Parse();
}

std::string HelpText(const Manual& manual, const std::vector<OptionInfo>& rows) {
  std::string text =
      std::string("Usage: ") + manual.program + " " + manual.synopsis + "\n" + manual.introduction;
  for (const OptionInfo& row : rows) {
    text += IsHeading(row) ? std::string("\n") + row.help + ":\n" : HelpOfOption(row);
  }
  for (const auto& [title, body] : manual.sections) {
    text += std::string("\n") + title + ":\n" + Indented(body, 2);
  }
  return text;
}

std::string ManualPage(const Manual& manual, const std::vector<OptionInfo>& rows) {
  const std::string program = manual.program;
  std::string text = ".TH " + Uppercase(program) + " 1 \"\" vekch\n.SH NAME\n" + program + " \\- " +
                     Escaped(manual.purpose) + "\n.SH SYNOPSIS\n.B " + program + "\n" +
                     Escaped(manual.synopsis) + "\n.SH DESCRIPTION\n" +
                     Escaped(manual.introduction) + ".SH OPTIONS\n";
  for (const OptionInfo& row : rows) {
    text += IsHeading(row) ? std::string(".SS ") + row.help + "\n"
                           : ".TP\n" + OptionHead(row, "\\fB", "\\fI", "\\fR") + "\n" +
                                 Verbatim(std::string(row.help) + "\n");
  }
  for (const auto& [title, body] : manual.sections) {
    text += ".SH " + Uppercase(title) + "\n" + Verbatim(body);
  }
  return text;
}

std::string BashCompletion(const Manual& manual, const std::vector<OptionInfo>& rows) {
  const std::string program = manual.program;
  std::string cases;
  std::string names;
  for (const OptionInfo& row : rows) {
    cases += IsHeading(row) ? "" : CompletionCase(row);
    if (row.letter != 0 && row.letter != kNumberLetter) {
      names += std::string(" -") + row.letter;
    }
    for (const std::string& name : SplitAt(row.names, ' ')) {
      names += " --" + name;
    }
  }
  // Bash hands "--name=value" over in three words.
  return "# Completes the options of " + program + " in bash; made by \"" + program +
         " --generate=bash-completion\".\n_" + program +
         "() {\n  local current=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}\n"
         "  if [[ $current == '=' ]]; then\n    current=''\n"
         "  elif [[ $before == '=' ]]; then\n    before=${COMP_WORDS[COMP_CWORD - 2]}\n  fi\n"
         "  COMPREPLY=()\n  case $before in\n" +
         cases +
         "  esac\n  if [[ $current == -* ]]; then\n    mapfile -t COMPREPLY < <(compgen -W '" +
         names.substr(1) +
         "' -- \"$current\")\n  else\n    compopt -o filenames 2>/dev/null\n"
         "    mapfile -t COMPREPLY < <(compgen -f -- \"$current\")\n  fi\n}\ncomplete -F _" +
         program + " " + program + "\n";
}

std::string VersionText(const Manual& manual) {
  return std::string(manual.program) + " of vekch " + vekchGetLibVersion()->version + "\n";
}

std::string UsageFault(const Manual& manual, const std::string& fault) {
  return fault + "\nUsage: " + manual.program + " " + manual.synopsis + "\nTry '" + manual.program +
         " --help' for more.";
}

bool ReadNumber(const std::string& value, int64_t* number) {
  constexpr int64_t kMost = std::numeric_limits<int64_t>::max();
  *number = 0;
  for (const char digit : value) {
    if (!IsDigit(digit)) {
      return false;
    }
    const bool fits = *number <= (kMost - (digit - '0')) / 10;
    *number = fits ? 10 * *number + (digit - '0') : kMost;
  }
  return !value.empty();
}

}  // namespace examples
