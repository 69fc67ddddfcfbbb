// SPDX-License-Identifier: MIT

// The table of options, what they mean, and which of them go together.

#include "options.h"

#include <algorithm>
#include <cstring>

namespace examples::vektext {
namespace {

constexpr int32_t kLastField = 1000000;  // keeps the list of fields that a line is split into small

enum OptionId { kFrom, kTo, kMarks, kTrim, kSplit, kField, kLower, kUpper, kHash };

const Manual kManual = {
    "vektext",
    "Usage: vektext [OPTION]... <INPUT >OUTPUT\n",
    "Changes the text that comes from standard input and writes it to standard output.\n",
    {
        {kFrom, 0, "from", Value::kRequired, "ENC",
         "read utf8 (which is the default), utf16le or utf16be", ""},
        {kTo, 0, "to", Value::kRequired, "ENC",
         "write utf8 (which is the default), utf16le or utf16be", ""},
        {kMarks, 0, "bom", Value::kNone, "", "obey and write byte order marks",
         "A mark at the start of the input tells its encoding, whatever --from says,\n"
         "and is dropped. The output starts with a mark, unless --hash is given.\n"
         "Without --bom a mark is a character like any other."},
        {kTrim, 0, "trim", Value::kRequired, "SET",
         "drop the bytes of SET from both ends of each line", ""},
        {kSplit, 0, "split", Value::kRequired, "C", "split each line at every byte C, for --field",
         ""},
        {kField, 0, "field", Value::kRequired, "N", "print field N of each line, counted from 1",
         "A line with fewer fields gives an empty line."},
        {kLower, 0, "lower", Value::kNone, "", "turn capitals into small letters (ASCII only)", ""},
        {kUpper, 0, "upper", Value::kNone, "", "turn small letters into capitals (ASCII only)", ""},
        {kHash, 0, "hash", Value::kRequired, "ALG", "print a hash of each line: shift, sj2 or mscs",
         "Eight hexadecimal digits for each line, without its newline:\n"
         "  shift  h = (h << 1) ^ c, from 0: the last 32 bytes count\n"
         "  sj2    h = h * 31 + c, from 0\n"
         "  mscs   h = (h * 33) ^ c, from 5381, up to the first zero byte"},
    },
    "Whatever the order of the options, this is done in turn: the text is turned into\n"
    "UTF-8, its lines are trimmed, a field is taken out, its letters are mapped, and it is\n"
    "hashed or encoded. --hash and --to, --lower and --upper exclude each other.\n"
    "\n"
    "A line ends at a newline, which is kept; a carriage return before it belongs to the\n"
    "line. A field is what stands between two delimiters; one at the end of the line\n"
    "starts no field. SET and C are ASCII, or escapes: \\t, \\n, \\r, \\\\, and \\xHH for any\n"
    "byte.\n"
    "\n"
    "No text is refused. A byte that is no UTF-8 becomes the character of its value on the\n"
    "way to UTF-16, and a surrogate without its partner three bytes on the way back. Half\n"
    "a UTF-16 unit at the end of the input is an error, told after all before it was\n"
    "written.\n"
    "\n"
    "Input of any size is handled in little memory. Only --trim, --field and --hash hold\n"
    "lines as a whole: one longer than 256 MiB is an error, and the output ends before it.\n"
    "\n"
    "Exit status: 0, or 2 if there was an error.\n"
    "\n"
    "Examples:\n"
    "  vektext --from utf16le --bom --trim ' \\t\\r'      a text from Windows, tidied\n"
    "  vektext --split : --field 1 </etc/passwd        the names of all accounts\n"
    "  vektext --lower --hash sj2                      equal lines but for case, equal hashes\n",
};

struct NamedHash {
  const char* name;
  HashFunction function;
};

constexpr NamedHash kHashes[] = {
    {"shift", veksHash_8u32u}, {"sj2", veksHashSJ2_8u32u}, {"mscs", veksHashMSCS_8u32u}};

// The byte behind "\x", or -1.
int HexByte(const std::string& digits) {
  constexpr char kDigits[] = "0123456789abcdef";
  int value = 0;
  for (const char digit : digits) {
    const char small =
        digit >= 'A' && digit <= 'F' ? static_cast<char>(digit + ('a' - 'A')) : digit;
    const char* found = small == 0 ? nullptr : std::strchr(kDigits, small);
    if (found == nullptr) {
      return -1;
    }
    value = 16 * value + static_cast<int>(found - kDigits);
  }
  return digits.size() == 2 ? value : -1;
}

class Reader {
 public:
  CommandLine<Options> Read(const std::vector<std::string>& arguments) {
    const Arguments given = ParseArguments(kManual, arguments);
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
      CheckTogether(given.operands);
    }
    if (!fault.empty()) {
      return {Kind::kFault, {}, UsageFault(kManual, fault)};
    }
    return {Kind::kWork, options, ""};
  }

