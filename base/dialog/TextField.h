// A plain text field of several lines for dialogs. Use it for all such fields: QPlainTextEdit takes the first format of pasted data
// and crashes when there is none, as is the case while no program owns the clipboard.
#pragma once

#include <QPlainTextEdit>

class TextField : public QPlainTextEdit {
 public:
  using QPlainTextEdit::QPlainTextEdit;

 protected:
  bool canInsertFromMimeData(const QMimeData* source) const override;
  void insertFromMimeData(const QMimeData* source) override;
};
