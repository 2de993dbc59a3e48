// The variables and prompts of the command language: the answers given in a run, and the sources of the other values.
#pragma once

#include <QString>
#include <array>

class frmDocument;

namespace variables {

// The state of a run: the answers to its prompts (the 21st replaces the first) and the exit of its last program.
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

// Replaces all variables, one after another in the order of the table. A value is searched for later variables only. document may
// be null: its values are then empty.
void substitute(QString& text, frmDocument* document, const Answers& answers);

// The answer whose name the text begins with, and the length of that name; null: none. A name is "$Output" with one digit, or with
// two digits of which the first is not 0.
const QString* answerAt(QStringView text, const Answers& answers, qsizetype* length);
void substituteAnswers(QString& text, const Answers& answers);

// Whether the text contains a variable whose value others may have chosen: words of the text, file names, the clipboard.
bool holdsForeignValue(const QString& text);

// Asks for each "$Input(prompt)" in the text and replaces it by the name of the answer. A prompt without ")" is left unchanged.
// Cancel is an empty answer. If a digit may follow, the name gets an end mark, which is removed with the name.
void expandPrompts(QString& text, Answers& answers);

}   // namespace variables
