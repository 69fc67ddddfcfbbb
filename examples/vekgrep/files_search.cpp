// SPDX-License-Identifier: MIT

// The thread that walks through the folders makes a task of each file, or of each part of a large
// one. A file comes in parts where these can be searched without knowing of each other: nothing
// depends on how many lines were selected before, or on the lines around one.

#include "files_search.h"

#include <algorithm>
#include <filesystem>
#include <utility>

#include "common/decoder.h"
#include "common/platform.h"
#include "common/program.h"
#include "file_part.h"
#include "name_rules.h"

namespace examples::vekgrep {
namespace {

constexpr int64_t kPartSize = 2 << 20;
constexpr int64_t kLargeFile = 4 * kPartSize;
constexpr int64_t kWorthAThread = 1 << 20;

int64_t FileSize(const std::string& name) {
  std::error_code unknown;
  const auto size = std::filesystem::file_size(std::filesystem::u8path(name), unknown);
  return unknown ? 0 : static_cast<int64_t>(size);
}

// The encoding that the first bytes mark; UTF-8 where they mark none. What looks like the mark of
// UTF-32 is none of UTF-16.
Encoding MarkedEncoding(const std::string& start) {
  using namespace std::string_literals;
  if (start.compare(0, 4, "\xFF\xFE\0\0"s) == 0) {
    return Encoding::kUtf8;
  }
  return start.compare(0, 2, "\xFF\xFE") == 0   ? Encoding::kUtf16Le
         : start.compare(0, 2, "\xFE\xFF") == 0 ? Encoding::kUtf16Be
                                                : Encoding::kUtf8;
}

// Some bytes, then what a source still has.
class Prefixed : public Source {
 public:
  Prefixed(std::string bytes, Source& source) : prefix(std::move(bytes)), rest(source) {}

  int64_t Read(uint8_t* buffer, size_t size, std::string* fault) override {
    if (used == prefix.size()) {
      return rest.Read(buffer, size, fault);
    }
    const size_t count = std::min(size, prefix.size() - used);
    std::copy_n(prefix.begin() + static_cast<std::ptrdiff_t>(used), count, buffer);
    used += count;
    return static_cast<int64_t>(count);
  }

 private:
  const std::string prefix;
  Source& rest;
  size_t used = 0;
};

// A whole file.
class FileTask : public Task {
 public:
  FileTask(SearchSetting& setting, std::string fileName, std::string fileLabel, bool large)
      : common(setting), name(std::move(fileName)), label(std::move(fileLabel)), isLarge(large) {}

  bool IsLarge() const override { return isLarge; }

  void Run(const SearchTools& tools, Sink& sink) override {
    if (common.IsOver()) {
      return;
    }
    StyledOutput output("vekgrep", sink, common.colors);
    File file;
    std::string fault;
    const int ownOutput = PrintsLines(common.options.report) ? kStandardOutput : -1;
    if (file.Open(name, ownOutput, &fault)) {
      Search(tools, output, file, &fault);
    }
    if (!fault.empty() && !output.Failed()) {
      common.findings.trouble = true;
      if (!common.options.silentAboutFiles) {
        output.Complain(label, fault);
      }
    }
    output.Flush();
  }

 private:
  void Search(const SearchTools& tools, StyledOutput& output, File& file, std::string* fault) {
    const int64_t start = name == "-" ? PositionOf(file.Descriptor()) : -1;
    Input input(common.needs.lines, common.needs.overlap, common.options.lineEnd);
    input.Begin(file);
    FileSearch search(tools, output, label);
    search.SetSize(SizeOf(file.Descriptor()));
    const std::string mark = input.Peek(1);
    if (mark == "\xFF" || mark == "\xFE") {
      SearchMarked(search, input);
    } else {
      search.Run(input);
    }
    *fault = input.Fault();
    search.PrintSummary(fault->empty());
    if (start >= 0 && search.StoppedAt() >= 0) {
      GoTo(file.Descriptor(), start + search.StoppedAt());
    }
    common.findings.found = common.findings.found || search.Selected() > 0;
    common.findings.trouble = common.findings.trouble || search.GaveUp();
  }

