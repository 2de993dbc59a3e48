// A plain text field of several lines for dialogs. All fields of this kind are made of it: the library's own takes the first
// format of what is pasted and ends the program when there is none, which is so while nobody owns the clipboard.
#pragma once

#include <QPlainTextEdit>

class TextField : public QPlainTextEdit {
 public:
  using QPlainTextEdit::QPlainTextEdit;

 protected:
  bool canInsertFromMimeData(const QMimeData* source) const override;
  void insertFromMimeData(const QMimeData* source) override;
};
