// Replacing in many files: first a plan with every change, then the ticked changes one file after the other, each saved safely.
//
// Always: a plan is whole or there is none; a place is changed only where the bytes are those of the plan, and a file only where
// all of it is as the plan saw it. Before a file is changed its old bytes are on the disk (ReplaceRecord.h), so at any moment each
// file is old or new, and which it is can be told.
#pragma once

#include <string>
#include <vector>

#include "folder/FindInFiles.h"
#include "folder/ReplaceRecord.h"
#include "text/store/Document.h"

namespace folder {

// One change. `now` stands at the range of the plan's text and gives way to `then`.
struct Exchange {
  text::ByteRange range;
  std::string now, then;
  std::int64_t line = 0, column = 0;   // of its beginning, from 1; the column counts characters
  std::string before, after;           // what stands around it in its lines, as far as it is shown
  bool ticked = true;
};

struct FilePlan {
  std::string path;
  bool open = false;       // it was a given text: who gave it applies it
  text::Snapshot text;     // of an open one alone
  text::FileStamp stamp;   // of the others
  text::FileFormat format;
  std::vector<Exchange> exchanges;         // ascending
  std::vector<text::Edit> edits() const;   // the ticked ones
};

struct Replacing {
  std::string by;
  bool preserveCase = false;
};

struct ReplacePlanned {
  std::string error;   // for the user; not empty: there is no plan
  bool cancelled = false;
  std::vector<FilePlan> files;   // in the order of the source
  FindSummary found;             // what was searched, and what could not be
  std::int64_t changes() const;
};

// More changes than this are refused; none is left out.
inline constexpr std::int64_t kMostExchanges = 1'000'000;

ReplacePlanned planReplacing(const FindText& what, const Replacing& replacing, const FindRules& rules, const FindSource& source,
                             text::SearchControl& control);
// The changes that whole new lines make of one file: line numbers from 1, ascending, with the text that each must have now. Only
// what differs within a line is changed.
struct NewLine {
  std::int64_t line = 0;
  std::string now, then;
};
// Error: what is wrong with it, for the user.
std::string planLines(const std::string& path, const std::vector<NewLine>& lines, FilePlan* plan);
// The same in a text that is open.
std::string planLines(const text::Snapshot& text, const std::vector<NewLine>& lines, FilePlan* plan);

struct Outcome {
  std::string path;
  std::int64_t changes = 0;   // that were made
  std::string trouble;        // for the user; not empty: the file is as it was
};
// Makes the ticked changes of a file on disk. Its old bytes go into the record first.
Outcome replaceInFile(const FilePlan& plan, ReplaceRecord& record);

// The text of a file, changed in its window.
struct WindowChange {
  std::string path;
  text::Snapshot before, after;
  text::FileFormat format;
  text::FileStamp onDisk;   // what the window knows of the file
};
// Its old text goes into the record, for the time when the window has saved. Error text.
std::string keepOfWindow(const WindowChange& change, ReplaceRecord& record);

// Whether all places hold what the plan saw, in the text as it is.
bool fits(const FilePlan& plan, const text::Snapshot& text);

}   // namespace folder
