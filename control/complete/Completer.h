// The list of words beside the caret: asks its sources while the user types, ranks what they answer, and puts the chosen word into
// the text.
//
// The list never has the focus and takes no key that the text may want. Only after the user entered it (Up, Down, or the command)
// do Return, Tab and the page keys belong to it, unless the options say otherwise. A blank, "." and all that types stay text. Late
// answers never move the row that was chosen.
#pragma once

#include <QObject>
#include <QPointer>
#include <QTimer>
#include <memory>
#include <vector>

#include "control/complete/CompletionSource.h"

class CodeMax;
class QListWidget;

class Completer : public QObject {
  Q_OBJECT
 public:
  // Becomes a child of the control. Knows the words of the text and the keywords of its language.
  explicit Completer(CodeMax& control);
  ~Completer() override;
  void add(std::unique_ptr<CompletionSource> source);

  void offer(bool asked);   // asked: by the user, so also without a letter and in comments; the first row is chosen
  void hide();
  QListWidget* list() const;   // null until it is first shown
  bool eventFilter(QObject* watched, QEvent* event) override;

  static constexpr int kShortestTyped = 2;   // letters, for the list to appear by itself
  static constexpr int kWaitMs = 25;         // for answers, before the list shows what there is
  static constexpr int kMostRows = 50, kRowsShown = 10;

 private:
  struct Row {
    WordOffer word;
    CompletionSource* source;
  };
  void typed();
  void moved();
  bool readTyped(CompletionQuestion& question) const;
  bool isCode(text::ByteOffset at) const;
  void came(CompletionSource& source, std::vector<WordOffer> words);
  bool before(const Row& a, const Row& b) const;
  void show();
  void fill();
  void conceal();   // hides the list; the question stays open
  void place();
  void choose(int row);
  bool takesKey(int key, Qt::KeyboardModifiers modifiers);
  void accept(int row);
  QString typedText() const;

  CodeMax& control_;
  std::vector<std::unique_ptr<CompletionSource>> sources_;
  QPointer<QListWidget> list_;
  CompletionQuestion question_;
  std::vector<Row> rows_;     // those shown, then what came since
  std::size_t shown_ = 0;     // rows of the list
  QTimer wait_;               // runs while answers are collected
  std::uint64_t asked_ = 0;   // number of the question
  bool open_ = false;         // a question is being asked or shown
  bool entered_ = false;      // the keys of the list belong to it
  bool inserting_ = false;
};
