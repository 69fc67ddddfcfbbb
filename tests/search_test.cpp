// SPDX-License-Identifier: MIT

// Searching: oddities by name with results worked out by hand, small worlds in full and large
// patterns at random beside the model, arguments, and the stack that a search takes.
//
// Subjects lie in turn before and after a page that can't be touched; objects and results end
// at one.

#include <gtest/gtest.h>
#include <pthread.h>

#include <functional>
#include <ostream>
#include <random>

#include "regexp/characters/character_set.h"
#include "regexp/object/object_layout.h"
#include "regexp/object/record_notes.h"
#include "tests/match_model.h"

namespace vekch::test {
namespace {

constexpr int32_t kMostResults = 40;

// ---- The stack that a call takes.

constexpr size_t kPainted = 236 * 1024;

// The bytes below the caller's frame: written from above, as the system grows a stack, or looked
// through for the lowest that was written since.
[[gnu::noinline]] size_t PaintStack(bool paints) {
  constexpr size_t kOwnFrame = 256;
  auto* top = static_cast<volatile uint8_t*>(__builtin_frame_address(0));
  size_t depth = paints ? kOwnFrame : kPainted;
  for (; paints && depth < kPainted; ++depth) {
    *(top - depth) = 0xA5;
  }
  while (!paints && depth > kOwnFrame && *(top - depth + 1) == 0xA5) {
    --depth;
  }
  return depth;
}

// How a search is run.
struct Setting {
  std::string options = {};
  int32_t format = 1;
  int32_t limit = kDefaultLimit;
  int32_t room = kMostResults;
};

class Bench {
 public:
  bool Compile(const std::string& text, const Setting& how) {
    pattern = text;
    setting = how;
    if (objects.Compile(pattern, setting.options.c_str()) != StatusNoError) {
      return false;
    }
    usedObjects.Compile(pattern, setting.options.c_str());
    veksRegExpSetMatchLimit(kCheapLimit, usedObjects.State());
    subject = subjects.AtStart();
    length = 0;
    for (int32_t i = 0; i < kSearchesToPlan; ++i) {
      AskLibrary(usedObjects);
    }
    freshSearches = 0;
    Set(how);
    return true;
  }

  void Set(const Setting& how) {
    setting = how;
    for (const PatternObject* each : {&objects, &usedObjects}) {  // null is refused
      veksRegExpSetFormat(how.format, each->State());
      veksRegExpSetMatchLimit(how.limit, each->State());
    }
  }

  void Place(const std::string& bytes) {
    isAtEnd = !isAtEnd;
    subject = isAtEnd ? subjects.AtEnd(bytes.size()) : subjects.AtStart();
    length = static_cast<int32_t>(bytes.size());
    std::memcpy(subject, bytes.data(), bytes.size());
  }

  SearchAnswer AskModel(int64_t mostSteps = INT64_MAX) const {
    return AnswerOfModel(*State(), subject, length, setting.room, mostSteps);
  }

  SearchAnswer AskLibrary() { return AskLibrary(objects); }

  SearchAnswer AskLibrary(const PatternObject& object) {
    const RegExpFindResult unwritten = {subject, -77};
    auto* found = reinterpret_cast<RegExpFindResult*>(
        results.AtEnd(static_cast<size_t>(setting.room) * sizeof(RegExpFindResult)));
    std::fill_n(found, setting.room, unwritten);
    SearchAnswer answer;
    answer.count = setting.room;
    if (measuresStack) {
      PaintStack(true);
    }
    answer.status = veksRegExpFind_8u(subject, length, object.State(), found, &answer.count);
    if (measuresStack) {
      stackTaken = PaintStack(false);
    }
    if (answer.status >= 0) {
      answer.results.assign(found, found + answer.count);
      // What comes after them was not written.
      EXPECT_TRUE(std::all_of(found + answer.count, found + setting.room,
                              [](const RegExpFindResult& each) { return each.length == -77; }))
          << Describe();
    }
    return answer;
  }

  std::string Show(const SearchAnswer& answer) const { return test::Show(answer, subject); }

  std::string Describe() const {
    return "/" + pattern + "/" + setting.options + " format " + std::to_string(setting.format) +
           " limit " + std::to_string(setting.limit) + " room " + std::to_string(setting.room) +
           " on " + testing::PrintToString(std::string(subject, subject + length));
  }

  // Each object is to answer as the model does: a fresh one, and one that was searched with before.
  // False if it is too much work for the model.
  bool CompareWithModel() {
    const SearchAnswer expected = AskModel(kMostSteps);
    if (expected.isComplete) {
      if (freshSearches++ == kSearchesToPlan - 1) {
        objects.Compile(pattern, setting.options.c_str());
        Set(setting);
        freshSearches = 1;
      }
      Expect(expected, AskLibrary(), "a fresh object");
      Expect(expected, AskLibrary(usedObjects), "a used object");
    }
    return expected.isComplete;
  }

  RegExpState* State() const { return objects.State(); }

  Setting setting;
  bool measuresStack = false;
  size_t stackTaken = 0;

 private:
  // In short subjects, the search from which on positions are passed over by a plan.
  static constexpr int32_t kSearchesToPlan = 5;
  static constexpr int64_t kMostSteps = 100000;
  static constexpr int32_t kCheapLimit = 40;  // at which no pattern takes long
  static constexpr size_t kLongest = 20000;   // pattern

