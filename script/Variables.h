// The variables and prompts of the command language: the answers given in a run, and where the other values come from.
#pragma once

#include <QString>
#include <array>

class frmDocument;

namespace variables {

// What a run has learnt so far: the answers to its prompts - the 21st goes into the first slot again - and how its last program ended.
class Answers {
 public:
  static constexpr int kSlots = 20;
  int add(const QString& answer);            // the slot it went into
  const QString* at(qsizetype slot) const;   // null: not used
  int result = 0;                            // exit code
 private:
  std::array<QString, kSlots> values_;
  int next_ = 0;
  bool wrapped_ = false;
};

// Replaces each variable everywhere, variable by variable in the order of the table; a value is not looked at again for its own
// variable, only for later ones. document may be null: its values are then empty.
void substitute(QString& text, frmDocument* document, const Answers& answers);

// The answer whose name the text begins with, and the length of that name; null: none. A name is "$Output" with one digit, or with
// two of which the first is no 0.
const QString* answerAt(QStringView text, const Answers& answers, qsizetype* length);
void substituteAnswers(QString& text, const Answers& answers);

// Whether a variable stands in the text whose value others may have chosen: words of the text, names of files, the clipboard.
bool holdsForeignValue(const QString& text);

// Asks for each "$Input(prompt)" in the text, and puts the answer's name there; a prompt without ")" is left as it is. Cancelling is an
// empty answer. Where what stands behind a name may begin with a digit, the name gets an end that goes when the answer is put in.
void expandPrompts(QString& text, Answers& answers);

}   // namespace variables
