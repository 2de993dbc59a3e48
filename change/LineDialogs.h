// The small dialogs of columnising, number series and sorting. The one that owns them keeps their answers for the next time.
#pragma once

#include "change/AddIns.h"
#include "change/LineTools.h"

class QWidget;

class LineDialogs {
 public:
  // Each asks and then works on the selected lines; false: cancelled.
  bool columnize(CodeMax& cmx, QWidget* parent);
  void keepDelimiter(const QString& delimiter) {   // of columnising without the dialog
    if (!delimiter.isEmpty()) delimiter_ = delimiter;
  }
  bool insertSeries(CodeMax& cmx, QWidget* parent);   // with a live example
  bool sortLines(CodeMax& cmx, QWidget* parent);

 private:
  QString delimiter_;
  ColumnizeOptions columnize_;
  NumberSeries series_;
  SortOptions sort_;
};
