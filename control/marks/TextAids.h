// What a pane shows beside the text itself: guides at the indents, rulers at columns, and the places of the word at the caret. Each
// costs what is painted.
#pragma once

#include <QBasicTimer>
#include <QObject>
#include <string>
#include <vector>

#include "control/view/TextView.h"

class Pane;

namespace textAids {
// The x of the guides of a line, from the start of lines; each of its rows has them. A blank line has those that the lines around it
// share. As the following: none in a font whose letters are not equally wide.
std::vector<double> guidesOf(const TextView& view, text::LineNo line);
// The lines whose guides depend on these, both inclusive: with the blank ones around.
std::pair<std::int64_t, std::int64_t> withBlanksAround(const TextView& view, std::int64_t first, std::int64_t last);
// The x of the rulers, from the start of lines.
std::vector<double> rulers(const TextView& view);
// The places of the word in the bytes [begin, end) of the line, as far as it is laid out: as a whole word in its letter case. Within
// the text.
std::vector<text::ByteRange> places(const text::Snapshot& text, const Row& row, std::int64_t begin, std::int64_t end,
                                    const std::string& word);
}   // namespace textAids

// The word at the caret, known a short while after the caret came to rest; while the user types there is none.
class SameWord : public QObject {
 public:
  explicit SameWord(Pane& pane) : pane_(pane) {}
  const std::string& word() const { return word_; }
  void moved();   // the caret, or the text

  static constexpr int kRestMs = 250;

 protected:
  void timerEvent(QTimerEvent* event) override;

 private:
  std::string atCaret() const;
  Pane& pane_;
  QBasicTimer rest_;
  std::string word_;
};
