// While the user types, shows the hot keys that begin like the word at the caret, with their descriptions. Tab or SHIFT-F1 expands
// the marked one; all other keys keep their meaning.
//
// Not shown in comments and strings, in read-only texts, while the fields of a template are being filled, and before the second
// letter of a word unless the letter is a hot key itself.
#pragma once

#include <QObject>
#include <QPointer>
#include <functional>

#include "language/CaretWords.h"

class QListWidget;

class HotWords : public QObject {
  Q_OBJECT
 public:
  // Becomes a child of the control. languageIndex returns the position of the text's language in the manager; it is called each
  // time.
  HotWords(CodeMax& cmx, ucCM& manager, std::function<int()> languageIndex, ExpandText expand);
  ~HotWords() override;

  QListWidget* list() const;   // null until it is first shown
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void typed();
  void offer();
  void hide();
  void accept();
  QString prefix() const;   // the letters of the word directly before the caret; empty inside a word
  bool isCode() const;      // the caret is not in a comment or string

  CodeMax& cmx_;
  ucCM& manager_;
  std::function<int()> languageIndex_;
  ExpandText expand_;
  QPointer<QListWidget> list_;
  QString offered_;   // the prefix for which the list was made
};
