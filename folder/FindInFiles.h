// Finding in many files: parallel workers over names that come in order, results in the same order. At most a bounded number of
// files is ahead of the oldest one that is not done, so memory follows neither the tree nor the slowest file.
//
// Works on any thread and holds no state of the program. A file is looked at once; what changes meanwhile is as it was found.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "folder/FileLook.h"
#include "text/find/Finder.h"

namespace folder {

std::int64_t characters(std::string_view bytes);   // how many there are, as columns count them

// What is searched for. A line break in a text that is no expression is any line break.
class FindText {
 public:
  FindText(std::string what, const text::SearchOptions& options);
  const std::string& error() const { return finder_.error(); }
  // Passes each hit in a text, as Finder::each() does. What stands behind the last line break is a line only when it holds something,
  // so an empty match there is none.
  text::SearchEnd each(const text::Snapshot& text, const std::function<bool(const text::Match&)>& take,
                       text::SearchControl* control) const;
  const text::Finder& finder() const { return finder_; }
  const text::Finder& replacer() const { return literal_ ? *literal_ : finder_; }   // for replacementFor()
  const text::Needles& needles() const { return needles_; }
  const std::string& what() const { return what_; }
  const text::SearchOptions& options() const { return options_; }

 private:
  std::string what_;
  text::SearchOptions options_;
  text::Needles needles_;
  text::Finder finder_;
  std::optional<text::Finder> literal_;   // where finder_ is an expression made of a text
};

struct FindRules {
  ReadRules read;
  std::int64_t mostHits = 0;      // 0: all
  std::int64_t longestLine = 0;   // bytes of a line that are kept; 0: all
  std::int64_t mostLines = 0;     // lines of one row that are kept; 0: all
  unsigned threads = 0;           // 0: one for each processor
};

// One line with at least one hit; several where a hit goes over line ends, or where the next one begins in its last line.
struct FoundRow {
  std::int64_t hits = 0;
  std::int64_t line = 0, column = 0;   // of the first hit, from 1; the column counts characters
  std::int64_t more = 0;               // further lines
  std::string lines;                   // all of them, with LF between
  bool cut = false;                    // they are not all of it
};

struct FileFinds {
  std::string path;
  Skipped skipped = Skipped::none;
  std::string why;   // skipped: in words, where there is more to say
  std::int64_t hits = 0, bytes = 0;
  bool cut = false;   // the limit of hits was reached in it
  std::vector<FoundRow> rows;
};

struct FindSummary {
  std::string error;                                                // the expression is faulty: nothing was searched
  std::int64_t files = 0, filesWithHits = 0, hits = 0, bytes = 0;   // files: searched, without the skipped ones
  std::array<std::int64_t, kSkippedKinds> skipped{};
  std::vector<std::pair<std::string, std::string>> skippedNames;   // the first of them but binary ones, and why
  bool cut = false, cancelled = false;
  std::int64_t skippedInAll() const;
};
// "2 files skipped: 1 binary, 1 no rights"; empty where none was.
std::string skippedText(const FindSummary& summary);

struct FindItem {
  std::string path;
  std::optional<text::Snapshot> text;   // stands for the file, which is then not looked at
};
// Calls give for each file in order until it says no. Runs on the thread that called findInFiles.
using FindSource = std::function<void(const std::function<bool(FindItem)>& give)>;
// Takes the result of each file that has hits, or was skipped, in the source's order, one at a time, on any thread.
using FindTake = std::function<void(FileFinds)>;

// How far it is, for the thread that shows it.
struct FindProgress {
  std::atomic<std::int64_t> files{0}, hits{0};   // searched, found
};

// Returns when all is done.
FindSummary findInFiles(const FindText& what, const FindRules& rules, const FindSource& source, const FindTake& take,
                        text::SearchControl& control, FindProgress* progress = nullptr);

// The rows of one text. Its hits stop at `most` (0: no limit). error: the search was given up.
struct TextFinds {
  std::int64_t hits = 0;
  bool cut = false;
  std::string error;
  std::vector<FoundRow> rows;
};
TextFinds findRows(const text::Snapshot& text, const FindText& what, const FindRules& rules, text::SearchControl* control);

// "path:line:column: text", and "path:line: text" for each further line of a row; each ends in LF.
void appendRows(const FileFinds& file, std::string* out);
// Such a line without its end; the path as it is shown.
struct ShownRow {
  std::string_view path, text;
  std::int64_t line = 0, column = 0;   // from 1; column 0: a further line
};
std::optional<ShownRow> rowOf(std::string_view line);
// Control characters, a colon in front of a digit, and what would look like such an escape are shown as "\x0a": a row is one line, and
// can be taken apart again.
std::string shownPath(std::string_view path);
std::string pathOfShown(std::string_view shown);   // the way back

}   // namespace folder