  static void SearchMarked(FileSearch& search, Input& input) {
    constexpr int32_t kLongestMark = 4;
    const Encoding encoding = MarkedEncoding(input.Peek(kLongestMark));
    if (encoding == Encoding::kUtf8) {
      search.Run(input);
      return;
    }
    std::string read;
    Source& rest = input.Rest(&read);
    Prefixed whole(read, rest);
    Decoder decoder(whole, encoding, true);
    input.Begin(decoder);
    search.Run(input);
  }

  SearchSetting& common;
  const std::string name;
  const std::string label;
  const bool isLarge;
};

// What the parts of a file share.
struct PartedFile {
  PartedFile(std::string fileLabel, size_t parts) : label(std::move(fileLabel)), lines(parts) {}

  const std::string label;
  File file;
  int64_t size = 0;
  PartLines lines;

  // Of the parts whose turn was: lines, and whether a zero byte was among them.
  int64_t selected = 0;
  bool binary = false;
  bool faulty = false;
};

class PartTask : public Task {
 public:
  PartTask(SearchSetting& setting, std::shared_ptr<PartedFile> whole, size_t part)
      : common(setting), parted(std::move(whole)), number(part) {}

  bool IsLarge() const override { return true; }

  void Run(const SearchTools& tools, Sink& sink) override {
    const Options& options = common.options;
    const int file = parted->file.Descriptor();
    const int64_t begin = static_cast<int64_t>(number) * kPartSize;
    const int64_t end = std::min(begin + kPartSize, parted->size);
    int64_t linesBefore = 0;
    if (options.lineNumbers || tools.searcher->MayGiveUp()) {
      linesBefore = parted->lines.Before(number, file, begin, end, options.lineEnd);
    }
    if (common.IsOver()) {
      return;
    }
    PartSource source(file, begin, end, options.lineEnd);
    StyledOutput output("vekgrep", sink, common.colors);
    Input input(common.needs.lines, common.needs.overlap, options.lineEnd);
    input.Begin(source);
    FileSearch search(tools, output, parted->label, true,
                      linesBefore + (source.HasForeignEnd() ? 1 : 0));
    search.SetSize(parted->size);
    search.Run(input);
    output.Flush();
    selected = search.Selected();
    binary = search.IsBinary();
    fault = input.Fault();
    common.findings.trouble = common.findings.trouble || search.GaveUp();
    tellSummary = end == parted->size ? &tools : nullptr;
  }

  // After a zero byte nothing is printed any longer.
  bool Counts() override { return !parted->binary; }

  void Deliver(Sink& sink) override {
    parted->selected += selected;
    parted->binary = parted->binary || binary;
    common.findings.found = common.findings.found || selected > 0;
    StyledOutput output("vekgrep", sink, common.colors);
    if (!fault.empty() && !parted->faulty && !output.Failed()) {
      parted->faulty = common.findings.trouble = true;
      if (!common.options.silentAboutFiles) {
        output.Complain(parted->label, fault);
      }
    }
    if (tellSummary != nullptr) {
      FileSearch summary(*tellSummary, output, parted->label);
      summary.SetResult(parted->selected, parted->binary);
      summary.PrintSummary(!parted->faulty);
    }
    output.Flush();
  }

 private:
  SearchSetting& common;
  const std::shared_ptr<PartedFile> parted;
  const size_t number;
  int64_t selected = 0;
  bool binary = false;
  std::string fault;
  const SearchTools* tellSummary = nullptr;  // of the last part
};

// A folder or file that can't be read, reported in its turn.
class ComplaintTask : public Task {
 public:
  ComplaintTask(std::string what, std::string reason)
      : name(std::move(what)), fault(std::move(reason)) {}

  void Run(const SearchTools&, Sink& sink) override {
    Output("vekgrep", sink).Complain(name, fault);
  }