  void Expect(const SearchAnswer& expected, const SearchAnswer& answer, const char* whose) const {
    EXPECT_TRUE(answer.status == expected.status && answer.count == expected.count &&
                answer.results == expected.results)
        << Describe() << " by " << whose << "\nexpected " << Show(expected) << "\nbut got  "
        << Show(answer);
  }

  std::string pattern;
  PatternObject objects{kLongest};
  PatternObject usedObjects{kLongest};  // searched with before
  GuardedBuffer subjects{1 << 21};
  GuardedBuffer results{kMostResults * sizeof(RegExpFindResult)};
  int32_t freshSearches = 0;
  uint8_t* subject = nullptr;
  int32_t length = 0;
  bool isAtEnd = false;
};

// ---- Oddities.

struct Oddity {
  const char* name;
  const char* pattern;
  std::string subject;
  const char* expected;  // as Bench::Show shows it
  Setting setting = {};
};

const Oddity kOddities[] = {
    // What consumes.
    {"a literal of a dissolved group folds", "(?:a)\\x{E9}+", "A\u00C9", "0+3", {"i"}},
    {"an empty repetition of a lazy atomic group counts", "(?>())*?\\1", "a", "0+0 0+0"},
    {"a short subject fails a counted repetition", "a{2,3}", "a", ""},
    {"letters fold in ASCII alone", "k\u00C9", "K\u00E9", "", {"i"}},
    {"bytes that differ in the case bit, but are no letters", "[@`]@", "``", "", {"i"}},
    {"an empty back-reference before a byte", "(a*)b\\1", "bc", "0+1 0+0"},
    {"an optional back-reference at the end", "(a*)b\\1?", "b", "0+1 0+0"},
    {"a back-reference to a group without a part", "(a)|b\\1", "b", ""},
    {"a back-reference folds", "(a)\\1", "aA", "0+2 0+1", {"i"}},
    {"a group that is open has captured nothing yet", "(a\\1b)", "ab", "0+2 0+2"},
    {"a class takes a whole character", "[^a]", "\u00E9", "0+2"},
    {"and in the byte format one byte", "[^a]", "\u00E9", "0+1", {"", 0}},
    {"a byte of a class is a character's value", "[\\xE9x]", "\u00E9", "0+2"},
    {"a range folds", "[a-c]", "B", "0+1", {"i"}},
    {"a property doesn't fold", "\\p{Lu}", "a", "", {"i"}},
    {"a negated property in a negated class", "[^\\P{L}]", "1a", "1+1"},
    {"a negated name is the complement of all its items", "[[:^alnum:]]", "aB1-", "3+1"},
    {"\\C splits characters", "\\C\\C", "\u00E9", "0+2"},
    {"a character and its marks", "\\X", "e\xCC\x81x", "0+3"},
    {"a mark alone is no \\X", "(\\X)", "\xCC\x81", ""},
    {"a sequence that the subject cuts off", "(.)", "\xE2\x82", "0+1 0+1"},
    {"a byte that is no UTF-8 is its own code point", "\\x{E9}", "\xE9", "0+2"},
    {"whose length in UTF-8 may pass the end, where all ends", "\\x{E9}", "\xE9\xE9", "0+2", {"g"}},
    {"a code point folds to one of another length", "\\x{2C65}", "\xC8\xBA", "0+3", {"i"}},
    {"an atomic group goes on where that length leads", "(?>\\x{E9})b", "\xE9xb", "0+3"},
    {"merged repetitions are greedy", "..+?", "abc", "0+3"},
    // What means something else than in other engines.
    {"escapes of other engines are letters", "\\h\\H\\V\\R\\K\\N\\L\\U", "hHVRKNLU", "0+8"},
    {"with what follows them as text", "\\u0041(a)\\g{1}\\k<n>\\o{1}", "u0041agk<n>o", "0+12 5+1"},
    {"a word boundary and text", "\\b{wb}", "a{wb}", "1+4"},
    {"a class ends at the first bracket", "[a[bc]]", "[]", "0+2"},
    {"and knows no intersection", "[a-z&&e]", "&", "0+1"},
    {"a name without its class is one", "[:alpha:]", "p", "0+1"},
    {"captures before such a name are hidden", "[[:^q]](x)[:alpha:]]", "q]xa]", "0+5"},
    {"though others be counted", "(b)(?:[[:^q]]((x)|y)[:alpha:]])*", "bq]xa]q]ya]", "0+11 0+1"},
    {"no times, and a lowest number left out", "a{}b{,2}", "abbb", "0+0 1+2 3+1 4+0", {"g"}},
    {"no quantifiers", "a{2b{ 2 }", "a{2b{ 2 }", "0+9"},
    {"a byte against itself", "\\xE9", "\xE9", "0+1"},
    {"a range folds in ASCII alone", "[\\x{E0}-\\x{FE}]", "\u00C9", "", {"i"}},
    {"a code point from U+0100 on folds as a member", "[\u03B1]", "\u0391", "0+2", {"i"}},
    {"punctuation is more than that", "[[:punct:]]+", "a \u00E9\u03B1", "1+3"},
    {"properties of more than one category", "\\p{^Lu}\\p{L&}", "aA", "0+2"},
    {"what an atomic group captured stays", "(?>(a))b|ac", "ac", "0+2 0+1"},
    {"an empty alternative at top level wins again", "^|.", "ab", "0+0 0+0 1+1", {"g"}},
    // Assertions.
    {"$ without option m", "a$", "a\na\n", "2+1"},
    {"every line start, and no other position", "^abc", "abcabc\nabc", "0+3 7+3", {"gm"}},
    {"the start alone", "^abc", "x\nabc", ""},
    {"an optional anchor is none", "^*abc", "xabc", "1+3"},
    {"a repeated assertion is tested once", "x\\b{2}", "xx", "1+1"},
    {"an optional assertion is not tested", "x\\b{0,2}", "xx", "0+1"},
    {"the implicit anchor belongs to the first alternative", ".*b|c", "\nac", "2+1"},
    // Groups.
    {"a repetition of nothing is the last one", "(a|)*b", "b", "0+1 0+0"},
    {"even where more are due", "(|a){2}", "a", "0+0 0+0"},
    {"none at most", "(a){0}b", "ab", "1+1 -"},
    {"a capture goes back with its repetition", "(a|b)*b", "abb", "0+3 1+1"},
    {"a failed repetition leaves the one before in peace", "(?:(a|ab)c?)*d", "abcd", "0+4 0+2"},
    {"alternatives in their order", "(a|ab)(c|bcd)(d*)", "abcd", "0+4 0+1 1+3 4+0"},
    {"a lazy group first skips", "(a)*?(b?)", "ab", "0+0 - 0+0"},
    {"a lazy group takes what it must", "(a){2,}?(a*)", "aaa", "0+3 1+1 2+1"},
    {"options end with their group", "(?:a(?i)b)c", "aBC", ""},
    {"and hold in its later alternatives", "((?i)a|b)c", "Bc", "0+2 0+1"},
    {"but not in its next repetition", "(?:a(?i)|b)*c", "aAc", "2+1"},
    {"options hold in later alternatives at top level", "(?i)a|b", "B", "0+1"},
    {"a condition that holds not", "(a)?(?(1)x|y)", "y", "0+1 -"},
    {"a condition that holds", "(a)?(?(1)x|y)", "ax", "0+2 0+1"},
    {"the other branch is never tried", "(?(?=a)ab|ac)", "ac", ""},
    {"a condition without a second branch", "(a)?(?(1)b)c", "abc c", "0+3 0+1"},
    // Look-arounds and atomic groups.
    {"an atomic group gives nothing back", "(?>a*)a", "aaa", ""},
    {"but whole repetitions", "(?>ab)*ab", "abab", "0+4"},
    {"captures of one that should not match stay", "(?:(?!(ab))x|a)", "ab", "0+1 0+2"},
    {"until the next start", "(?=(a))x|b", "ab", "1+1 -"},
    {"too little before it", "(?<=ab)c|(?<!ab)b", "bc", "0+1"},
    {"literal text of a look-behind counts in bytes, the way back in characters", "(?<=\u00E9)b",
     "x\u00E9b", ""},
    {"which meet at the start", "(?<=\u00E9)b", "\u00E9b", "2+1"},
    {"a code point in a look-behind", "(?<=\\x{E9})b", "x\u00E9b", "3+1"},
    {"the way back in characters in the byte format too", "(?<=.)b", "\u00E9b", "2+1", {"", 0}},
    // Where the search begins and ends.
    {"nothing is seen after the last literal that is needed", "(?=a\n)a", "a\n", ""},
    {"it is the end there", "(?=a$)a", "ab", "0+1"},
    {"alternatives of literals: the earliest", "cat|dog", "hotdog cat", "3+3"},
    {"of two at one position the first", "ab|abc", "abc", "0+2"},
    {"a literal at the start, though none of it is needed", "a*?b", "bab", "1+2"},
    {"found by folding", "a+b", "xAB", "1+2", {"i"}},
    {"nothing inside a character", "(\xA9)", "\u00E9", ""},
    {"unless the literal is looked for", "\xA9", "\u00E9", "1+1"},
    {"or bytes are", "(\xA9)", "\u00E9", "1+1 1+1", {"", 0}},
    {"fewer results than groups", "(a)(b)(c)", "abc", "truncated 0+3", {"", 1, kDefaultLimit, 1}},
    // Every match.
    {"groups alone", "(a)(b)?", "aab", "0+1 - 1+1 2+1", {"g"}},
    {"room for less than a match", "(a)(b)", "abab", "truncated 0+1", {"g", 1, kDefaultLimit, 1}},
    {"room for less than two", "(a)(b)", "abab", "0+1 1+1 2+1", {"g", 1, kDefaultLimit, 3}},
    {"after an empty match one byte is tried", "(?:|ab|a)", "ab", "0+0 0+1 1+0 2+0", {"g"}},
    {"as if it were the last", "(?:|a$)", "ab", "0+0 0+1 1+0 2+0", {"g"}},
    {"but for word boundaries", "(?:|a\\b)", "ab", "0+0 1+0 2+0", {"g"}},
    {"an alternative at top level may be empty again", "|a", "a", "0+0 0+0 1+0", {"g"}},
    {"an empty look-ahead is refused with the match", "(?=a)a|x*", "a", "0+1 1+0", {"g"}},
    // Limits.
    {"no depth at all", "a", "a", "limit 0", {"", 1, 3}},
    {"alternatives of literals need none", "a|b", "b", "0+1", {"", 1, 0}},
    {"an abort after a byte stays one", "a(b)", "ac", "limit 0", {"", 1, 4}},
    {"after a run it is a match", "ab(c)", "abd", "0+2 -", {"", 1, 4}},
    {"after a type it is a failure", ".(b)", "ac", "", {"", 1, 4}},
    {"failures that cost too many steps", "a*(b)", "aaaaaa", "limit 2", {"", 1, 4}},
    {"with every match the elements stay as many", "a*(b)", "aaaaaa", "limit 40", {"g", 1, 4}},
    {"a repetition that has no depth left", "(a)*", "aaaa", "0+1 0+1", {"", 1, 24}},
    {"as much as the depth allows", "^(?:ab)*$", Repeat("ab", 1248), "0+2496"},
    {"more has no status", "^(?:ab)*$", Repeat("ab", 1249), ""},
    {"but ends as if there were no more repetitions", "(?:ab)*", Repeat("ab", 2000), "0+2496"},
};

TEST(SearchTest, Oddities) {
  Bench bench;
  for (const Oddity& test : kOddities) {
    ASSERT_TRUE(bench.Compile(test.pattern, test.setting)) << test.name;
    bench.Place(test.subject);
    EXPECT_EQ(bench.Show(bench.AskLibrary()), test.expected) << test.name;
    EXPECT_EQ(bench.Show(bench.AskModel()), test.expected) << test.name << ", by the model";
    bench.CompareWithModel();
  }
}

// ---- Small worlds.

// Lists are separated by spaces.
struct World {
  const char* name;
  const char* words;  // of patterns
  size_t mostWords;
  const char* letters;  // of subjects
  size_t mostLetters;
  const char* options;
  size_t least;           // patterns that compile
  int32_t lastLimit = 0;  // all below the default up to this one are tried, in steps
  int32_t step = 1;
  bool asBytesToo = false;
  std::string before = "";  // of each pattern
};

// Is passed over at once, and leaves no room in the object for the set of a class after it, nor
// for a plan.
std::string ClassesThatTakeTheRoom() {
  return "(?:" + Repeat("[qr]", RegExpFixedSize / sizeof(regexp::CharacterSet) + 1) + "){0}";
}

TEST(SearchTest, ClassesTakeTheRoom) {
  Bench bench;
  ASSERT_TRUE(bench.Compile(ClassesThatTakeTheRoom() + "[^ab]", {}));
  const ProgramNode& last = regexp::ProgramOf(bench.State())[bench.State()->nodeCount - 3];
  EXPECT_EQ(last.op, OpClass);
  EXPECT_EQ(regexp::SetOf(last), nullptr);
}

const std::string kLevels = "(?: -- " + Repeat("\\B", 50) + " )* ){2,} cdefghi[-]";
const char kAll[] =
    "a b \u00E9 \n . [^a] \\w \\1 \\C \\X \\x{E9} ^ $ \\b "
    "| ( ) (?: (?= (?! (?> (?<= (?(1) (?i) * +? {2}";

const World kWorlds[] = {
    {"AllWords", kAll, 3, "a b \n \u00E9", 3, " m g gm", 4000, -1, 1, true},
    {"AllWordsWithLimits", kAll, 3, "ab\u00E9 aab\na", 1, " gi", 4000, 60},
    {"Groups", "a b | ( ) * ?? {2} \\1", 6, "a b", 3, "", 4000, -1},
    {"GroupsWithLimits", "a | ( ) * +? (?>", 6, "aaa", 1, " g", 4000, 48},
    {"WithoutRoom", "a [^a] [a\u00E9] [^\\W] \\w . * +? {2} | ( )", 4, "a \u00E9 \xA9", 3, "", 2000,
     -1, 1, true, ClassesThatTakeTheRoom()},
    {"Literals", "a b ab \\x{E9} \u00E9 . (?=ab)* (?: ) * +? | (?i) c", 4, "a b \u00E9 C", 3, " g",
     4000, -1},
    {"OwnLengths", "(?> ( ) | \\x{E9} \\x{2C65} a * .", 5, "\xE9 a \xC8\xBA", 3, " gi", 4000, -1},
    {"RunsWithLimits", "( ) | [a][b] *", 6, "bbbbbbcabc abcbbbbbbbbbbbbbbcabcb", 1, " g", 500, 60,
     1, false, "[ab]+c"},
    {"LevelsWithLimits", kLevels.c_str(), 5, "-------\t-------c", 1, "", 100, 900, 4},
};

void PrintTo(const World& world, std::ostream* out) { *out << world.name; }

class SmallWorlds : public testing::TestWithParam<World> {};

TEST_P(SmallWorlds, LikeTheModel) {
  const World& world = GetParam();
  const Words subjects = AllTexts(Split(world.letters), world.mostLetters);
  const Words allOptions = Split(world.options);
  std::vector<int32_t> limits = {kDefaultLimit};
  for (int32_t limit = world.lastLimit; limit >= 0; limit -= world.step) {
    limits.push_back(limit);
  }
  Bench bench;
  size_t number = 0;
  size_t compiled = 0;
  for (const std::string& pattern : AllTexts(Split(world.words), world.mostWords)) {
    for (const std::string& options : allOptions) {
      if (!IsInShare(++number) || !bench.Compile(world.before + pattern, {options})) {
        continue;
      }
      ++compiled;
      // Each pattern in both formats, and each option, but not every pair of them.
      const bool asBytes = world.asBytesToo && (number + number / allOptions.size()) % 2 != 0;
      for (const int32_t limit : limits) {
        bench.Set({options, asBytes ? 0 : 1, limit});
        for (const std::string& subject : subjects) {
          bench.Place(subject);
          ASSERT_TRUE(bench.CompareWithModel()) << bench.Describe();
          if (HasFailure()) {
            return;
          }
        }
      }
    }
  }
  EXPECT_GT(compiled, world.least / kShare);
}

INSTANTIATE_TEST_SUITE_P(Of, SmallWorlds, testing::ValuesIn(kWorlds),
                         [](const auto& world) { return std::string(world.param.name); });

// ---- Large patterns, at random.

class Author {
 public:
  explicit Author(unsigned seed) : engine(seed) {}

