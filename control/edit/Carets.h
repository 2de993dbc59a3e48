// Several carets in one text. An editor has a main caret, Editor::selection(), the one used last, and may have others. What each of
// them does is one undo step, and undo brings them back as they were.
//
// Invariants: the others ascend; none is a column selection; none overlaps or touches another or the main one. A caret without a
// selection touches a selection at whose edge it stands; two selections side by side do not touch. A column selection has no others.
#pragma once

#include <QObject>
#include <functional>
#include <map>
#include <span>
#include <vector>

#include "control/edit/Editor.h"

struct Caret {
  text::ByteOffset anchor, caret;
  std::int64_t goal = -1;   // the cell that vertical moves keep; -1: none
  text::ByteOffset begin() const { return std::min(anchor, caret); }
  text::ByteOffset end() const { return std::max(anchor, caret); }
  bool empty() const { return anchor == caret; }
  bool operator==(const Caret&) const = default;
};

namespace carets {

std::span<const Caret> others(const Editor& e);
inline bool several(const Editor& e) { return !others(e).empty(); }
bool anySelection(const Editor& e);   // at the main one or another
inline std::size_t count(const Editor& e) { return 1 + others(e).size(); }
// All in order, the main one among them; *main: its index. Without a column selection.
std::vector<Caret> all(const Editor& e, std::size_t* main = nullptr);
// Makes these the carets of the editor, in any order; carets that touch become one.
void set(Editor& e, std::vector<Caret> carets, std::size_t main);
// Adds one, which becomes the main one.
void add(Editor& e, const Caret& caret);
// Removes the caret that touches the place, or adds one there. The last one stays.
void toggle(Editor& e, text::ByteOffset at);
void setMain(Editor& e, const Caret& caret);   // in place of the main one
void drop(Editor& e);                          // all but the main one
void keepBefore(Editor& e);                    // to be called before they change while the text stays
// Takes back the last change of the carets since the text changed: one that was added, went away or moved with others. False: none.
bool takeBack(Editor& e);

// Runs the work at each caret, as one undo step. The work sees an editor of one caret. If each time it makes at most one change, the
// changes of all are applied together; else it runs one after the other, and a text that differs shows in between. What it copies
// goes to the clipboard in one piece for each caret. The user can cancel it; then nothing has changed.
void atEach(Editor& e, const std::function<void()>& work);
// The same; the work is told which caret it is at, counted from 0.
void atEach(Editor& e, const std::function<void(std::size_t)>& work);
// The same for work that makes several changes at a caret, or asks: one after the other.
void oneAfterOther(Editor& e, const std::function<void()>& work);
// Applies edits (see text::Document::apply) as one undo step that keeps the carets. False when read-only.
bool edit(Editor& e, std::span<const text::Edit> edits);
// The same; text that is put in at the edge of a selection is not selected.
bool editAround(Editor& e, std::span<const text::Edit> edits);
// The lines of all carets, see Editor::selectedLines; ascending, those side by side joined.
std::vector<LineRange> lines(Editor& e, LineAtEnd lineAtEnd);

}   // namespace carets

// The carets before and behind the undo steps of a text. A step has room for one selection only; that of several carets carries the
// number of their set in place of cells behind its line, of which a selection that is no column has none.
class CaretSets : public QObject {
  Q_OBJECT
 public:
  static CaretSets& of(TextModel& model);
  // The selection as a step keeps it.
  text::SelectionState keep(const text::SelectionState& main, std::span<const Caret> others);
  // The other carets of a selection that a step has kept. Null: there are none, or they were too many to be kept (*known: false).
  const std::vector<Caret>* find(const text::SelectionState& kept, bool* known) const;

 private:
  using QObject::QObject;
  std::map<std::int64_t, std::vector<Caret>> sets_;   // by number, from 1
  std::size_t size_ = 0;                              // carets in all of them
};
