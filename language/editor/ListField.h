// A field of the definitions editor that holds a multi-line property: one entry a line, in a fixed-pitch font, with undo of
// its own. Lines that the definition file could not keep are marked in it.
#pragma once

#include <QList>

#include "base/dialog/TextField.h"

class ListField : public TextField {
  Q_OBJECT
 public:
  explicit ListField(QWidget* parent = nullptr);

  // The property's text, lines parted by CR LF. Setting it is no edit: no signal, and undo begins anew.
  QString entries() const;
  void setEntries(const QString& text);
  // Off for texts without a break behind their last line (templates).
  void setEndsWithBreak(bool on) { endsWithBreak_ = on; }
  // A text that is not empty gets a CR LF at its end, as an edit, unless that is switched off.
  void AddCRLFifNone();
  const QList<int>& linesAtRisk() const { return atRisk_; }   // from 0; see definition::linesTakenForHeaders

 signals:
  void edited();

 protected:
  void focusOutEvent(QFocusEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;   // Ctrl+Tab types a tab, as Tab moves on
  bool event(QEvent* event) override;

 private:
  void markLinesAtRisk();

  bool endsWithBreak_ = true, filling_ = false;
  QList<int> atRisk_;
};
