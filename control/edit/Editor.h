// The editing logic of one caret, or of several (Carets.h), in one text, without painting. A pane owns one; batch mode and tests use it without a widget.
//
// Lines count from 0. Columns of the public operations are characters from 0 (UTF-16 units of the line's QString).
#pragma once

#include <QString>
#include <QStringList>
#include <QVariant>
#include <functional>
#include <memory>

#include "control/edit/Cmd.h"
#include "control/edit/TextModel.h"
#include "control/edit/TypingAids.h"
#include "text/find/Search.h"

class DisplayRows;
class PaneFolds;
class QWidget;

// A position and a range of text in public interfaces. Lines and columns count from 0.
struct CmPosition {
  qint64 LineNo = 0, ColNo = 0;
  bool operator==(const CmPosition&) const = default;
};
struct CmRange {
  qint64 StartLineNo = 0, StartColNo = 0, EndLineNo = 0, EndColNo = 0;
  bool ColumnSel = false;
  bool IsEmpty() const { return StartLineNo == EndLineNo && StartColNo == EndColNo; }
  bool operator==(const CmRange&) const = default;
};

// Whole lines from 0, half-open.
struct LineRange {
  qint64 first = 0, end = 0;
};
// Whether a line counts of which the selection reaches only the start.
enum class LineAtEnd { excluded, included };

// What the logic needs from its window. The default implementation serves tests and batch mode: a window of 25 lines, no dialogs.
class EditorHost {
 public:
  virtual ~EditorHost() = default;
  virtual qint64 topLine() const { return 0; }
  virtual qint64 visibleLines() const { return 25; }
  virtual void setTopLine(qint64) {}
  virtual DisplayRows* displayRows() { return nullptr; }   // null: each line is one row
  virtual PaneFolds* folds() { return nullptr; }           // null: without a view nothing is folded
  virtual void scrollColumns(qint64) {}                    // right positive, in cells
  virtual qint64 leftColumn() const { return 0; }          // the first cell shown
  virtual qint64 visibleColumns() const { return 80; }
  virtual void toggleWhiteSpaceDisplay() {}
  virtual void toggleWordWrap() {}
  virtual void toggleStickyLine() {}
  virtual void showFindDialog(bool replace) { (void)replace; }
  virtual void hideFindDialog() {}
  virtual void offerPasteHistory() {}       // the texts that were copied, to choose one
  virtual void offerCompletion() {}         // the list of words beside the caret
  virtual void note(const QString& text);   // "12 replaced", "wrapped": the status text
  // Runs long work and returns when it is done; in a window the user can cancel it (LongWork.h).
  virtual void work(std::int64_t bytes, const std::function<void(text::SearchControl&)>& work);
  virtual QWidget* widget() { return nullptr; }   // that shows the text; null: none
  virtual QString clipboardText(bool* block);     // *block: the text is a rectangular block
  virtual void setClipboard(const QString& text, bool block);
  // What each of several carets has copied; empty when the clipboard holds something else. `text` is all of it.
  virtual QStringList clipboardPieces();
  virtual void setClipboardPieces(const QString& text, const QStringList& pieces);
};

// The numbers are stored in the settings.
enum class AutoIndent { off = 0, same = 1, language = 2 };

// Options shared by all views of a control; CodeMax holds its display settings.
struct EditOptions {
  int tabSize = 4;           // 1 to 32
  bool expandTabs = false;   // TABEXPAND: a typed tab becomes blanks
  AutoIndent autoIndent = AutoIndent::same;
  bool preserveCase = false;   // when replacing
  bool columnSel = true;
  bool dragDrop = true;
  TypingAids aids;
};

// The search of the whole program: texts and switches are shared by all controls, as users of one find dialog expect.
struct SearchState {
  QString findText, replaceText;
  text::SearchOptions options;
  bool preserveCase = false;
};
SearchState& searchState();

class Editor {
 public:
  Editor(std::shared_ptr<TextModel> model, std::shared_ptr<EditOptions> options, EditorHost* host);
  ~Editor();

  TextModel& model() { return *model_; }
  text::Document& document() { return model_->document(); }
  const text::Snapshot& snapshot() const { return model_->snapshot(); }
  EditOptions& options() { return *options_; }
  EditorHost& host() { return *host_; }

  // Selection. The caret is always on a character boundary and never inside CR LF. Of several carets, this is the main one.
  const text::SelectionState& selection() const { return selection_; }
  void setSelection(text::SelectionState selection);   // and moveCaret, setRange: one caret is left
  text::ByteRange selectedRange() const;               // normalised
  bool hasSelection() const;
  bool spansLines() const;   // whether the selection begins in one line and ends in another
  // The lines that a command on lines works on: those that the selection touches, else the line of the caret. When a selection ends
  // at the start of a line, that line is not touched. A column selection touches all its rows. Commenting, columnising and
  // printing say `included`: they take the last line in any case.
  LineRange selectedLines(LineAtEnd lineAtEnd = LineAtEnd::excluded) const;
  void moveCaret(text::ByteOffset to, bool extend);   // ends a column selection and resets the goal column
  CmRange range(bool normalised) const;               // normalised: start before end; else start = anchor, end = caret
  void setRange(const CmRange& range);                // clipped to the text
  text::ByteOffset offsetOf(CmPosition position) const;
  CmPosition positionOf(text::ByteOffset offset) const;
  QString selectedText() const;   // a column selection: its rows joined by line breaks
  void selectWordAt(text::ByteOffset offset);

  // Changes. Each is one undo step and puts the caret behind the inserted text. False when read-only.
  bool replaceSelection(const QString& text);   // column selections: see typeText
  bool insertBlock(const QString& text);        // a rectangular block at the caret
  bool replaceRange(text::ByteRange range, const QString& text);
  bool typeText(const QString& text);   // as typed: overtype, replaces the selection, joins undo steps;
                                        // into each row of a column selection, at each of several carets
  bool newLine();                       // with auto-indent
  bool undo();
  bool redo();

  bool overtype = false;
  int repeatCount = 1;   // of the next command only
  bool appendNextCut = false;

  // Runs an edit command (CommandTable.h). False only for an unknown number.
  bool execute(CommandNumber id, const QVariant& argument = {});

  std::function<void()> onSelectionChanged;   // after each change of caret or selection

 private:
  friend struct EditorAccess;
  std::shared_ptr<TextModel> model_;
  std::shared_ptr<EditOptions> options_;
  EditorHost* host_;
  text::SelectionState selection_;
  struct Impl;
  std::unique_ptr<Impl> impl_;
};