  size_t Below(size_t limit) { return engine() % limit; }
  bool Chance(size_t percent) { return Below(100) < percent; }
  std::string Pick(const Words& words) { return words[Below(words.size())]; }

  std::string Pattern() {
    groups = 0;
    const std::string before = Chance(5)   ? ClassesThatTakeTheRoom()
                               : Chance(8) ? Pick({"[ab]+c", "\\w+-", "[^\\n]+\n", "[a-c]*(?=1)"})
                                           : "";
    return before + Alternatives(3);
  }

  std::string Subject() {
    static const Words kLetters =
        Split("a a b b c A 1 \t \n \u00E9 \u00C9 e\u0301 \u4E2D \xC3 \xE9 \xC8\xBA");
    std::string text;
    for (size_t left = Below(9); left > 0; --left) {
      text += Pick(kLetters);
    }
    return text;
  }

 private:
  std::string Alternatives(size_t depth) {
    std::string text = Sequence(depth);
    while (Chance(30)) {
      text += "|" + (Chance(85) ? Sequence(depth) : "");
    }
    return text;
  }

  std::string Sequence(size_t depth) {
    std::string text;
    for (size_t left = 1 + Below(3); left > 0; --left) {
      text += Item(depth);
    }
    return text;
  }

  std::string Item(size_t depth) {
    static const Words kPlain = Split("a b c ab abc \u00E9 . \\d \\w \\W \\s \\S");
    static const Words kRare = Split(
        "[ab] [^a] [a-c\u00E9] [[:^alpha:]] [^\\PL\\d] \\pL \\P{Lu} \\p{Any} \\p{Han} \\x{E9} "
        "\\x{4E2D} \\C \\X \\x{2C65} \\x{E9}");
    static const Words kAsserts =
        Split("^ $ \\b \\B \\A \\G \\z \\Z (?i) (?-i) (?s-m) (?=ab)* (?!a)?");
    static const Words kOpenings = Split("(?: (?: (?> (?i: (?= (?!");
    const size_t kind = depth == 0 ? Below(55) : Below(100);
    if (kind < 32) {
      return Pick(kPlain) + Quantifier();
    }
    if (kind < 47) {
      return Pick(kRare) + Quantifier();
    }
    if (kind < 53) {
      return Pick(kAsserts);
    }
    if (kind < 55) {
      return (groups == 0 ? "a" : "\\" + std::to_string(1 + Below(groups))) + Quantifier();
    }
    if (kind < 75) {
      ++groups;
      return "(" + Alternatives(depth - 1) + ")" + Quantifier();
    }
    if (kind < 93) {
      return Pick(kOpenings) + Alternatives(depth - 1) + ")" + Quantifier();
    }
    if (kind < 96) {
      return Pick({"(?<=", "(?<!"}) + Pick(kPlain) + Pick(kPlain) + ")";
    }
    const std::string condition = groups > 0 && Chance(50)
                                      ? "(" + std::to_string(1 + Below(groups)) + ")"
                                      : Pick({"(?=", "(?!", "(?<="}) + Pick(kPlain) + ")";
    return "(?" + condition + Sequence(depth - 1) + (Chance(70) ? "|" + Sequence(depth - 1) : "") +
           ")" + Quantifier();
  }

