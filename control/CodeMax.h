// The edit control: one text in up to four panes, with scroll bars, left margin, colours and keys. A thin widget: Editor edits,
// Pane paints, ControlOptions holds the options.
//
// Lines count from 0, columns are characters from 0 (see Editor.h).
#pragma once

#include <QColor>
#include <QFont>
#include <QVariant>
#include <QWidget>
#include <exception>
#include <functional>
#include <memory>

#include "control/edit/Cmd.h"
#include "control/edit/Editor.h"
#include "control/view/ColorScheme.h"
#include "control/view/LineBack.h"

class Pane;

class CodeMax : public QWidget {
  Q_OBJECT
 public:
  explicit CodeMax(QWidget* parent = nullptr);
  // A second view of another control's text: own caret and scroll position, shared undo.
  CodeMax(CodeMax& sharedWith, QWidget* parent);
  ~CodeMax() override;

  // Files. Empty result: success. Else the reason for the user, and nothing is changed.
  QString OpenFile(const QString& path);
  // options.expected is the stamp of the last load or save when the path is the same file.
  text::SaveResult SaveFile(const QString& path, bool guardAgainstOthers = true);
  text::FileFormat fileFormat() const;
  void setFileFormat(const text::FileFormat& format);   // for the next save; counts as a modification

  // Text. Text() joins the lines with CR LF if EnableCRLF, else with LF.
  QString Text() const;
  qint64 TextLength() const;            // length of Text(), without building it
  void setText(const QString& text);    // one undo step
  qint64 LineCount() const;             // breaks + 1; 1 for the empty text
  QString GetLine(qint64 line) const;   // without terminator; empty out of range
  qint64 GetLineLength(qint64 line) const;
  void InsertText(const QString& text, CmPosition at);
  // Replaces the texts of the lines [first, first + lines.size()) in one undo step; costs only what differs. Line breaks, bookmarks and
  // the selection stay.
  void ReplaceLines(qint64 first, const QStringList& lines);
  void ReplaceText(const QString& text, const CmRange& range);
  void ReplaceSel(const QString& text);
  void AppendText(const QString& text);   // at the end; the caret moves only if it is there

  // Selection.
  CmRange GetSel(bool normalised) const;
  void SetSel(const CmRange& range, bool makeVisible = true);
  void SelectLine(qint64 line, bool makeVisible = true);
  QString SelText() const;
  bool HasSelection() const;     // at the main caret
  bool AnySelection() const;     // at any caret
  QString CurrentWord() const;   // see text/line/WordNear.h
  qint64 CurrentWordLength() const;
  CmPosition CurrentPosition() const;   // the caret
  CmRange CurrentWordRange() const;

  // Searches with the program's search state (Editor.h: searchState). True: found and selected.
  bool FindText(const QString& text, bool forward = true);
  QString findText() const;
  bool SearchCaseSensitive() const;
  void setSearchCaseSensitive(bool on);

  // Marks all visible matches of the text; an empty text removes the marks.
  void showHits(const QString& text, const text::SearchOptions& options);

  // What stands behind the text of lines, asked while they are painted; null: nothing. To be set again when the answers change.
  void setLineBacks(std::function<LineBack(text::LineNo)> backs);
  // What the active pane shows, in pixels. top, left: the point of the text at the upper left corner; area: of the text and its
  // margin, in the control.
  struct ShownPart {
    qint64 top = 0, left = 0;
    int lineHeight = 1;
    QRect area;
  };
  ShownPart shownPart() const;
  void showPart(qint64 top, qint64 left);   // at once; clipped to the text

  // False only for an unknown number.
  bool ExecuteCmd(CommandNumber id, const QVariant& argument = {});
  // All changes up to the matching end are one undo step and one repaint. Nests. Prefer EditBlock.
  void beginEdit();
  void endEdit();
  // One repaint and one SelChange for everything up to release(). Nests.
  void hold();
  void release();

