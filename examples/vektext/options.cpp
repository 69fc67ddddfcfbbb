// SPDX-License-Identifier: MIT

// The table of options, what they mean, and which of them go together.

#include "options.h"

#include <algorithm>
#include <cstring>

#include "common/platform.h"

namespace examples::vektext {
namespace {

constexpr int64_t kLastField = INT32_MAX;  // no line has more

struct NamedHash {
  const char* name;
  HashFunction function;
};

constexpr NamedHash kHashes[] = {
    {"shift", veksHash_8u32u}, {"sj2", veksHashSJ2_8u32u}, {"mscs", veksHashMSCS_8u32u}};

struct NamedEncoding {
  const char* name;
  Encoding encoding;
};

constexpr NamedEncoding kEncodings[] = {{"utf8", Encoding::kUtf8},
                                        {"utf16le", Encoding::kUtf16Le},
                                        {"utf16be", Encoding::kUtf16Be},
                                        {"latin1", Encoding::kLatin1}};

using Text = const std::string&;

// The byte after "\x", or -1.
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

// Characters beyond ASCII are refused: taken as bytes they would cut other characters apart.
std::string Unescaped(Options& o, Text text) {
  constexpr char kLetters[] = "tnr\\";
  constexpr char kMeanings[] = "\t\n\r\\";
  std::string bytes;
  for (size_t i = 0; i < text.size(); ++i) {
    if (static_cast<unsigned char>(text[i]) > 127) {
      o.fault = "'" + text + "' is not ASCII; give bytes as \\xHH";
    } else if (text[i] != '\\') {
      bytes += text[i];
    } else if (text.compare(i, 2, "\\x") == 0 && HexByte(text.substr(i + 2, 2)) >= 0) {
      bytes += static_cast<char>(HexByte(text.substr(i + 2, 2)));
      i += 3;
    } else {
      ++i;
      const char* letter = i < text.size() ? std::strchr(kLetters, text[i]) : nullptr;
      if (letter == nullptr) {
        o.fault = "unknown escape in '" + text + "'";
        break;
      }
      bytes += kMeanings[letter - kLetters];
    }
  }
  return bytes;
}

// So many bytes; else a fault that says what they were for.
std::string UnescapedBytes(Options& o, Text text, size_t count, const char* purpose) {
  std::string bytes = Unescaped(o, text);
  if (o.fault.empty() && bytes.size() != count) {
    o.fault = "'" + text + "' is not " + purpose;
  }
  bytes.resize(count);
  return bytes;
}

void SetEncoding(Options& o, Text name, Encoding* encoding) {
  const auto* found = std::find_if(std::begin(kEncodings), std::end(kEncodings),
                                   [&](const NamedEncoding& one) { return name == one.name; });
  if (found == std::end(kEncodings)) {
    o.fault = "'" + name + "' is not utf8, utf16le, utf16be or latin1";
  } else {
    *encoding = found->encoding;
  }
}

// "2", "2-4", "-4" or "2-".
bool ReadRange(Text text, FieldRange* range) {
  const size_t dash = std::min(text.find('-'), text.size());
  const std::string first = text.substr(0, dash);
  const std::string last = dash < text.size() ? text.substr(dash + 1) : first;
  *range = {1, kLastField};
  return (!first.empty() || !last.empty()) && (first.empty() || ReadNumber(first, &range->first)) &&
         (last.empty() || ReadNumber(last, &range->last)) && range->first >= 1 &&
         range->first <= range->last;
}

// A list of ranges with commas or blanks between, brought in order and apart.
void SetFields(Options& o, Text list) {
  std::vector<FieldRange> ranges = o.fields;
  for (size_t begin = 0; begin <= list.size();) {
    const size_t end = std::min(list.find_first_of(", ", begin), list.size());
    FieldRange range;
    if (!ReadRange(list.substr(begin, end - begin), &range)) {
      o.fault = "'" + list + "' is not a list of fields, as 1,3-5,7-";
      return;
    }
    ranges.push_back(range);
    begin = end + 1;
  }
  std::sort(ranges.begin(), ranges.end(),
            [](const FieldRange& a, const FieldRange& b) { return a.first < b.first; });
  o.fields.clear();
  for (const FieldRange& range : ranges) {
    if (o.fields.empty() || range.first > o.fields.back().last) {
      o.fields.push_back(range);
    } else {
      o.fields.back().last = std::max(o.fields.back().last, range.last);
    }
  }
}

void SetMapping(Options& o, CaseMapping mapping) {
  if (o.mapping != CaseMapping::kNone && o.mapping != mapping) {
    o.fault = "--lower and --upper exclude each other";
  }
  o.mapping = mapping;
}

void SetHash(Options& o, Text name) {
  const auto* found = std::find_if(std::begin(kHashes), std::end(kHashes),
                                   [&](const NamedHash& hash) { return name == hash.name; });
  if (found == std::end(kHashes)) {
    o.fault = "'" + name + "' is not shift, sj2 or mscs";
  } else {
    o.hash = found->function;
  }
}

using Row = Option<Options>;

std::vector<Row> MakeRows() {
  constexpr Value kNone = Value::kNone;
  constexpr Value kRequired = Value::kRequired;
  std::vector<Row> rows = {
      {{0, "from", kRequired, "utf8|utf16le|utf16be|latin1",
        "the encoding that is read; utf8 is the default\n"
        "A byte order mark at the start of a file determines its encoding, whatever is given\n"
        "here, and is dropped; but in latin1 it is text."},
       [](Options& o, Text value) { SetEncoding(o, value, &o.from); }},
      {{0, "to", kRequired, "utf8|utf16le|utf16be|latin1",
        "the encoding that is written; utf8 is the default\n"
        "A character that latin1 lacks becomes \"?\", which is an error."},
       [](Options& o, Text value) {
         SetEncoding(o, value, &o.to);
         o.encodes = true;
       }},
      {{0, "bom", kNone, "", "write a byte order mark first"},
       [](Options& o, Text) { o.writesMark = true; }},
      {{0, "trim", kRequired, "SET", "drop the bytes of SET from both ends of each line"},
       [](Options& o, Text value) {
         o.trims = true;
         o.trimSet = Unescaped(o, value);
       }},
      {{'d', "delimiter", kRequired, "C", "fields end at every byte C; a tab is the default"},
       [](Options& o, Text value) {
         o.delimiter = static_cast<uint8_t>(UnescapedBytes(o, value, 1, "one byte to split at")[0]);
         o.delimits = true;
       }},
      {{'f', "fields", kRequired, "LIST",
        "print these fields of each line, as in 1,3-5,7-\n"
        "They come in the order of the line, each once. A line without C is printed whole."},
       SetFields},
      {{'s', "only-delimited", kNone, "", "leave out lines without C"},
       [](Options& o, Text) { o.onlyDelimited = o.delimits = true; }},
      {{0, "join", kRequired, "C", "print the byte C between fields, not the one of -d"},
       [](Options& o, Text value) {
         o.joint = static_cast<uint8_t>(UnescapedBytes(o, value, 1, "one byte to join with")[0]);
         o.delimits = true;
       }},
      {{0, "lower", kNone, "", "turn capitals into small letters (ASCII only)"},
       [](Options& o, Text) { SetMapping(o, CaseMapping::kLower); }},
      {{0, "upper", kNone, "", "turn small letters into capitals (ASCII only)"},
       [](Options& o, Text) { SetMapping(o, CaseMapping::kUpper); }},
      {{0, "replace-byte", kRequired, "AB",
        "put the byte B wherever the byte A is\nMay be given several times; they are done in "
        "turn."},
       [](Options& o, Text value) {
         const std::string bytes =
             UnescapedBytes(o, value, 2, "a byte and the one to replace it by");
         o.replacements.emplace_back(static_cast<uint8_t>(bytes[0]),
                                     static_cast<uint8_t>(bytes[1]));
       }},
      {{0, "hash", kRequired, "shift|sj2|mscs",
        "print a hash of each line\n"
        "Eight hexadecimal digits for each line, without its newline:\n"
        "  shift  h = (h << 1) ^ c, from 0: the last 32 bytes count\n"
        "  sj2    h = h * 31 + c, from 0\n"
        "  mscs   h = (h * 33) ^ c, from 5381, up to the first zero byte"},
       SetHash},
  };
  for (Row& row : CommonOptions<Options>()) {
    rows.push_back(row);
  }
  return rows;
}

const Manual kManual = {
    "vektext",
    "change text on its way from files to standard output",
    "[OPTION]... [FILE]...",
    "Changes the text of each FILE and writes it to standard output. Without FILE, or where\n"
    "FILE is \"-\", standard input is read.\n",
    {{"What is done",
      "Whatever the order of the options, this is done in turn: the text is turned into\n"
      "UTF-8, its lines are trimmed, fields are taken out, its letters are mapped, bytes are\n"
      "replaced, and it is hashed or encoded. --hash and --to, --lower and --upper exclude\n"
      "each other.\n"
      "\n"
      "A line ends at a newline, which is kept; a carriage return before it belongs to the\n"
      "line. SET, A, B and C are ASCII, or escapes: \\t, \\n, \\r, \\\\, and \\xHH for any byte.\n"
      "\n"
      "No text is refused. A byte that is no UTF-8 becomes the character of its value on the\n"
      "way to UTF-16, and a surrogate without its partner three bytes on the way back. Half\n"
      "a UTF-16 unit at the end of the input is an error, reported after all before it was\n"
      "written.\n"
      "\n"
      "Input of any size is handled in little memory. Only --trim, -f and --hash hold lines\n"
      "as a whole: one longer than 256 MiB is an error, and its file's output ends before it.\n"},
     {"Exit status", "0, or 2 if there was an error.\n"},
     {"Examples",
      "vektext --from utf16le --trim ' \\t\\r' notes.txt   a text from Windows, tidied\n"
      "vektext -d : -f 1,6 --join ' ' /etc/passwd        names and folders of all accounts\n"
      "vektext --lower --hash sj2 words                  equal lines but for case, equal "
      "hashes\n"}}};

void FinishOptions(Options& o, std::vector<std::string>& operands) {
  if (o.delimits && o.fields.empty()) {
    o.fault = "-d, -s and --join are for fields: they need -f";
  } else if (o.encodes && o.hash != nullptr) {
    o.fault = "--hash and --to exclude each other";
  }
  for (const std::string& name : operands) {
    const std::vector<std::string> names = ExpandWildcards(name);
    o.files.insert(o.files.end(), names.begin(), names.end());
  }
  if (o.files.empty()) {
    o.files.emplace_back("-");
  }
}

}  // namespace

CommandLine<Options> ParseCommandLine(const std::vector<std::string>& arguments) {
  return ReadCommandLine<Options>(kManual, MakeRows(), arguments, FinishOptions);
}

}  // namespace examples::vektext
