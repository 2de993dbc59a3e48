// Texts with caret and selection written into them (tests/support/Caret.h), for a whole edit control.
#pragma once

#include "control/CodeMax.h"
#include "tests/support/Caret.h"

inline void showMarked(CodeMax& cmx, const char* marked) {
  const CaretText text = parseCaret(marked);
  cmx.setText(QString::fromStdString(text.bytes));
  cmx.editor().setSelection(text.selection);
}

inline std::string bytesOf(CodeMax& cmx) { return cmx.editor().snapshot().bytes(); }

inline std::string markedText(CodeMax& cmx) { return printCaret(bytesOf(cmx), cmx.editor().selection()); }
