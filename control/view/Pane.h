// One view of a text as a widget: scrolls, paints, handles keys, mouse and input methods. TextView knows the positions, PanePainter
// the looks, Editor the effects of keys, PaneMouse those of the mouse.
#pragma once

#include <QAbstractScrollArea>
#include <QBasicTimer>
#include <QPointer>
#include <array>
#include <memory>
#include <new>

#include "control/view/PanePainter.h"
#include "control/view/TextView.h"

class PaneFolds;
class PaneMouse;
class PaneRows;
class SameWord;
class StickyLine;

class Pane : public QAbstractScrollArea, public EditorHost {
  Q_OBJECT
 public:
  Pane(ViewState& state, QWidget* parent);
  ~Pane() override;

  Editor& editor() { return *editor_; }
  TextView& view() { return view_; }

  // Notifications: the model changed; its look changed; font or tabs changed.
  void modelChanged(const text::Change& change);
  void appearanceChanged();
  void metricsChanged(text::ByteOffset top);   // what stood at the upper edge
  void optionsChanged();                       // scroll bars, margin
  void released();                             // ViewState::held is 0 again: shows and reports what was noted
  void setPainting(bool on);
  // Runs what hides or shows lines of this pane in view().rows.map, and shows it; what stands at the top stays.
  void changeRows(const std::function<void()>& change);

  bool runCommand(int id, const QVariant& argument);   // false only for an unknown number
  void type(const QString& text);
  // Scrolls as little as needed. False: the line had to be counted up to there, and the user cancelled that.
  bool showCaret(bool mayCancel = false);
  void takeViewOf(const Pane& other);   // its caret and scroll position
  // Copies the selection to the mouse clipboard, if the system has one.
  void publishSelection();
  QRect caretRect() const;   // in the viewport; may be outside of it

  // Scrolling. `top` and `left` in pixels of the text.
  void scrollTo(std::int64_t top, bool smooth);
  void scrollSideways(std::int64_t left);
  void showAt(std::int64_t top);   // at once

  // EditorHost
  qint64 topLine() const override;
  qint64 visibleLines() const override;
  void setTopLine(qint64 line) override;
  DisplayRows* displayRows() override;
  PaneFolds* folds() override { return folds_.get(); }
  void scrollColumns(qint64 cells) override;
  qint64 leftColumn() const override;
  qint64 visibleColumns() const override;
  void toggleWhiteSpaceDisplay() override;
  void toggleWordWrap() override;
  void toggleStickyLine() override;
  void showFindDialog(bool replace) override;
  void hideFindDialog() override;
  void offerPasteHistory() override;
  void offerCompletion() override { emit completionWanted(); }
  void note(const QString& text) override;
  void work(std::int64_t bytes, const std::function<void(text::SearchControl&)>& work) override;
  QWidget* widget() override { return this; }

  QVariant inputMethodQuery(Qt::InputMethodQuery query) const override;

  // Everything during its lifetime is one action of the user: shown and reported once, at its end.
  class Action {
   public:
    explicit Action(Pane& pane) : pane_(&pane) { ++pane.state_.held; }
    ~Action();

   private:
    QPointer<Pane> pane_;
  };

 signals:
  void selectionChanged();
  void focusChanged(bool in);
  void typed();
  void returned();   // a line break was typed
  void rightClicked(const QPoint& globalPosition, bool* handled);
  void doubleClicked();
  void filesDropped(const QStringList& paths);
  void zoomed(int steps);
  void noted(const QString& text);
  void findWanted(bool replace);
  void findUnwanted();
  void completionWanted();
  void overtypeChanged(bool on);
  void whiteSpaceToggled();
  void stickyLineToggled();
  void wordWrapToggled();
  void heldEnded();   // the last Action ended
  void scrolled();    // another part of the text is visible