  // State.
  bool Modified() const;
  void setModified(bool on);
  bool EnableCRLF() const;
  void setEnableCRLF(bool on);
  void ConvertLineEnds(bool crlf);   // the whole text, one undo step
  bool ReadOnly() const;
  void setReadOnly(bool on);
  bool CanUndo() const;
  bool CanRedo() const;
  bool overtype() const;
  QString Language() const;
  bool setLanguage(const QString& name);   // false: refused; the text is then not coloured
  bool Visible() const;                    // whether it paints; does not affect the focus
  void setVisibleText(bool on);
  bool hasBookmark(qint64 line) const;
  void setBookmark(qint64 line, bool on);

  // Display and editing options, named as in the settings.
  bool HSplitter() const, VSplitter() const, HScrollBar() const, VScrollBar() const, SmoothScrolling() const, LineToolTips() const,
      LeftMargin() const, ColumnSel() const, DragDrop() const, PreserveCase() const, TabExpand() const, ColorSyntax() const,
      WhiteSpaceDisplay() const, StickyLine() const;
  int AutoIndentMode() const, TabSize() const, WordWrap() const, WrapColumn() const;   // WordWrap: see control/view/ViewState.h
  void setHSplitter(bool), setVSplitter(bool), setHScrollBar(bool), setVScrollBar(bool), setSmoothScrolling(bool),
      setLineToolTips(bool), setLeftMargin(bool), setColumnSel(bool), setDragDrop(bool), setPreserveCase(bool), setTabExpand(bool),
      setColorSyntax(bool), setWhiteSpaceDisplay(bool), setStickyLine(bool);
  void setAutoIndentMode(int), setTabSize(int), setWordWrap(int), setWrapColumn(int);   // out of range: ignored
  bool wraps() const;              // whether this view wraps lines now; the user switches it by TOGGLEWORDWRAP
  void setMayWrap(bool allowed);   // false: each line takes one row, whatever the options say
  const TypingAids& Aids() const;
  void setAids(const TypingAids& aids);
  int CompletionKeyMode() const;
  void setCompletionKeyMode(int);   // a number of CompletionKeys; others are ignored
  QColor GetColor(int slot) const;
  void SetColor(int slot, const QColor& color);   // an invalid colour resets the slot to the scheme
  QFont Font() const;
  void setFontOf(const QFont& font);
  int Zoom() const;   // percent of the font's size, 30 to 500; Ctrl+wheel; not stored
  void setZoom(int percent);
  // Positions of the splitters as fractions of height and width, 0 for none. Only where splitters are allowed.
  void splitPanes(double horizontalBar, double verticalBar);
  void ExecuteProperties();   // shows the properties dialog; emits PropsChange once on OK

  std::shared_ptr<TextModel> model() const;
  Editor& editor();   // of the pane that has or last had the focus

 signals:
  void GotFocus();
  void LostFocus();
  void ModifiedChange();
  void RClick(const QPoint& globalPosition, bool* handled);
  void DblClick();
  void Return();      // after a line break was typed
  void Typed();       // after a character was typed
  void SelChange();   // caret or selection moved, or a command changed the text; once for each action
  void PropsChange();
  void FilesDropped(const QStringList& paths);
  void OvertypeChange(bool on);
  void CompletionWanted();          // by its command
  void Scrolled();                  // the active pane shows another part of the text, or has another size
  void Note(const QString& text);   // for the status bar: "12 replaced"

 protected:
  void changeEvent(QEvent* event) override;

 private:
  void setUp(std::shared_ptr<TextModel> model);
  Pane* addPane(QWidget* parent);
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

// One undo step and one repaint for all changes of a control during its lifetime. An exception rolls them all back.
class EditBlock {
 public:
  explicit EditBlock(CodeMax& control) : control_(control) { control_.beginEdit(); }
  ~EditBlock() {
    if (std::uncaught_exceptions() > exceptions_) control_.model()->document().abandonGroup();
    control_.endEdit();
  }
  EditBlock(const EditBlock&) = delete;
  EditBlock& operator=(const EditBlock&) = delete;

 private:
  CodeMax& control_;
  const int exceptions_ = std::uncaught_exceptions();
};
