// One search in files beside the interface: its rows are taken away in parts, as fast as they can be shown.
//
// A search that is cancelled ends soon; one whose disk hangs is left to itself and touches nothing but what it holds.
#pragma once

#include <QObject>
#include <memory>

#include "script/FindTask.h"

class FindRun : public QObject {
  Q_OBJECT
 public:
  FindRun(FindTask task, QObject* parent);
  ~FindRun() override;

  void cancel();
  bool done() const;   // no further rows come
  // Rows that have come, as whole lines of at most about so many bytes; empty: none.
  std::string take(std::size_t most);
  bool empty() const;   // nothing is left to take
  std::int64_t files() const;
  std::int64_t hits() const;
  // Once it is done.
  const folder::FindSummary& summary() const;
  const folder::WalkReport& walked() const;
  const FindTask& task() const;

 signals:
  void came();   // rows, where there were none, or the end; queued

 private:
  struct Shared;
  std::shared_ptr<Shared> shared_;
};
