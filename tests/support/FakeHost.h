// The window around an editor in tests: remembers what it was told, and has a clipboard of its own.
#pragma once

#include "control/edit/Editor.h"

class FakeHost : public EditorHost {
 public:
  qint64 top = 0, lines = 10, left = 0, columns = 20;
  QStringList notes;
  QString clipboard;
  QStringList pieces;
  bool clipboardBlock = false;
  int findDialogs = 0, replaceDialogs = 0, whiteSpaceToggles = 0;

  qint64 topLine() const override { return top; }
  qint64 visibleLines() const override { return lines; }
  void setTopLine(qint64 line) override { top = line; }
  void scrollColumns(qint64 cells) override { left = std::max<qint64>(0, left + cells); }
  qint64 leftColumn() const override { return left; }
  qint64 visibleColumns() const override { return columns; }
  void toggleWhiteSpaceDisplay() override { ++whiteSpaceToggles; }
  void showFindDialog(bool replace) override { ++(replace ? replaceDialogs : findDialogs); }
  void note(const QString& text) override {
    if (!text.isEmpty()) notes += text;
  }
  QString clipboardText(bool* block) override {
    if (block) *block = clipboardBlock;
    return clipboard;
  }
  void setClipboard(const QString& text, bool block) override {
    clipboard = text;
    clipboardBlock = block;
    pieces.clear();
  }
  QStringList clipboardPieces() override { return pieces; }
  void setClipboardPieces(const QString& text, const QStringList& all) override {
    setClipboard(text, false);
    pieces = all;
  }
};
