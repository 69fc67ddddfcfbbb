// SPDX-License-Identifier: MIT

// A loadable extension for SQLite: regular expressions, splitting and trimming as SQL functions.
//
//   text REGEXP pattern                                 1 if the text holds a match, else 0
//   regexp_count(text, pattern)                         how many matches
//   regexp_substr(text, pattern [, group])              the first match, or a group of it, or null
//   regexp_replace(text, pattern, template [, options]) all matches replaced
//   split_part(text, delimiter, n)                      the n-th field, from 1; null if there is
//   none trim_any(text, bytes)                               without those bytes at both ends
//
// A null argument gives null. A pattern that is constant in a statement is compiled once for it:
// SQLite keeps it as auxiliary data of the argument. Connections and statements share nothing, so
// any number of threads may use the extension.

#include <sqlite3ext.h>

#include <string>
#include <string_view>

#include "vekch/vekch.hpp"

SQLITE_EXTENSION_INIT1

namespace {

struct Compiled {
  Compiled(std::string_view text, std::string_view letters)
      : pattern(text, letters), options(letters) {}
  vekch::Pattern pattern;
  std::string options;
};

std::string_view Text(sqlite3_value* value) {
  const auto* const bytes = reinterpret_cast<const char*>(sqlite3_value_text(value));
  return {bytes == nullptr ? "" : bytes, static_cast<size_t>(sqlite3_value_bytes(value))};
}

void ResultText(sqlite3_context* context, std::string_view text) {
  sqlite3_result_text64(context, text.data() == nullptr ? "" : text.data(), text.size(),
                        SQLITE_TRANSIENT, SQLITE_UTF8);
}

void ResultError(sqlite3_context* context, const std::string& text) {
  sqlite3_result_error(context, text.data(), static_cast<int>(text.size()));
}

// The object that belongs to an argument, from the call before if it is still right.
template <typename Object, typename IsRight, typename Make>
Object* Kept(sqlite3_context* context, int argument, IsRight isRight, Make make) {
  auto* kept = static_cast<Object*>(sqlite3_get_auxdata(context, argument));
  if (kept == nullptr || !isRight(*kept)) {
    sqlite3_set_auxdata(context, argument, make(),
                        [](void* object) { delete static_cast<Object*>(object); });
    kept = static_cast<Object*>(sqlite3_get_auxdata(context, argument));
  }
  return kept;
}

// Null after an error was reported.
vekch::Pattern* PatternOf(sqlite3_context* context, sqlite3_value** arguments, int argument,
                          std::string_view options = {}) {
  auto* const compiled = Kept<Compiled>(
      context, argument, [=](const Compiled& kept) { return kept.options == options; },
      [=] { return new Compiled(Text(arguments[argument]), options); });
  if (compiled == nullptr) {
    sqlite3_result_error_nomem(context);
    return nullptr;
  }
  if (!compiled->pattern) {
    ResultError(context, compiled->pattern.fault().text());
    return nullptr;
  }
  return &compiled->pattern;
}

bool AnyNull(int count, sqlite3_value** arguments) {
  for (int i = 0; i < count; ++i) {
    if (sqlite3_value_type(arguments[i]) == SQLITE_NULL) {
      return true;  // the result is null unless something else is set
    }
  }
  return false;
}

bool Undecided(sqlite3_context* context, vekStatus status) {
  if (status < 0) {
    ResultError(context, vekStatusText(status));
  }
  return status < 0;
}

void Regexp(sqlite3_context* context, int count, sqlite3_value** arguments) {
  vekch::Pattern* const pattern =
      AnyNull(count, arguments) ? nullptr : PatternOf(context, arguments, 0);
  if (pattern != nullptr) {
    const vekch::Match match = pattern->find(Text(arguments[1]));
    if (!Undecided(context, match.status())) {
      sqlite3_result_int(context, match ? 1 : 0);
    }
  }
}

void RegexpCount(sqlite3_context* context, int count, sqlite3_value** arguments) {
  vekch::Pattern* const pattern =
      AnyNull(count, arguments) ? nullptr : PatternOf(context, arguments, 1);
  if (pattern != nullptr) {
    const vekch::Matches matches = pattern->find_all(Text(arguments[0]));
    if (!Undecided(context, matches.status())) {
      sqlite3_result_int64(context, static_cast<sqlite3_int64>(matches.size()));
    }
  }
}

void RegexpSubstr(sqlite3_context* context, int count, sqlite3_value** arguments) {
  vekch::Pattern* const pattern =
      AnyNull(count, arguments) ? nullptr : PatternOf(context, arguments, 1);
  if (pattern != nullptr) {
    const vekch::Match match = pattern->find(Text(arguments[0]));
    const sqlite3_int64 group = count > 2 ? sqlite3_value_int64(arguments[2]) : 0;
    if (!Undecided(context, match.status()) && group >= 0 &&
        match.has(static_cast<size_t>(group))) {
      ResultText(context, match[static_cast<size_t>(group)]);
    }
  }
}

void RegexpReplace(sqlite3_context* context, int count, sqlite3_value** arguments) {
  if (AnyNull(count, arguments)) {
    return;
  }
  vekch::Pattern* const pattern =
      PatternOf(context, arguments, 1, count > 3 ? Text(arguments[3]) : std::string_view());
  if (pattern == nullptr) {
    return;
  }
  auto* const replacement = Kept<vekch::Template>(
      context, 2, [](const vekch::Template&) { return true; },
      [&] { return new vekch::Template(Text(arguments[2])); });
  if (replacement == nullptr || !*replacement) {
    ResultError(context, replacement == nullptr ? "out of memory" : replacement->fault().text());
    return;
  }
  const vekch::Replaced replaced = pattern->replace_all(Text(arguments[0]), *replacement);
  if (!Undecided(context, replaced.status)) {
    ResultText(context, replaced.text);
  }
}

void SplitPart(sqlite3_context* context, int count, sqlite3_value** arguments) {
  if (AnyNull(count, arguments)) {
    return;
  }
  std::string_view text = Text(arguments[0]);
  const std::string_view delimiter = Text(arguments[1]);
  for (sqlite3_int64 left = sqlite3_value_int64(arguments[2]); left > 0; --left) {
    const size_t at = vekch::find(text, delimiter);
    if (left == 1) {
      ResultText(context, text.substr(0, at));
    } else if (at == vekch::npos) {
      return;
    } else {
      text.remove_prefix(at + delimiter.size());
    }
  }
}

void TrimAny(sqlite3_context* context, int count, sqlite3_value** arguments) {
  if (!AnyNull(count, arguments)) {
    ResultText(context, vekch::trim(Text(arguments[0]), Text(arguments[1])));
  }
}

struct Function {
  const char* name;
  int arguments;
  void (*call)(sqlite3_context*, int, sqlite3_value**);
};

constexpr Function kFunctions[] = {
    {"regexp", 2, Regexp},
    {"regexp_count", 2, RegexpCount},
    {"regexp_substr", 2, RegexpSubstr},
    {"regexp_substr", 3, RegexpSubstr},
    {"regexp_replace", 3, RegexpReplace},
    {"regexp_replace", 4, RegexpReplace},
    {"split_part", 3, SplitPart},
    {"trim_any", 2, TrimAny},
};

}  // namespace

extern "C" __attribute__((visibility("default"))) int sqlite3_vekch_init(
    sqlite3* database, char** /*message*/, const sqlite3_api_routines* api) {
  SQLITE_EXTENSION_INIT2(api)
  for (const Function& function : kFunctions) {
    const int status = sqlite3_create_function_v2(database, function.name, function.arguments,
                                                  SQLITE_UTF8 | SQLITE_DETERMINISTIC, nullptr,
                                                  function.call, nullptr, nullptr, nullptr);
    if (status != SQLITE_OK) {
      return status;
    }
  }
  return SQLITE_OK;
}
