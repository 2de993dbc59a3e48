// The small dialogs of columnising, number series and sorting. Each keeps its answers for the session.
#pragma once

class CodeMax;
class QWidget;

// Asks and aligns the selected lines; false: cancelled.
bool ColumnizeWithOptions(CodeMax& cmx, QWidget* parent);
// Asks for a series of numbers with a live example and puts it into the selected lines; false: cancelled.
bool InsertSeriesDialog(CodeMax& cmx, QWidget* parent);
// Asks how to sort the selected lines and sorts; false: cancelled.
bool SortLinesDialog(CodeMax& cmx, QWidget* parent);
