// SPDX-License-Identifier: MIT

// The parser goes through the arguments once; what the options mean is the programs' affair.

#include "common/command_line.h"

#include <algorithm>

namespace examples {
namespace {

constexpr int kShortHelp = -1;
constexpr int kLongHelp = -2;

// Options of every program, behind its own.
const OptionInfo kHelpOptions[] = {
    {kShortHelp, 'h', "", Value::kNone, "", "print this list", ""},
    {kLongHelp, 0, "help", Value::kNone, "", "print a longer explanation", ""},
};

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

class Parser {
 public:
  Parser(const Manual& programManual, const std::vector<std::string>& all)
      : manual(programManual), options(programManual.options), arguments(all) {
    options.insert(options.end(), std::begin(kHelpOptions), std::end(kHelpOptions));
  }

  Arguments Parse() {
    while (next < arguments.size() && result.fault.empty() && result.help.empty()) {
      const std::string& argument = arguments[next++];
      if (onlyOperands || argument.size() < 2 || argument[0] != '-') {
        result.operands.push_back(argument);
      } else if (argument == "--") {
        onlyOperands = true;
      } else if (argument[1] == '-') {
        ParseLong(argument);
      } else {
        ParseCluster(argument);
      }
    }
    return result;
  }

 private:
  // "--name", "--name=value" or, where a value is required, "--name value".
  void ParseLong(const std::string& argument) {
    const size_t equals = std::min(argument.find('='), argument.size());
    const std::string name = argument.substr(2, equals - 2);
    const auto info = std::find_if(options.begin(), options.end(), [&](const OptionInfo& option) {
      return !name.empty() && name == option.name;
    });
    const bool hasValue = equals < argument.size();
    if (info == options.end()) {
      result.fault = "unknown option '--" + name + "'";
    } else if (hasValue && info->value == Value::kNone) {
      result.fault = "option '--" + name + "' takes no value";
    } else if (hasValue) {
      Give(*info, argument.substr(equals + 1));
    } else if (info->value == Value::kRequired) {
      GiveNext(*info, "--" + name);
    } else {
      Give(*info, "");
    }
  }

  // Letters in one argument; a letter that requires a value takes the rest or the next argument.
  void ParseCluster(const std::string& argument) {
    for (size_t i = 1; i < argument.size() && result.fault.empty(); ++i) {
      const char letter = argument[i];
      const auto info = std::find_if(options.begin(), options.end(),
                                     [=](const OptionInfo& o) { return o.letter == letter; });
      if (info == options.end()) {
        result.fault = std::string("unknown option '-") + letter + "'";
      } else if (info->value == Value::kNone) {
        Give(*info, "");
      } else if (i + 1 < argument.size()) {
        Give(*info, argument.substr(i + 1));
        return;
      } else {
        GiveNext(*info, std::string("-") + letter);
      }
    }
  }

  void GiveNext(const OptionInfo& info, const std::string& shown) {
    if (next == arguments.size()) {
      result.fault = "option '" + shown + "' needs a value";
    } else {
      Give(info, arguments[next++]);
    }
  }

  void Give(const OptionInfo& info, const std::string& value) {
    if (info.id == kShortHelp || info.id == kLongHelp) {
      result.help = HelpText(info.id == kLongHelp);
    } else {
      result.options.push_back({info.id, value});
    }
  }

  std::string HelpText(bool detailed) const {
    constexpr size_t kSummaryColumn = 28;
    std::string text = std::string(manual.usage) + manual.introduction + "\n";
    for (const OptionInfo& info : options) {
      std::string head = OptionHead(info);
      head.resize(kSummaryColumn, ' ');
      text += head + info.summary + "\n";
      if (detailed && *info.detail != 0) {
        text += Indented(info.detail, kSummaryColumn);
      }
    }
    return detailed ? text + "\n" + manual.explanation : text;
  }

  const Manual& manual;
  std::vector<OptionInfo> options;
  const std::vector<std::string>& arguments;
  size_t next = 0;
  bool onlyOperands = false;
  Arguments result;
};

}  // namespace

Arguments ParseArguments(const Manual& manual, const std::vector<std::string>& arguments) {
  return Parser(manual, arguments).Parse();
}

std::string UsageFault(const Manual& manual, const std::string& fault) {
  return fault + "\n" + manual.usage + "Try '" + manual.program + " --help' for more.";
}

}  // namespace examples
