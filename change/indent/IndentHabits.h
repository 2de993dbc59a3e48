// How the text itself indents behind each of its block words, learned from its blocks. A text without indentation has no habits.
#pragma once

#include <QHash>
#include <QString>
#include <map>
#include <vector>

#include "change/indent/Reindent.h"

class IndentHabits {
 public:
  using Tally = std::vector<std::pair<int, int>>;   // a distance, and the number of lines that have it

  // `old`: the unit of the text, `fresh`: the new one.
  IndentHabits(int old, int fresh) : old_(old), fresh_(fresh) {}
  static void count(Tally* tally, int distance);
  static int mostOf(const Tally& tally);   // kNone for an empty one
  void judgeUnit();                        // call after all blocks were noted: the unit of the text is the distance of most blocks
  void note(const QString& word, int distance);   // adds one block; kNone is ignored
  // The blanks of a line behind `word`: its own distance if many blocks of the word have it, else `otherwise`, unless most blocks
  // agree. A distance of 0 needs nearly all blocks, and a text that is indented elsewhere.
  int width(const QString& word, int otherwise, int own = kNone) const;
  int unit() const { return old_; }   // that the text has
  // Converts a distance that was made by hand: one or two old units become new ones, any other distance stays.
  int ofHand(int distance) const { return distance == old_ ? fresh_ : distance == 2 * old_ ? 2 * fresh_ : distance; }

  static constexpr int kNone = -10000;

 private:
  int scaled(int distance, int otherwise) const;   // in the fresh unit

  int old_, fresh_;
  QHash<QString, std::map<int, int>> blocks_;
  int indented_ = 0, all_ = 0;
};
