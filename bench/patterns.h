// SPDX-License-Identifier: MIT

// The patterns that the regular expressions are measured with, compiling and searching: what
// programs look for in text, from the easiest to the hardest, and what makes them so. In ASCII text
// every engine that knows a pattern's constructs finds the same.

#ifndef VEKCH_BENCH_PATTERNS_H
#define VEKCH_BENCH_PATTERNS_H

namespace vekch_bench {

// What a pattern needs that not every engine has.
enum class Needs {
  kNothing,
  kBacktracking,  // back-references or look-around, which engines without backtracking lack
  kCategories,    // Unicode's general categories
};

struct Pattern {
  const char* name;
  const char* text;
  const char* options;  // letters of veksRegExpInit: "i" and "m" are used
  Needs needs;
  const char* why;
};

constexpr Pattern kPatterns[] = {
    {"literal, one word", "warranty", "", Needs::kNothing,
     "Easy: a substring search, and one that finds something now and then."},
    {"literal, phrase", "GNU General Public License", "", Needs::kNothing,
     "Easy: a long literal is rarely begun in vain."},
    {"literal, nothing found", "Zyzzyva quixotica", "", Needs::kNothing,
     "The easiest: bytes that the text hardly has let a search skip all of it."},
    {"5 words", "license|program|software|copyright|warranty", "", Needs::kNothing,
     "Easy where alternatives are looked for at once, else five tries at every position."},
    {"30 words",
     "about|access|because|between|change|common|condition|copyright|damage|derive|distribute|"
     "express|freedom|grant|implied|interface|library|license|modify|notice|object|patent|"
     "permission|program|publish|reason|software|source|version|warranty",
     "", Needs::kNothing,
     "Harder than five: the words begin with most letters, so that few positions are skipped."},
    {"word, either case", "warranty", "i", Needs::kNothing,
     "A substring search that has to look for two forms of each letter."},
    {"words, either case", "\\b(?:copyright|licen[cs]e|warrant(?:y|ies))\\b", "i", Needs::kNothing,
     "Neither a fixed first byte nor a fixed last one, and boundaries to test."},
    {"capitalised word", "[A-Z][a-z]+", "", Needs::kNothing,
     "No literal at all, and short matches close together: what a match costs by itself."},
    {"word in -ing", "\\w+ing", "", Needs::kNothing,
     "Hard: every word is run through to its end and given back byte by byte."},
    {"quoted string", "\"[^\"\\\\]*(?:\\\\.[^\"\\\\]*)*\"", "", Needs::kNothing,
     "One byte to begin with, then a loop in a loop that never has to give back."},
    {"date", "(\\d{4})-(\\d{2})-(\\d{2})", "", Needs::kNothing,
     "Groups to record, and a first byte of ten: other numbers end a try soon."},
    {"IPv4 address",
     "\\b(?:(?:25[0-5]|2[0-4]\\d|1?\\d?\\d)\\.){3}(?:25[0-5]|2[0-4]\\d|1?\\d?\\d)\\b", "",
     Needs::kNothing,
     "Alternatives that begin alike inside a counted group: each number is tried three ways."},
    {"e-mail address", "[\\w.+-]+@[\\w-]+\\.[\\w.-]+", "", Needs::kNothing,
     "Hard: every word might begin an address, and only its end decides. The \"@\" would be faster "
     "to look for."},
    {"URI", "[a-z][a-z0-9+.-]*://[^\\s/?#]+[^\\s?#]*(?:\\?[^\\s#]*)?(?:#\\S*)?", "",
     Needs::kNothing,
     "Hard in the same way: letters that lead to no \"://\", then classes that are shared by "
     "neighbours."},
    {"log line",
     "^(\\S+) \\S+ (\\S+) \\[([^\\]]+)\\] \"([A-Z]+) ([^ \"]+) HTTP/[0-9.]+\" (\\d{3}) (\\d+|-)$",
     "m", Needs::kNothing,
     "Anchored to lines and long: whole lines are matched, with seven groups to record."},
    {"nothing found", "\\w+\\s?@@", "", Needs::kNothing,
     "The hardest: each byte of each word begins a try that runs to the word's end in vain."},
    {"capitalised, any script", "\\p{Lu}\\p{Ll}+", "", Needs::kCategories,
     "Characters have to be decoded and looked up, where [A-Z] compares bytes."},
    {"word twice", "\\b(\\w+)\\s+\\1\\b", "", Needs::kBacktracking,
     "What is looked for depends on what was found: a group to record at every word."},
    {"price", "(?<=[$])\\d+(?:\\.\\d\\d)?", "", Needs::kBacktracking,
     "A look-behind at every digit."},
    {"word before a comma", "\\w+(?=,)", "", Needs::kBacktracking,
     "A look-ahead after every byte of a word, each but the last in vain."},
};

// Short fields that match, as programs take them apart by the million: each is searched for within
// its subjects, and matched against them from end to end.
struct Field {
  const char* name;
  const char* text;
  const char* subjects[3];
};

constexpr Field kFields[] = {
    {"number", "[-+]?\\d+(?:\\.\\d+)?", {"42", "-3.14159", "+1234567.5"}},
    {"date and time",
     "(\\d{4})-(\\d\\d)-(\\d\\d)[T ](\\d\\d):(\\d\\d):(\\d\\d)",
     {"2021-03-04T05:06:07", "1999-12-31 23:59:59", "2026-11-22T00:00:00"}},
    {"key = value", "(\\w+)\\s*=\\s*(\\S+)", {"key = value", "x=1", "log_level = warning"}},
    {"UUID",
     "[0-9a-f]{8}-(?:[0-9a-f]{4}-){3}[0-9a-f]{12}",
     {"123e4567-e89b-12d3-a456-426614174000", "00000000-0000-0000-0000-000000000000",
      "f81d4fae-7dec-11d0-a765-00a0c91e6bf6"}},
    {"e-mail",
     "([\\w.+-]+)@([\\w-]+(?:\\.[\\w-]+)+)",
     {"ada@example.org", "linus.b+lists@mail.example.com", "a@b.c"}},
    {"path",
     "(?:/[^/]+)*/([^/.]+)\\.(\\w+)",
     {"/usr/share/doc/readme.txt", "/a.b", "/var/log/syslog.1"}},
    {"colour", "#(?:[0-9a-fA-F]{6}|[0-9a-fA-F]{3})", {"#ffcc00", "#ABC", "#1e90ff"}},
    {"log line",
     "(\\S+) - (\\S+) \\[([^\\]]+)\\] \"([^\"]*)\" (\\d{3}) (\\d+)",
     {"10.0.0.1 - ada [04/Mar/2021:05:06:07 +0000] \"GET / HTTP/1.1\" 200 512",
      "192.168.17.200 - - [31/Dec/1999:23:59:59 +0000] \"POST /api/v2 HTTP/1.0\" 404 0",
      "127.0.0.1 - root [22/Nov/2026:00:00:00 +0000] \"HEAD /index.html HTTP/1.1\" 301 17"}},
};

// What is searched for in texts of a kind: languages that are not English, and patterns that ask
// for more than one position at a time.
struct TextPattern {
  const char* text;  // the file's name
  Pattern pattern;
};

constexpr TextPattern kTextPatterns[] = {
    {"russian", {"Russian, one word", "жизнь", "", Needs::kNothing, "All lead bytes are alike."}},
    {"russian",
     {"Russian, five words", "жизнь|любовь|время|деньги|человек", "", Needs::kNothing,
      "So are those of alternatives."}},
    {"russian", {"Russian, class", "[а-яё]+", "", Needs::kNothing, "Characters of two bytes."}},
    {"russian",
     {"Russian, capitalised", "[А-ЯЁ][а-яё]+", "", Needs::kNothing,
      "What begins it is decided by the second byte."}},
    {"russian", {"Russian, letters", "\\p{L}+", "", Needs::kCategories, "A property."}},
    {"russian",
     {"Russian, capitalised by property", "\\p{Lu}\\p{Ll}+", "", Needs::kCategories, ""}},
    {"russian", {"Russian, script", "\\p{Cyrillic}+", "", Needs::kCategories, ""}},
    {"russian", {"Russian, anything but spaces", "\\S+", "", Needs::kNothing, ""}},
    {"russian",
     {"Russian, word before a comma", "[а-яё]+,", "", Needs::kNothing, "The comma is rarer."}},
    {"chinese", {"Chinese, one word", "人生", "", Needs::kNothing, ""}},
    {"chinese", {"Chinese, class", "[一-龥]+", "", Needs::kNothing, "Characters of three bytes."}},
    {"chinese", {"Chinese, letters", "\\p{L}+", "", Needs::kCategories, ""}},
    {"chinese", {"Chinese, two letters", "\\p{Lo}{2}", "", Needs::kCategories, ""}},
    {"chinese", {"Chinese, five at a line's end", "[一-龥]{5}。$", "m", Needs::kNothing, ""}},
    {"search",
     {"lazy dots, quoted", "\".*?\"", "", Needs::kNothing, "Lines without a second one."}},
    {"search", {"lazy dots, between words", "the.*?of", "", Needs::kNothing, ""}},
    {"search", {"lazy dots, captured", "\\((.*?)\\)", "", Needs::kNothing, ""}},
    {"search",
     {"last word of lines", "\\w+$", "m", Needs::kNothing,
      "Each byte of each word begins a try in vain."}},
    {"search", {"last word, captured", "(\\w+)$", "m", Needs::kNothing, ""}},
    {"search", {"spaces at line ends", "[ \\t]+$", "m", Needs::kNothing, ""}},
    {"search",
     {"bounded prefix", "[a-z]{0,12}ing", "", Needs::kNothing,
      "Tries overlap: each byte of a word begins one."}},
    {"search", {"bounded prefix between spaces", "\\s[a-z]{0,12}ing\\s", "", Needs::kNothing, ""}},
    {"search", {"bounded and wide", "[a-q][^u-z]{13}x", "", Needs::kNothing, ""}},
    {"search", {"run of word bytes", "\\w+", "", Needs::kNothing, "As many matches as words."}},
    {"search", {"run without spaces", "\\S+", "", Needs::kNothing, ""}},
    {"search", {"run of small letters", "[a-z]+", "", Needs::kNothing, ""}},
    {"search", {"run of digits", "\\d+", "", Needs::kNothing, "Few matches, far between."}},
    {"search", {"run without newlines", "[^\n]+", "", Needs::kNothing, "Long matches."}},
    {"search", {"words of five", "\\b\\w{5}\\b", "", Needs::kNothing, "A try at each word."}},
    {"code", {"comments, lazy", "/\\*[\\s\\S]*?\\*/", "", Needs::kNothing, "Over lines."}},
    {"code", {"comments, unrolled", "/\\*[^*]*\\*+(?:[^/*][^*]*\\*+)*/", "", Needs::kNothing, ""}},
    {"code", {"directives", "^[ \\t]*#[ \\t]*(\\w+)", "m", Needs::kNothing, ""}},
    {"code", {"calls", "\\b(\\w+)\\s*\\(", "", Needs::kNothing, "Words that nothing follows."}},
    {"search",
     {"30 words, whole",
      "\\b(?:about|access|because|between|change|common|condition|copyright|damage|derive|"
      "distribute|express|freedom|grant|implied|interface|library|license|modify|notice|object|"
      "patent|permission|program|publish|reason|software|source|version|warranty)\\b",
      "", Needs::kNothing, "They begin with most letters, but only at words."}},
};

// What is replaced in texts, and by what.
struct Replacing {
  const char* text;
  Pattern pattern;
  const char* ours;  // the replacement, as each peer writes it
  const char* pcre2;
  const char* re2;
};

constexpr Replacing kReplacing[] = {
    {"search", {"words", "\\w+", "", Needs::kNothing, ""}, "<$&>", "<$0>", "<\\0>"},
    {"search", {"words by nothing", "\\w+", "", Needs::kNothing, ""}, "", "", ""},
    {"search", {"spaces", "\\s+", "", Needs::kNothing, ""}, " ", " ", " "},
    {"search", {"pairs", "(\\w+) (\\w+)", "", Needs::kNothing, ""}, "$2 $1", "$2 $1", "\\2 \\1"},
    {"search", {"vowels", "[aeiou]", "", Needs::kNothing, ""}, "*", "*", "*"},
    {"search", {"a word", "the", "", Needs::kNothing, ""}, "THE", "THE", "THE"},
    {"russian", {"Russian words", "[а-яё]+", "", Needs::kNothing, ""}, "<$&>", "<$0>", "<\\0>"},
    {"russian", {"letters", "\\p{L}+", "", Needs::kCategories, ""}, "<$&>", "<$0>", "<\\0>"},
    {"chinese", {"Chinese words", "[一-龥]+", "", Needs::kNothing, ""}, "<$&>", "<$0>", "<\\0>"},
};

}  // namespace vekch_bench

#endif
