// Find and Replace. One for each main window, docked as a bar below the texts or floating as a dialog. It works on the control that
// had the focus last. It uses the program's search state (Editor.h), so that the find commands continue its search.
//
// Large texts are searched on a thread (FindJob.h), in a snapshot. If the text has changed meanwhile, nothing is replaced.
#pragma once

#include <QDockWidget>
#include <QPointer>
#include <functional>
#include <memory>

#include "control/find/Finding.h"

class CodeMax;
class QCheckBox;
class QComboBox;
class QLabel;
class QProgressBar;
class QPushButton;
class FindJob;
enum class CaretMove;

class FindDialog : public QDockWidget {
  Q_OBJECT
 public:
  explicit FindDialog(QWidget* parent);
  ~FindDialog() override;

  // Shows the dialog of the control's main window. The selection becomes the text to find or, if it spans lines, the range to
  // search.
  static void showFor(CodeMax& control, bool replace);
  static void hideFor(CodeMax& control);
  static FindDialog* of(const CodeMax& control);   // of its main window; null before it was first shown
  void work(CodeMax& control);                     // works on this control from now on
  CodeMax* control() const { return control_; }
  FindJob& job() { return *job_; }
  QString status() const;   // what stands in it

 protected:
  bool eventFilter(QObject* object, QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void hideEvent(QHideEvent* event) override;
  void changeEvent(QEvent* event) override;

 private:
  void build();
  void open(CodeMax& control, bool replace);
  void showReplace(bool on);
  void backToText();

  // State (FindDialog.cpp)
  void readState();   // copies the search state into the fields
  void writeState();
  void remember(QComboBox* field);   // moves its text to the top of its history
  void tell(const QString& text, bool bad = false);
  void updateButtons();
  void updateHits();

  // What the buttons do (FindActions.cpp)
  struct Target;
  std::unique_ptr<Target> target(const QString& findText);   // null: no control, no text, or an invalid expression
  void findNext(bool forward);
  void findWhileTyping();
  void count();
  void markAll();
  void selectAll();
  using UseOfAll = std::function<void(Editor&, const text::Snapshot&, const std::vector<text::ByteRange>&)>;
  void findAll(const char* command, const UseOfAll& use);   // the command is what a keystroke macro records
  void replaceOne();
  void replaceAll();
  void select(text::ByteRange range, CaretMove move);
  void takeScope();   // the selection becomes the range to search
  void dropScope();
  std::vector<text::ByteRange> scope() const;   // the ranges to search, ascending

  QPointer<CodeMax> control_;
  FindJob* job_ = nullptr;
  QComboBox *find_ = nullptr, *replace_ = nullptr;
  QLabel *replaceLabel_ = nullptr, *status_ = nullptr;
  QCheckBox *matchCase_ = nullptr, *wholeWord_ = nullptr, *regex_ = nullptr, *preserveCase_ = nullptr, *inSelection_ = nullptr,
            *backwards_ = nullptr;
  QPushButton *next_ = nullptr, *previous_ = nullptr, *count_ = nullptr, *markAll_ = nullptr, *selectAll_ = nullptr,
              *replaceOne_ = nullptr, *replaceAll_ = nullptr, *cancel_ = nullptr;
  QProgressBar* progress_ = nullptr;

  struct Scope;
  std::unique_ptr<Scope> scope_;
  std::optional<text::ByteRange> typingFrom_;   // start of the search while the user types
};
