// How two texts differ, kept up to date while they are edited: compared on a thread, again a short while after the last change.
// Until then the differences move with the text.
//
// Sides and lines as in Hunks.h. A difference is a hunk that the rules count; the others only say which lines correspond.
#pragma once

#include <QObject>
#include <QTimer>
#include <array>
#include <map>
#include <memory>

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
  Line lineAt(compare::Side side, std::int64_t line) const;

  // One undo step; false: nothing was changed. before: the selection that undo restores. asker: as for LongWork.
  bool takeOver(QWidget& asker, const compare::TakeOver& what, const text::SelectionState& before);

 signals:
  void changed();   // hunks(), compared()

 private:
  struct Job;
  void textChanged(compare::Side side, const text::Change& change);
  void finish();
  void countDifferences();
  std::int64_t counterpartOf(compare::Side side, std::int64_t line, std::size_t hunk) const;   // -1: none
  std::vector<text::ByteRange> partsOf(compare::Side side, std::int64_t line, std::int64_t counterpart) const;
  void forget();   // what was found for lines that were visible

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
  mutable std::map<std::pair<int, std::int64_t>, std::vector<text::ByteRange>> parts_;   // of visible lines
  mutable std::map<std::size_t, std::vector<text::LinePair>> pairs_;                     // of visible hunks
};
