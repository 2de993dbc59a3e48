// Base of the services on lines: a thread reads the lines from a snapshot; the resulting edits are then applied as one undo step.
// If the service is cancelled or fails, nothing is changed.
#pragma once

#include <QString>
#include <functional>
#include <string_view>
#include <vector>

#include "change/LineTools.h"
#include "control/CodeMax.h"
#include "text/line/LineReader.h"

class LineWork {
 public:
  LineWork(text::Snapshot text, LineRange lines, text::SearchControl& control);

  std::vector<text::Edit> edits;   // ascending
  qint64 changed = 0;              // lines that the service reports
  QString error;                   // not empty: the service failed and nothing is changed

  const text::Snapshot& text() const { return text_; }
  LineRange lines() const { return lines_; }
  text::SearchControl& control() { return control_; }
  bool isCancelled() const { return control_.cancel; }

  // The next line, without its break. False behind the last one and when the user has cancelled. The view is valid until the next
  // call.
  bool next(std::string_view* line);
  text::LineNo line() const { return reader_.line(); }   // number and first byte of that line
  text::ByteOffset start() const { return reader_.start(); }
  // Replaces the line that next() returned.
  void replace(std::string_view before, std::string_view after);
  // Removes the lines with their breaks. Lines at the end of the text are removed with the break before them, so that the text does
  // not gain a line end.
  void remove(LineRange gone);

  // Returns the number of changed lines; 0 when there was nothing to do.
  static qint64 run(CodeMax& cmx, LineRange lines, const QString& what, const std::function<void(LineWork&)>& service,
                    QString* error = nullptr);

 private:
  text::Snapshot text_;
  LineRange lines_;
  text::SearchControl& control_;
  text::LineReader reader_;
  text::ByteOffset first_;
};