  std::string Quantifier() {
    static const Words kTimes = Split("* + ? *? +? {2} {1,2} {0,1}? {2,} {1,3}? {0}");
    return Chance(45) ? Pick(kTimes) : "";
  }

  std::mt19937 engine;
  size_t groups = 0;
};

// Patterns of an author, each with some subjects; how many cases were compared.
template <class Write, class Place>
size_t CompareRandom(Author* author, size_t patterns, size_t subjects, Write write, Place place) {
  Bench bench;
  size_t compared = 0;
  size_t tooMuch = 0;
  for (size_t left = patterns / kShare; left > 0; --left) {
    const std::string pattern = write();
    const std::string options = author->Pick(Split("  s m i g gi gm"));
    if (!bench.Compile(pattern, {options})) {
      continue;
    }
    for (size_t times = 0; times < subjects; ++times) {
      const auto room =
          static_cast<int32_t>(author->Chance(80) ? kMostResults : 1 + author->Below(6));
      const auto limit = static_cast<int32_t>(
          author->Chance(50) ? kDefaultLimit : author->Below(author->Chance(70) ? 150 : 900));
      bench.Set({options, author->Chance(25) ? 0 : 1, limit, room});
      bench.Place(place());
      ++(bench.CompareWithModel() ? compared : tooMuch);
      if (testing::Test::HasFailure()) {
        return 0;
      }
    }
  }
  EXPECT_LE(tooMuch, compared / 100);
  return compared * kShare;
}

TEST(SearchTest, LargePatternsLikeTheModel) {
  Author author(20260);
  EXPECT_GT(
      CompareRandom(
          &author, 60000, 6, [&] { return author.Pattern(); }, [&] { return author.Subject(); }),
      200000U);
}

// Long enough for positions to be looked for, 64 at a time too, in every way that there is.
TEST(SearchTest, LongSubjectsLikeTheModel) {
  Words sought = Split(
      "abc a c [ab]c \\bab \\b[ab]+c a*bc [a-c]+b \\w+c (\\w+)a \\w+(?=b) (?<=a)b (?<=ab). "
      "abc|bca|cab abcb|cab ab|bc b|c (?:ab|b)c .*b (?:.*)c ^a ^(\\w+)b [abc]{2}- "
      "[abc]{4,}c a(b)?c \u00E9a \\pL\\w [^-]b (a|b)\\1 (?i:AB)c \\p{Lu}a \\x{E9}[ab] [ab]c[ab]c "
      "(ab|c)+a$ \\C\\xA9b a+?- [\u00E9-]+a \\w+ [ab] \\S{2,} \\W+$ \\w+\\Z \\w{2,}\\z \\pL+$ "
      "\\P{Lu}+ [a\u00E9]+ [\u00C0-\u00FF]a \\p{Lu}\\pL*- [\u4E00-\u9FA5]{2} \\p{Han}c? "
      "[^\\x{E9}a]b "
      "[ab]{0,5}c ([ab]+)$ (\\w+) ([ab]){0}\\w+ (\\w+)[-\n]c \\S+?a\\s ((?:[a-c]+))(?!\\W) "
      "\\s[a-c]{0,9}b\\s [^-]{1,7}c\\n \\b(?:abc|[b]ca|cab)\\b \\b(?:abc|cab)\\w (abc|bcab)[ab-] "
      "(?i:abca|bcb)c? c[^-]*?- c[^\\d]*?(?:\u00E9|-) (\\n\\W+?)[\u00E9c]");
  sought.insert(sought.end(), {"^\\S+ +b", "\\W\\w+ b", "[^ac\\d -]+", " .*?b"});
  Author author(20261);
  const auto subject = [&] {
    std::string text;
    while (text.size() < 130 || author.Chance(70)) {
      text += std::string(author.Below(70), author.Pick({"-", " ", "\n", "\xA9", "c"})[0]);
      text += author.Chance(50) ? author.Subject() : author.Pick({"abc", "ab", "bc", "AB"});
    }
    return text;
  };
  EXPECT_GT(
      CompareRandom(
          &author, 6000, 3,
          [&] { return author.Chance(70) ? author.Pick(sought) : author.Pattern(); }, subject),
      15000U);
}

TEST(SearchTest, WordsAtEveryPlaceOfALongText) {
  Bench bench;
  ASSERT_TRUE(bench.Compile("\\b\\w{5}\\b", {}));
  for (size_t before = 0; before < 130; ++before) {
    bench.Place(std::string(before, ' ') + "ab abcde" + std::string(130, ' '));
    EXPECT_EQ(bench.Show(bench.AskLibrary()), std::to_string(before + 3) + "+5");
  }
}

// ---- What is rare: limits of fused operations, forms that are no UTF-8, ends at the ends of
// blocks.

struct Corner {
  std::string pattern;
  std::string subject;
  const char* options = "";
};

const std::string kDashes = Repeat("-", 130);
const std::string kAlmost = "b" + Repeat("x", 20);

const Corner kCorners[] = {
    {"(?(9)a|b)|[[:alpha:x]:]]", "ab:x:]]"},
    {"[^\\W]x|[\\w\u00E9]+y|[\\Xa]+z", kDashes + "\u00E9abz ax \u00E9y"},
    {"[^\\x{E9}a]x", kDashes + "ax\xF8\x88\x80\x80\x80x"},
    {"[^\u03B1a]x", kDashes + "\xC1\x81x\xE0\x80\x81x--", "g"},
    {"[\u03B1a]+x", kDashes + "\u03B1aax"},
    {"[ab]" + Repeat("x", 130) + "[cd]", kAlmost + kDashes + "b" + Repeat("x", 130) + "d" + kAlmost,
     "g"},
    {"[ab]" + Repeat("x", 130) + "[cd]", kAlmost + kDashes + "B" + Repeat("xX", 65) + "D" + kAlmost,
     "gi"},
    {"k+[kx]", kDashes + "kKkKX KkKKkkKkkKkkKKkKX", "gi"},
    {"[ab][a-z]*?\\d", kDashes + Repeat("a", 40) + "1"},
    {Repeat("()", 69) + "(a)\\70", kDashes + "aa"},
    {"\\w+", Repeat("-", 100) + Repeat("a", 28)},
    {"\\w+\\Z", ""},
    {"\\w+\\Z", "aaa"},
    {"(?:b?(?:b?(?:b?(?:b?(?:b?(?:b?(?:b?(?:b?(?:b?(?:b?(?:b?(?:b?a)*)*)*)*)*)*)*)*)*)*)*)*-",
     "bab-"},
    {"(((((ab)c)d)e)f)[gh]", kDashes + "abcdefg"},
    {Repeat("(a)(b)", 9) + "[cd]", kDashes + Repeat("ab", 9) + "c"},
    {"x(?:()){2}(?:(?:ab)+c){3}d?", kDashes + "xabcababcabc"},
    {"[0-9]+-(?i)abc?", kDashes + "12-aBC"},
    {"\\b\\w{5}\\b", Repeat(" ", 300)},
    {"(?>a|bc)*(?>b|cd)*x", kDashes + "abcabcdbx"},
    {"(?>\\x{E9}){2}b?", "\xE9"},
    {"(?>\\x{E9}){0,2}?[bc]", "\xE9\xE9"},
    {"(\\C|\\X){3,}?c", "ababc"},
    {"\\p{Ll}n(?:g-?)*[cd]", "an" + Repeat("g-", 60) + "c and bngc", "g"},
    {"^(?:" + Repeat("[ab]", 8) + ")*[cd]", Repeat("ab", 640) + "c"},
    {"(?=" + Repeat("a\\B", 40) + ")[a-z][cd]", Repeat("a", 200)},
};

TEST(SearchTest, CornersLikeTheModel) {
  Bench bench;
  for (const Corner& test : kCorners) {
    for (const int32_t limit : {kDefaultLimit, 250, 120, 60}) {
      ASSERT_TRUE(bench.Compile(test.pattern, {test.options, 1, limit})) << test.pattern;
      bench.Place(test.subject);
      for (int32_t times = 0; times < 6; ++times) {
        EXPECT_TRUE(bench.CompareWithModel()) << bench.Describe();
      }
    }
  }
}

// With a class of ever more items, which leave room for less and less of the tables; groups that
// are passed over take less than an item.
TEST(SearchTest, TablesWithoutRoom) {
  Bench bench;
  const std::string subject = Repeat("abcab-\u00E9xa", 15) + "caax\u03B1ad";
  for (size_t size = 4 * 220; size < 4 * 256; ++size) {
    const std::string before = size % 4 == 0 ? "[" : "(?:" + Repeat("()", size % 4) + "){0}[";
    const std::string members = Repeat("a", size / 4) + "b";
    for (const std::string rest :
         {"]+", "]+b", "](?:a|b)", "]+$", "\u00E9]+", "]+[bc]+x", "]+?[bc]+?d", "](?:\\pL|-)+?x",
          "]\\pL+[^d]+d", "](?:a|c-?)*x", "](?:(a)|(c)-)*(?i:X)(\\C)", "]\\C{2,}?d", "][^x]+?d",
          "]\\W+?x(a)(d)?"}) {
      ASSERT_TRUE(bench.Compile(before + members + rest, {}));
      bench.Place(subject);
      EXPECT_TRUE(bench.CompareWithModel()) << size << rest;
    }
  }
}

// ---- The stack.

// As the header says.
constexpr size_t kStackPerLevel = 72;
constexpr size_t kStackBeyond = 61440;

constexpr size_t kSmallStack = (kIsInstrumented ? 4096 : 256) * 1024;
constexpr size_t kModelStack = 64 << 20;

using Work = std::function<void()>;

void RunInThread(size_t stackSize, Work work) {
  const auto run = [](void* what) -> void* {
    (*static_cast<Work*>(what))();
    return nullptr;
  };
  pthread_t thread;
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, stackSize), 0);
  ASSERT_EQ(pthread_create(&thread, &attributes, run, &work), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
}

// Searches with no more stack than the header names for the limit.
SearchAnswer AskWithinStack(Bench* bench) {
  SearchAnswer answer;
  bench->measuresStack = !kIsInstrumented;
  RunInThread(kSmallStack, [&] { answer = bench->AskLibrary(); });
  EXPECT_LE(
      bench->stackTaken,
      kStackPerLevel * static_cast<size_t>(bench->setting.limit / RegExpDepthShare) + kStackBeyond)
      << bench->Describe().substr(0, 99);
  return answer;
}

struct Hungry {
  std::string pattern;
  std::string subject;
};

std::string Nest(const std::string& opening, size_t depth, const std::string& inside,
                 const std::string& closing = ")") {
  return Repeat(opening, depth) + inside + Repeat(closing, depth);
}

// Words of one to five letters, in runs of one length and in any order.
std::string Mixture(size_t size) {
  Author author(20262);
  std::string all;
  while (all.size() < size) {
    const std::string word = author.Pick({"a", "bc", "def", "ghijk"});
    all += Repeat(word, author.Chance(95) ? 1 : author.Below(600));
  }
  return all;
}

const Hungry kHungry[] = {
    {"^(a)*[bc]", Repeat("a", 5000)},
    {"^(?:a|b)*?[cd]", Repeat("ab", 3000)},
    {"^(?:(a)|(b))*[cd]", Repeat("ab", 3000)},
    {"^(?:a(b)*?)*[cd]", Repeat("abb", 2000)},
    {"^(?:a(?=b)b(?<=b)(?!b))*[cd]", Repeat("ab", 3000)},
    {"^((?>a)(?(2)|b))*[cd]", Repeat("ab", 3000)},
    {"^(?:(a)(?(1)b|c))*[cd]", Repeat("ab", 3000)},
    {"^(?:(?(?=a)a|b)(?i:B))*[cd]", Repeat("ab", 3000)},
    {"^(?>a)*[bc]", Repeat("a", 90000)},
    {"^(?>a)*?[bc]", Repeat("a", 90000)},
    {"^(?>a|b){2,}[bc]", Repeat("ab", 40000)},
    {"^" + Repeat("a.", 1300), Repeat("a", 2600)},
    {"^" + Repeat("[ab]", 1300), Repeat("a", 2600)},
    {"^" + Repeat("ab?(?i)(?-i)", 900), Repeat("a", 2600)},
    {"^" + Repeat("\\pL\\x{E9}\\C\\X", 700), Repeat("a\xC3\xA9zz", 700)},
    {"^(a)" + Repeat("\\1", 2600), Repeat("a", 2700)},
    {"^" + Repeat("\\B", 2600), "--"},
    {Nest("(", 998, "a", ")") + "*[bc]", "aaaab"},
    {Nest("(?:b|", 999, "a"), "ba"},
    {Nest("(?:b??", 999, "a", ")*?"), "aaaab"},
    {Nest("(?i:", 999, "a"), "A"},
    {Nest("(?=", 999, "a"), "a"},
    {Nest("(?!", 999, "a"), "ab"},
    {Nest("(?<=", 999, "a"), "a"},
    {Nest("(?>", 999, "a", ")+"), "aaa"},
    {Nest("(?(?=a)", 499, "a", "|b)"), "a"},
    {Nest("(?(?=", 499, "a", ")a|b)") + "[cd]", "ab"},
    {"^(?>a|bc|(?=d)d|(e))*[xy]", Repeat("abcde", 20)},
    {"^(?>a|bc|def|ghijk)*[xy]", Mixture(90000)},
};

[[gnu::noinline]] void TouchStack() {
  volatile uint8_t room[40000];
  room[0] = 1;
  static_cast<void>(room[0]);
}

TEST(SearchTest, StackIsAsSaid) {
  size_t known = 40000;
  RunInThread(kSmallStack, [&known] {
    if (!kIsInstrumented) {
      PaintStack(true);
      TouchStack();
      known = PaintStack(false);
    }
  });
  EXPECT_TRUE(known >= 40000 && known < 42000) << known;
  Bench bench;
  for (const Hungry& test : kHungry) {
    for (const int32_t limit : {kDefaultLimit, 1000, 40, 0}) {
      ASSERT_TRUE(bench.Compile(test.pattern, {"", 1, limit}));
      bench.Place(test.subject);
      SearchAnswer expected;
      RunInThread(kModelStack, [&] { expected = bench.AskModel(); });
      EXPECT_EQ(bench.Show(AskWithinStack(&bench)), bench.Show(expected))
          << bench.Describe().substr(0, 99);
    }
  }
}

// Repetitions of changing lengths are given back one by one, down to the position that is asked
// for.
TEST(SearchTest, AtomicRepetitionsAreGivenBack) {
  Bench bench;
  ASSERT_TRUE(bench.Compile("^(?>a|bc|def|ghijk|#)*#", {}));
  const std::string words = Mixture(12000);
  Author author(20263);
  for (size_t left = 300; left > 0; --left) {
    std::string subject = words.substr(0, author.Below(words.size()));
    const size_t at = subject.find_last_of("acfk", author.Below(subject.size() + 1)) + 1;
    subject.insert(at, "#");
    bench.Place(subject);
    EXPECT_EQ(bench.Show(bench.AskLibrary()), "0+" + std::to_string(at + 1));
  }
}

// Within the stack that the header names, and no more of it when that is used up.
TEST(SearchTest, MegabyteOfAtomicRepetitions) {
  Bench bench;
  const auto expect = [&bench](const std::string& pattern, const std::string& subject,
                               const std::string& expected) {
    ASSERT_TRUE(bench.Compile(pattern, {}));
    bench.Place(subject);
    EXPECT_EQ(bench.Show(AskWithinStack(&bench)), expected) << pattern;
  };
  const std::string words = Mixture(1 << 20);
  const std::string all = "0+" + std::to_string(words.size() + 1);
  expect("^(?>a|bc|def|ghijk)*x", words + "x", all);
  expect("^(?>[a-z])*x", words + "x", all);
  expect("^(?>ab?)*x", Repeat("ab", (1 << 20) - 1) + "x", "0+2097151");
  // A frame for 384 bytes; of the 67 chunks, which the depth gives, 49 frames are used each.
  expect("^(?>a|bc)*x", Repeat("abc", 420000) + "x", "0+1260001");
  expect("^(?>a|bc)*x", Repeat("abc", 690000) + "x", "limit 0");
}

}  // namespace
}  // namespace vekch::test