 private:
  using Kind = CommandLine<Options>::Kind;

  void Apply(int id, const std::string& value) {
    switch (id) {
      case kFrom:
        ApplyEncoding(value, &options.from);
        break;
      case kTo:
        ApplyEncoding(value, &options.to);
        encodes = true;
        break;
      case kMarks:
        options.marks = true;
        break;
      case kTrim:
        options.trims = true;
        options.trimSet = Unescaped(value);
        break;
      case kSplit:
        ApplyDelimiter(value);
        break;
      case kField:
        ApplyField(value);
        break;
      case kLower:
      case kUpper:
        ApplyMapping(id == kLower ? CaseMapping::kLower : CaseMapping::kUpper);
        break;
      case kHash:
        ApplyHash(value);
        break;
      default:
        break;
    }
  }

  void ApplyEncoding(const std::string& name, Encoding* encoding) {
    if (name == "utf8") {
      *encoding = Encoding::kUtf8;
    } else if (name == "utf16le" || name == "utf16be") {
      *encoding = name == "utf16le" ? Encoding::kUtf16Le : Encoding::kUtf16Be;
    } else {
      fault = "'" + name + "' is not utf8, utf16le or utf16be";
    }
  }

  void ApplyDelimiter(const std::string& value) {
    const std::string bytes = Unescaped(value);
    if (fault.empty() && bytes.size() != 1) {
      fault = "'" + value + "' is not one byte to split at";
      return;
    }
    splits = true;
    options.delimiter = static_cast<uint8_t>(bytes.empty() ? 0 : bytes[0]);
  }

  void ApplyField(const std::string& value) {
    options.field = 0;
    for (const char digit : value) {
      const bool fits = digit >= '0' && digit <= '9' && options.field <= kLastField / 10;
      options.field = fits ? 10 * options.field + (digit - '0') : kLastField + 1;
    }
    if (options.field < 1 || options.field > kLastField) {
      fault = "'" + value + "' is not a field's number, 1 to " + std::to_string(kLastField);
    }
  }

  void ApplyMapping(CaseMapping mapping) {
    if (options.mapping != CaseMapping::kNone && options.mapping != mapping) {
      fault = "--lower and --upper exclude each other";
    }
    options.mapping = mapping;
  }

  void ApplyHash(const std::string& name) {
    const auto* found = std::find_if(std::begin(kHashes), std::end(kHashes),
                                     [&](const NamedHash& hash) { return name == hash.name; });
    if (found == std::end(kHashes)) {
      fault = "'" + name + "' is not shift, sj2 or mscs";
      return;
    }
    options.hash = found->function;
  }

  // Characters beyond ASCII are refused: taken as bytes they would cut other characters apart.
  std::string Unescaped(const std::string& text) {
    constexpr char kLetters[] = "tnr\\";
    constexpr char kMeanings[] = "\t\n\r\\";
    std::string bytes;
    for (size_t i = 0; i < text.size(); ++i) {
      if (static_cast<unsigned char>(text[i]) > 127) {
        fault = "'" + text + "' is not ASCII; give bytes as \\xHH";
      } else if (text[i] != '\\') {
        bytes += text[i];
      } else if (text.compare(i, 2, "\\x") == 0 && HexByte(text.substr(i + 2, 2)) >= 0) {
        bytes += static_cast<char>(HexByte(text.substr(i + 2, 2)));
        i += 3;
      } else {
        ++i;
        const char* letter = i < text.size() ? std::strchr(kLetters, text[i]) : nullptr;
        if (letter == nullptr) {
          fault = "unknown escape in '" + text + "'";
          break;
        }
        bytes += kMeanings[letter - kLetters];
      }
    }
    return bytes;
  }

  void CheckTogether(const std::vector<std::string>& operands) {
    if (!operands.empty()) {
      fault = "only standard input is read, '" + operands[0] + "' is too much";
    } else if (splits != (options.field > 0)) {
      fault = "--split and --field need each other";
    } else if (encodes && options.hash != nullptr) {
      fault = "--hash and --to exclude each other";
    }
  }

  bool encodes = false;
  bool splits = false;
  std::string fault;
  Options options;
};

}  // namespace

CommandLine<Options> ParseCommandLine(const std::vector<std::string>& arguments) {
  return Reader().Read(arguments);
}

}  // namespace examples::vektext
