// SPDX-License-Identifier: MIT

// Compiling patterns beside other engines: what it takes to have a pattern ready and to be rid of
// it again, memory included. Peers allocate while they compile, so that the block of our object is
// allocated and freed in the timed call as well.
//
// Our object brings the working memory of its searches with it, 48 KB that are cleared as it is
// compiled. "pcre2+clear" clears as much beside compiling. "pcre2 jit" makes machine code of what
// it compiled.

#include <stdlib.h>
#include <string.h>

#include <string>

#include "bench/engines.h"
#include "bench/inputs.h"
#include "bench/patterns.h"
#include "bench/ratios.h"
#include "vekch/vekch.h"

namespace vekch_bench {
namespace {

// Every contender returns whether it compiled the pattern.

bool CompileOurs(const Pattern& pattern) {
  const auto* text = reinterpret_cast<const uint8_t*>(pattern.text);
  int32_t size;
  int32_t errorOffset;
  veksRegExpGetSize(text, &size);
  auto* state = static_cast<RegExpState*>(malloc(static_cast<size_t>(size)));
  const vekStatus status =
      veksRegExpInit(text, reinterpret_cast<const uint8_t*>(pattern.options), state, &errorOffset);
  free(state);
  return status == StatusNoError;
}

bool CompilePcre2(const Pattern& pattern, uint32_t options, bool jit) {
  int error;
  PCRE2_SIZE errorOffset;
  pcre2_code* code = pcre2_compile(reinterpret_cast<PCRE2_SPTR>(pattern.text),
                                   PCRE2_ZERO_TERMINATED, options, &error, &errorOffset, nullptr);
  const bool compiled =
      code != nullptr && (!jit || pcre2_jit_compile(code, PCRE2_JIT_COMPLETE) == 0);
  pcre2_code_free(code);
  return compiled;
}

bool CompileOniguruma(const Pattern& pattern, OnigOptionType options) {
  const auto* text = reinterpret_cast<const OnigUChar*>(pattern.text);
  regex_t* compiled = nullptr;
  OnigErrorInfo error;
  const int status = onig_new(&compiled, text, text + strlen(pattern.text), options,
                              ONIG_ENCODING_UTF8, ONIG_SYNTAX_PERL_NG, &error);
  onig_free(compiled);
  return status == ONIG_NORMAL;
}

bool CompileBoost(const Pattern& pattern, boost::regex::flag_type flags) {
  return boost::regex(pattern.text, flags).status() == 0;
}

void RunPattern(const Pattern& pattern) {
  int32_t size;
  veksRegExpGetSize(reinterpret_cast<const uint8_t*>(pattern.text), &size);
  const Input block(size);
  uint8_t* const cleared = block.data();
  const uint32_t pcre2Options = Pcre2Options(pattern);
  const OnigOptionType onigurumaOptions = OnigurumaOptions(pattern);
  const boost::regex::flag_type boostFlags = BoostFlags(pattern);
  const RE2::Options re2Options = Re2Options(pattern);
  const std::string re2Text = Re2Text(pattern);

  Case compile("compile", pattern.name, static_cast<int64_t>(strlen(pattern.text)));
  compile.Ours([=] { return CompileOurs(pattern); })
      .Peer("pcre2+clear",
            [=] {
              memset(cleared, 0, static_cast<size_t>(size));
              return CompilePcre2(pattern, pcre2Options, false);
            })
      .Peer("pcre2", [=] { return CompilePcre2(pattern, pcre2Options, false); })
      .Peer("pcre2 jit", [=] { return CompilePcre2(pattern, pcre2Options, true); })
      .Peer("oniguruma", [=] { return CompileOniguruma(pattern, onigurumaOptions); });
  if (pattern.needs != Needs::kBacktracking) {
    compile.Peer("re2", [=] { return RE2(re2Text, re2Options).ok(); });
  }
  if (pattern.needs != Needs::kCategories) {  // not without ICU's strings
    compile.Peer("boost", [=] { return CompileBoost(pattern, boostFlags); });
  }
  compile.Run();
}

const Family kCompile([] {
  OnigEncoding encoding = ONIG_ENCODING_UTF8;
  onig_initialize(&encoding, 1);
  for (const Pattern& pattern : kPatterns) {
    RunPattern(pattern);
  }
});

}  // namespace
}  // namespace vekch_bench