 protected:
  bool event(QEvent* event) override;
  bool viewportEvent(QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void scrollContentsBy(int dx, int dy) override;
  void timerEvent(QTimerEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;   // keys, input methods and drops survive a lack of memory
  void inputMethodEvent(QInputMethodEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dragMoveEvent(QDragMoveEvent* event) override;
  void dragLeaveEvent(QDragLeaveEvent* event) override;
  void dropEvent(QDropEvent* event) override;

 private:
  friend class PaneMouse;
  friend class PaneRows;

  const text::Snapshot& snapshot() const { return state_.model->snapshot(); }
  PaneLook look() const;

  // Geometry and scrolling (PaneScroll.cpp)
  void fit();   // sizes, margin, rows, scroll bars
  void fitSticky();
  void fitRows();
  void fitBars();
  double rowWidth() const;   // 0: lines are not wrapped
  // The vertical scroll bar counts rows, in a wrapped text lines: their rows are not all known.
  int barOf(std::int64_t top);
  std::int64_t topOfBar(int value);
  void barActed(int action);
  std::int64_t highestTop() const;
  std::int64_t highestLeft() const;
  void stepAnimation();
  void showTop();
  void showLineTip();

  // Runs code that only shows a change; if it lacks memory, everything is repainted later.
  template <class Work>
  void shown(Work work) {
    try {
      work();
    } catch (const std::bad_alloc&) { viewport()->update(); }
  }
  bool countTo(text::ByteOffset at, bool mayCancel);
  void scrollToCaret();
  void flushText();   // shows what changed
  void paintParts(const QRegion& region);
  void updateLines(std::int64_t first, std::int64_t last);   // clipped to what is visible
  void updateCaret();
  void noteSelection();   // called by the editor after a change
  void showSelection();
  void updateSelection();
  void repaintSelection();
  void findPair();
  std::int64_t lineAt(text::ByteOffset at) const;   // counted from 0
  void restartBlink();
  void restartColoring();

  // Keys (PaneKeys.cpp)
  // an action of the user; if memory runs out, the user is told and the selection is restored
  void asked(const std::function<void()>& work);
  void keyPressed(QKeyEvent* event);
  void inputMethodCame(QInputMethodEvent* event);
  void playMacro(const QString& name);
  void afterCommand(const text::SelectionState& before, std::uint64_t revision);
  void setPreedit(const QString& text, int cursor);
  void showDefaultMenu(const QPoint& globalPosition);

  ViewState& state_;
  mutable TextView view_;   // lays out lines on request
  std::unique_ptr<Editor> editor_;
  std::unique_ptr<PaneMouse> mouse_;
  std::unique_ptr<SameWord> sameWord_;

  std::unique_ptr<PaneRows> rows_;
  std::unique_ptr<PaneFolds> folds_;
  StickyLine* sticky_ = nullptr;   // null: not shown
  std::int64_t barScale_ = 1;      // pixels per unit of the vertical scroll bar
  double barUnit_ = 1;             // its units per line, of a wrapped text
  // The text at the upper edge while the width changes: each width has its own row for it.
  struct {
    text::ByteOffset byte;
    std::int64_t top = -1;
    std::uint64_t revision = 0;
  } kept_;
  bool settingBars_ = false;
  int marginDigits_ = 0;
  QBasicTimer scrollTimer_, blinkTimer_, colorTimer_;

  text::SelectionState shownSelection_;   // as painted last
  // The lines in which selection and pair were painted: what moves lines repaints all of them, so these stay true.
  std::int64_t shownAnchor_ = 0, shownCaret_ = 0;
  std::array<std::int64_t, 2> pairLines_{-1, -1};   // -1: none
  std::optional<std::array<text::ByteRange, 2>> pair_;
  std::optional<text::ByteOffset> dropAt_;
  std::unique_ptr<Preedit> preedit_;
  bool caretOn_ = false, overtypeShown_ = false;
  bool severalShown_ = false;             // several carets were painted last
  std::optional<text::Change> pending_;   // not shown yet
  bool allDirty_ = false, flushPosted_ = false, selectionDirty_ = false;
  int firstStroke_ = 0;   // first stroke of an incomplete key sequence
};
