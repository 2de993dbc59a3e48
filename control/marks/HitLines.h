// The lines in which a search finds something, looked for beside the interface, again a while after each change; until then they move
// with the text.
#pragma once

#include <QObject>
#include <QTimer>
#include <memory>
#include <vector>

#include "control/edit/TextModel.h"
#include "text/find/Search.h"

class HitLines : public QObject {
  Q_OBJECT
 public:
  static constexpr std::size_t kMost = 100'000;   // lines; those below are left out
  static constexpr int kSeconds = 10;             // what takes longer is left out too

  HitLines(TextModel& model, std::string what, const text::SearchOptions& options);
  ~HitLines() override;

  const std::vector<text::LineNo>& lines() const { return lines_; }   // ascending
  bool complete() const { return complete_; }                         // lines() are those of the present text

 signals:
  void changed();   // lines()

 private:
  struct Job;
  void start();
  void textChanged(const text::Change& change);

  TextModel& model_;
  const std::string what_;
  const text::SearchOptions options_;
  std::vector<text::LineNo> lines_;
  std::shared_ptr<Job> job_;
  QTimer later_;
  bool complete_ = false;
};
