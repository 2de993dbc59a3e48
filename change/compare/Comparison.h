// How two texts differ, kept up to date while they are edited: compared on a thread, again a short while after the last change.
// Until then the differences move with the text.
//
// Sides and lines as in Hunks.h. A difference is a hunk that the rules count; the others only say which lines correspond.
#pragma once

#include <QObject>
#include <QTimer>
#include <array>
#include <functional>
#include <map>
#include <memory>
#include <optional>

#include "change/compare/Hunks.h"
#include "control/edit/TextModel.h"
#include "text/diff/WordDiff.h"

class Comparison : public QObject {
  Q_OBJECT
 public:
  struct Ignore {
    bool blanks = false, letterCase = false, comments = false;
    bool operator==(const Ignore&) const = default;
  };
  Comparison(std::shared_ptr<TextModel> left, std::shared_ptr<TextModel> right, QObject* parent = nullptr);
  ~Comparison() override;

  TextModel& model(compare::Side side) const { return *models_[side]; }
  const Ignore& ignored() const { return ignore_; }
  void setIgnored(const Ignore& ignore);
  void refresh();   // compares again now
  void swap();      // the sides

  const compare::Hunks& hunks() const { return hunks_; }
  bool failed() const { return failed_; }        // the texts are too large for the memory
  bool compared() const { return compared_; }    // the hunks are those of the present texts
  std::size_t count() const { return count_; }   // of differences
  // Without differences: how far the texts are equal all the same. Of the last comparison.
  enum class Equal { no, underRules, butForLineEnds, wholly };
  Equal equal() const { return equal_; }

  // The difference at a line: it holds the line, or lines are missing above it (below the last line). -1: none.
  int differenceAt(compare::Side side, std::int64_t line) const;   // counts differences from 0, as the following
  std::size_t hunkOf(int difference) const;                        // its index in hunks()
  int differenceOf(std::size_t hunk) const;                        // -1: it is none

  struct Line {
    enum class Kind { equal, changed, single } kind = Kind::equal;   // single: without a counterpart
    bool missingAbove = false, missingBelow = false;                 // lines of the other side
    std::vector<text::ByteRange> parts;                              // that differ from the counterpart; offsets in the text
  };
  // What takes long to find is found in later turns of the event loop: then moreFound() asks to look again. Until then a line is
  // `changed` and has no parts.
  Line lineAt(compare::Side side, std::int64_t line) const;

  // One undo step; false: nothing was changed. before: the selection that undo restores. asker: as for LongWork.
  bool takeOver(QWidget& asker, const compare::TakeOver& what, const text::SelectionState& before);

 signals:
  void changed();     // hunks(), compared()
  void moreFound();   // lineAt()

 private:
  struct Job;
  void textChanged(compare::Side side, const text::Change& change);
  void finish();
  void countDifferences();
  // What was found for a hunk that was visible. Lines count from those of the hunk, offsets from the begin of their line: so it holds
  // wherever the hunk goes.
  struct Found {
    std::optional<std::vector<std::pair<std::int64_t, std::int64_t>>> pairs;
    std::map<std::pair<int, std::int64_t>, std::vector<text::ByteRange>> parts;   // of a side and line
  };
  using Place = std::array<std::int64_t, 4>;   // of a hunk
  Found& foundOf(const text::LineHunk& hunk) const;
  void forgetTouched(compare::Side side, const text::Change& change);   // the others move
  void forget();
  bool inTime(const std::function<void()>& work) const;   // false: later
  // -1: none; nothing: not known yet.
  std::optional<std::int64_t> counterpartOf(compare::Side side, std::int64_t line, const text::LineHunk& hunk) const;
  std::vector<text::ByteRange> partsOf(compare::Side side, std::int64_t line, std::int64_t counterpart,
                                       const text::LineHunk& hunk) const;

  std::array<std::shared_ptr<TextModel>, 2> models_;
  std::array<std::int64_t, 2> lines_{};
  std::array<QMetaObject::Connection, 2> heard_;
  Ignore ignore_;
  compare::Hunks hunks_;
  std::vector<std::size_t> differences_;   // hunks that count; empty while every hunk does
  std::size_t count_ = 0;
  bool compared_ = false, failed_ = false;
  Equal equal_ = Equal::no;
  QTimer later_;
  std::shared_ptr<Job> job_;
  mutable std::map<Place, Found> found_;
  mutable std::size_t lineParts_ = 0;   // in it
  mutable QTimer turn_;                 // active in a turn in which something was looked for
  mutable std::int64_t spentNs_ = 0;    // in this turn
  mutable bool isMore_ = false;         // something has to wait for the next one
};
