// SPDX-License-Identifier: MIT

// Calls the functions on byte strings beside their naive models, by the harness of the tests: the
// strings lie between pages that can't be touched, at any distance from them.
//
// An input's head is the family, the position in two bytes, two numbers, the length of the second
// string in two bytes, and how often the first is repeated; the rest is the second string, which
// zero bytes don't end, and the first.

#include "fuzz/fuzz_input.h"
#include "tests/byte_string_models.h"

namespace vekch::fuzz {
namespace {

using test::Function;
using test::Size;

constexpr size_t kLongestText = 8192;
constexpr size_t kLongestOther = 2048;

class Strings {
 public:
  Strings(const uint8_t* data, size_t size) : input_(data, size) {
    const std::string all = input_.Rest(kLongestText);
    const size_t otherSize = std::min(Head(5) + 256 * (Head(6) % 8), all.size());
    other_.assign(all.begin(), all.begin() + static_cast<ptrdiff_t>(otherSize));
    const test::Bytes unit(all.begin() + static_cast<ptrdiff_t>(otherSize), all.end());
    for (size_t i = 0; i <= Head(7) % 16; ++i) {
      text_ += unit;
    }
    text_.resize(std::min(text_.size(), kLongestText));
    position_ = Head(1) + 256 * (Head(2) % 2);
  }

  void Run() {
    constexpr void (Strings::*kFamilies[])() = {
        &Strings::Map,   &Strings::Compare, &Strings::Find,   &Strings::FindTerminated,
        &Strings::Trim,  &Strings::Insert,  &Strings::Remove, &Strings::Lists,
        &Strings::Split, &Strings::Hash};
    (this->*kFamilies[Head(0) % std::size(kFamilies)])();
  }

 private:
  size_t Head(size_t i) const { return input_.Head(i); }

  // Two numbers up to `most`.
  int32_t X(size_t most) const { return static_cast<int32_t>(Head(3) * 37 % (most + 1)); }
  int32_t Y(size_t most) const { return static_cast<int32_t>(Head(4) * 37 % (most + 1)); }

  template <size_t kCount>
  void Expect(const Function (&functions)[kCount], const test::Input& input) {
    static test::Sweep sweep(2 * kLongestText);
    for (const Function& function : functions) {
      sweep.Expect(function, input, position_);
    }
  }

  void Map() {
    Expect(test::kMappings, {text_});
    Expect({test::kReplaceC}, {text_, {}, X(255), Y(255)});
  }

  // The text beside itself with the second string over some of it.
  void Compare() {
    test::Bytes other = text_;
    const auto from = static_cast<size_t>(X(text_.size()));
    const size_t size = std::min(other_.size(), text_.size() - from);
    other.replace(from, size, other_, 0, size);
    Expect(test::kComparisons, {text_, other});
  }

  void Find() {
    Expect(test::kFindsOfNeedle, {text_, other_});
    Expect(test::kFindsOfSet, {text_, other_});
    if (other_.size() == 1) {
      Expect(test::kFindsOfByte, {text_, other_});
    }
  }

  void FindTerminated() {
    static test::TerminatedFinds finds(kLongestText, kLongestOther);
    const test::Bytes text = text_.substr(0, text_.find(uint8_t{0}));
    const size_t position = position_ % test::TerminatedString::kPositions;
    finds.ExpectByte(text, static_cast<uint8_t>(Head(3)), position);
    finds.ExpectNeedle(text, other_.substr(0, other_.find(uint8_t{0})), position);
  }

  void Trim() {
    Expect(test::kTrimsOfSet, {text_, other_});
    if (other_.size() == 1) {
      Expect(test::kTrimsOfByte, {text_, other_});
    }
  }

  void Insert() {
    Expect({test::kConcat}, {text_, other_});
    const int32_t at = X(text_.size());
    if (!other_.empty()) {  // inserting nothing writes nothing
      const Function both[] = {test::kInsertions[0], test::kInsertions[1]};
      Expect(both, {text_, other_, at});
      if (Size(other_) <= at) {
        Expect({test::kInsertions[2]}, {text_, other_, at});
      }
    }
  }

  void Remove() {
    const int32_t at = X(text_.size());
    Expect(test::kRemovals, {text_, {}, at, Y(text_.size() - static_cast<size_t>(at))});
  }

  // Pieces of the text, as long as the second string's bytes are large.
  void Lists() {
    std::vector<test::Bytes> texts = {{}};
    size_t from = 0;
    for (const uint8_t length : other_.substr(0, 16)) {
      texts.push_back(text_.substr(from, length));
      from = std::min(from + length, text_.size());
    }
    test::ExpectConcatList(texts, Head(3) % 2 == 0);
  }

  void Split() {
    std::vector<int32_t> capacities = {X(80)};
    for (const uint8_t capacity : other_.substr(0, 16)) {
      capacities.push_back(capacity % 81);
    }
    test::ExpectSplit(text_, capacities);
  }

  void Hash() { Expect(test::kHashFunctions, {text_}); }

  Input input_;
  test::Bytes text_;
  test::Bytes other_;
  size_t position_;
};

}  // namespace
}  // namespace vekch::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  vekch::fuzz::Strings(data, size).Run();
  return 0;
}
