// What a pane has folded: the commands, what the caret must see, and the handles of the margin. The lines are hidden in the view's map.
//
// Blocks are read beside the interface: until they are known, the handles are those of before, moved with the text.
#pragma once

#include <functional>
#include <map>
#include <span>
#include <vector>

#include "control/edit/Editor.h"
#include "text/fold/FoldedLines.h"

class PaneFolds {
 public:
  // Runs what hides or shows lines, so that the pane stays where it is.
  using ChangeRows = std::function<void(const std::function<void()>& change)>;
  PaneFolds(Editor& editor, text::DisplayMap& map, ChangeRows changeRows);

  void setAllowed(bool allowed);   // false: nothing is folded, nor can be
  bool allowed() const { return allowed_; }

  // At each caret: the innermost block that is not folded; of selected lines, all blocks that begin there.
  void fold();
  void unfold();   // what the row of each caret hides, or in the selected lines
  void toggle();
  void foldLevel(int level);   // from 1: those within so many blocks less one, and none around them; 0: all
  void unfoldAll();
  void foldSelection();   // the selected lines into the first of them
  void toggleAt(text::LineNo line, bool withInner);

  std::span<const text::Fold> folds() const { return folds_.folds(); }
  void setFolds(std::span<const text::Fold> folds);   // ascending; clipped to the text
  std::int64_t hiddenBehind(text::LineNo line) const;

  enum class Handle { none, open, folded };
  Handle handleAt(text::LineNo line);            // of a shown line
  QString hiddenText(text::LineNo line) const;   // the first lines behind it

  // Opens what hides a caret, or half of what is selected.
  void reveal();
  // When an action is over: what a jump had opened closes when the next one leaves it.
  void settle();
  // Whether Backspace or Delete would join a shown line with a hidden one: then this is opened, and the key does no more.
  bool opensBefore(CommandNumber id);
  void onChange(const text::Change& change);   // behind the map

 private:
  const text::Snapshot& snapshot() const { return editor_.snapshot(); }
  bool follows() const;   // the map is that of the present text
  std::shared_ptr<const text::Blocks> blocks();
  LineRange linesOf(text::ByteRange range) const;
  template <class Work>
  void eachCaret(Work work);
  void add(std::vector<text::Fold> folds);
  void open(const std::function<bool(const text::Fold&)>& meant, std::vector<text::Fold>* opened = nullptr);
  void pullCarets();
  bool isCovered(text::LineNo hidden, text::ByteRange selection) const;

  Editor& editor_;
  text::DisplayMap& map_;
  ChangeRows changeRows_;
  text::FoldedLines folds_;
  bool allowed_ = true;
  std::uint64_t revision_ = 0;                     // of the text that the map shows
  std::map<std::int64_t, std::int64_t> handles_;   // lines that were looked at: the last line of what begins there, -1: nothing
  bool handlesKnown_ = false;                      // they are those of the present text
  struct Lent {
    text::Fold fold;
    text::SelectionState at;   // the selection that it was opened for
  };
  std::vector<Lent> lent_;   // since the last change of the text
};