 private:
  const std::string name;
  const std::string fault;
};

// Whether the parts of a file can be searched without knowing of each other.
bool SearchesParts(const Options& options) {
  return !EndsAtFirst(options.report) && options.mostLines == Options::kNoBound &&
         !(options.HasContext() && PrintsLines(options.report)) && !options.byteOffsets &&
         options.binaryFiles != BinaryFiles::kLeaveOut;
}

}  // namespace

int FilesSearch::Run() {
  for (const std::string& name : common.options.files) {
    SearchNamed(name);
  }
  tasks.Finish();
  const Findings& findings = common.findings;
  const bool quietlyFound = common.options.report == Report::kNothing && findings.found;
  return findings.trouble && !quietlyFound ? kTrouble : findings.found ? 0 : 1;
}

void FilesSearch::SearchNamed(const std::string& name) {
  const Options& options = common.options;
  if (name == "-") {
    SearchFile(name, true);
  } else if (options.folders != Folders::kRead && IsFolder(name)) {
    if (options.folders == Folders::kSearch && AllowsFolder(options, name, true)) {
      SearchFolder(name);
    }
  } else if (AllowsFile(options, name, true) && !(options.skipsDevices && IsDevice(name))) {
    SearchFile(name, true);
  }
}

void FilesSearch::SearchFolder(const std::string& name) {
  if (common.IsOver()) {
    return;
  }
  if (!way.Enter(name)) {
    Complain(name, "a link leads back to this folder");
    return;
  }
  std::vector<FolderEntry> entries;
  std::string fault;
  const Links links = common.options.followsLinks ? Links::kFollow : Links::kLeaveOut;
  if (!ListFolder(name, links, &entries, &fault)) {
    Complain(name, fault);
  }
  for (const FolderEntry& entry : entries) {
    if (entry.isFolder && AllowsFolder(common.options, entry.name, false)) {
      SearchFolder(entry.name);
    } else if (!entry.isFolder && AllowsFile(common.options, entry.name, false)) {
      SearchFile(entry.name, false);
    }
  }
  way.Leave();
}

void FilesSearch::SearchFile(const std::string& name, bool wasNamed) {
  if (common.IsOver()) {
    return;
  }
  const std::string label = Label(name);
  const int64_t size = name == "-" || !tasks.HasThreads() ? 0 : FileSize(name);
  if (size < kLargeFile || !SearchesParts(common.options) || !SearchParts(name, label)) {
    tasks.Add(std::make_unique<FileTask>(common, name, label, wasNamed && size >= kWorthAThread));
  }
}

// False if the file has to be searched as a whole: one that begins like a binary file or UTF-16, or
// that can't be opened.
bool FilesSearch::SearchParts(const std::string& name, const std::string& label) {
  constexpr size_t kStart = 128 << 10;
  const size_t most = static_cast<size_t>(FileSize(name) / kPartSize) + 1;
  auto parted = std::make_shared<PartedFile>(label, most);
  std::string fault;
  const int ownOutput = PrintsLines(common.options.report) ? kStandardOutput : -1;
  if (!parted->file.Open(name, ownOutput, &fault)) {
    return false;
  }
  std::vector<uint8_t> start(kStart);
  const int64_t count = ReadSomeAt(parted->file.Descriptor(), 0, start.data(), start.size());
  parted->size =
      std::min(SizeOf(parted->file.Descriptor()), static_cast<int64_t>(most) * kPartSize);
  if (count <= 0 || start[0] >= 0xFE || parted->size < kLargeFile ||
      (common.options.lineEnd != 0 &&
       FindByte(start.data(), {0, static_cast<int32_t>(count)}, 0) >= 0)) {
    return false;
  }
  for (size_t part = 0; static_cast<int64_t>(part) * kPartSize < parted->size; ++part) {
    tasks.Add(std::make_unique<PartTask>(common, parted, part));
  }
  return true;
}

void FilesSearch::Complain(const std::string& name, const std::string& fault) {
  common.findings.trouble = true;
  if (!common.options.silentAboutFiles) {
    tasks.Add(std::make_unique<ComplaintTask>(name, fault));
  }
}

// Names in the current folder are shown as a user would give them.
std::string FilesSearch::Label(const std::string& name) const {
  if (name == "-") {
    return common.options.label;
  }
  return common.options.currentFolder ? name.substr(2) : name;
}

}  // namespace examples::vekgrep
