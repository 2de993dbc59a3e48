// A field of the definitions editor for a multi-line property: one entry a line, in a fixed-pitch font, with its own undo. Lines
// that the definition file cannot keep are marked.
#pragma once

#include <QList>

#include "base/dialog/TextField.h"

class ListField : public TextField {
  Q_OBJECT
 public:
  explicit ListField(QWidget* parent = nullptr);

  // The text of the property, lines separated by CR LF. setEntries emits no signal and clears the undo stack.
  QString entries() const;
  void setEntries(const QString& text);
  // Off for texts without a line break at the end (templates).
  void setEndsWithBreak(bool on) { endsWithBreak_ = on; }
  // Appends CR LF to a text that is not empty and does not end with one, as an edit. Does nothing when switched off.
  void AddCRLFifNone();
  const QList<int>& linesAtRisk() const { return atRisk_; }   // from 0; see definition::linesTakenForHeaders

 signals:
  void edited();

 protected:
  void focusOutEvent(QFocusEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;   // Ctrl+Tab types a tab; Tab goes to the next field
  bool event(QEvent* event) override;

 private:
  void markLinesAtRisk();

  bool endsWithBreak_ = true, filling_ = false;
  QList<int> atRisk_;
};
