// The variables and prompts of the command language: the answers given in a run, and where the other values come from.
#pragma once

#include <QString>
#include <array>

class frmDocument;

namespace variables {

// Answers to prompts: the slots used so far in this run. The 21st answer goes into the first slot again.
class Answers {
 public:
  static constexpr int kSlots = 20;
  void clear();
  int add(const QString& answer);               // the slot it went into
  const QString* at(qsizetype slot) const;      // null: not used
 private:
  std::array<QString, kSlots> values_;
  int next_ = 0;
  bool wrapped_ = false;
};

// Replaces each variable everywhere, variable by variable in the order of the table; a value is not looked at again for its own
// variable, only for later ones. document may be null: its values are then empty.
void substitute(QString& text, frmDocument* document, const Answers& answers);

// Asks for each "$Input(prompt)" in the text; a prompt without ")" is left as it is. Cancelling is an empty answer.
void expandPrompts(QString& text, Answers& answers);

}  // namespace variables
