// Shows, while a person types, the hot keys that begin like the word at the caret, with their descriptions. Tab or SHIFT-F1
// takes the marked one and expands its template; any other key goes its way.
//
// Quiet in comments and strings, in read-only texts, while fields of a template are being filled, and before the second letter of a
// word unless the letter is a hot key itself.
#pragma once

#include <QObject>
#include <QPointer>
#include <functional>

#include "language/CaretWords.h"

class QListWidget;

class HotWords : public QObject {
  Q_OBJECT
 public:
  // Becomes a child of the control. languageIndex: position of the language of its text in the manager, asked each time.
  HotWords(CodeMax& cmx, ucCM& manager, std::function<int()> languageIndex, ExpandText expand);
  ~HotWords() override;

  QListWidget* list() const;   // null before it was first needed; visible while something is offered
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void typed();
  void offer();
  void hide();
  void accept();
  QString prefix() const;   // the letters of the word directly before the caret; empty inside a word
  bool isCode() const;      // the caret is in no comment or string

  CodeMax& cmx_;
  ucCM& manager_;
  std::function<int()> languageIndex_;
  ExpandText expand_;
  QPointer<QListWidget> list_;
  QString offered_;   // the prefix that the list was made for
};
