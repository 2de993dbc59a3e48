// A service on lines: it reads them on a thread, from a snapshot, and what it makes of them goes into the text at once, as one undo step.
// Cancelled, or left by an error, it has changed nothing.
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
  qint64 changed = 0;              // lines that the service tells of
  QString error;                   // not empty: nothing is to be changed

  const text::Snapshot& text() const { return text_; }
  LineRange lines() const { return lines_; }
  text::SearchControl& control() { return control_; }
  bool isCancelled() const { return control_.cancel; }

  // The next of the lines, without its break; false behind the last one, and when the user has cancelled. The view holds until the next call.
  bool next(std::string_view* line);
  text::LineNo line() const { return reader_.line(); }   // number and first byte of that line
  text::ByteOffset start() const { return reader_.start(); }
  // Makes the line that next() gave this one.
  void replace(std::string_view before, std::string_view after);
  // Takes the lines away with their breaks. Those at the end of the text go with the break before them, so that its own end stays.
  void remove(LineRange gone);

  // The number of lines changed, 0 where nothing is to be done.
  static qint64 run(CodeMax& cmx, LineRange lines, const QString& what, const std::function<void(LineWork&)>& service,
                    QString* error = nullptr);

 private:
  text::Snapshot text_;
  LineRange lines_;
  text::SearchControl& control_;
  text::LineReader reader_;
  text::ByteOffset first_;
};
