#include "base/dialog/TextField.h"

#include <QMimeData>

bool TextField::canInsertFromMimeData(const QMimeData* source) const {
  return source && !source->formats().isEmpty() && QPlainTextEdit::canInsertFromMimeData(source);
}

void TextField::insertFromMimeData(const QMimeData* source) {
  if (source && !source->formats().isEmpty()) QPlainTextEdit::insertFromMimeData(source);
}
