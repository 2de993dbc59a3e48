// What a text itself does behind its block words: how far it indents behind each, judged by the blocks that it has. A text that indents
// nothing has no habits.
#pragma once

#include <QHash>
#include <QString>
#include <map>
#include <vector>

#include "change/indent/Reindent.h"

class IndentHabits {
 public:
  using Tally = std::vector<std::pair<int, int>>;   // a distance, and how many lines stand so

  // `old`: the unit that the text has, `fresh`: the one it gets.
  IndentHabits(int old, int fresh) : old_(old), fresh_(fresh) {}
  static void count(Tally* tally, int distance);
  static int mostOf(const Tally& tally);   // kNone for an empty one
  void judgeUnit();                        // once all blocks are noted: how far most of them indent is the unit that the text has
  void note(const QString& word, int distance);   // one block; kNone says nothing
  // The blanks that a line behind `word` gets: its own distance where many blocks of the word have that, else `otherwise` unless most blocks
  // agree. A distance of 0 needs nearly all of them, and a text that indents elsewhere.
  int width(const QString& word, int otherwise, int own = kNone) const;
  int unit() const { return old_; }   // that the text has
  // A distance that was made by hand: one or two units become as many of the new ones, any other stays.
  int ofHand(int distance) const { return distance == old_ ? fresh_ : distance == 2 * old_ ? 2 * fresh_ : distance; }

  static constexpr int kNone = -10000;

 private:
  int scaled(int distance, int otherwise) const;   // in the fresh unit

  int old_, fresh_;
  QHash<QString, std::map<int, int>> blocks_;
  int indented_ = 0, all_ = 0;
};
