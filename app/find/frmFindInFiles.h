// The window for finding and replacing in files: below the texts or floating, with the texts of the find window, switches of
// its own, and where to look. Only asks; FindFrame does it.
#pragma once

#include <QDockWidget>

#include "script/FindTask.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QProgressBar;
class QPushButton;
class frmMain;

class frmFindInFiles : public QDockWidget {
  Q_OBJECT
 public:
  explicit frmFindInFiles(frmMain& frame);

  // root: the folder that is proposed. list: the file list that is open instead of a folder; empty: none.
  void open(const QString& root, const QString& list, bool replace);
  void follow(const QString& root, const QString& list);   // another folder or list was opened
  void tell(const QString& text, bool bad = false);
  void setRunning(bool on);
  QString status() const;
  QString replaceText() const;
  bool preserveCase() const;
  // What the fields ask for; false: something is missing or wrong, and it has been told.
  bool readTask(FindTask* task);
  bool inFileList() const;   // in its files
  bool hasKeys() const;
  void takeKeys();                                           // the field for the text to find gets them
  bool leavesKeys() const { return hasKeys() && !typed_; }   // nothing was typed since then

 signals:
  void findAsked();
  void replaceAsked();
  void cancelAsked();

 protected:
  bool eventFilter(QObject* object, QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  void build();
  void shareTexts();
  void updateButtons();
  void browse();

  frmMain& frame_;
  QString root_, list_;   // that were proposed
  bool running_ = false, typed_ = false;
  QComboBox *find_ = nullptr, *replace_ = nullptr, *where_ = nullptr, *folder_ = nullptr, *masks_ = nullptr;
  QCheckBox *matchCase_ = nullptr, *wholeWord_ = nullptr, *regex_ = nullptr, *preserveCase_ = nullptr, *ignored_ = nullptr,
            *hidden_ = nullptr, *binary_ = nullptr, *all_ = nullptr;
  QPushButton *findAll_ = nullptr, *replaceAll_ = nullptr, *browse_ = nullptr, *cancel_ = nullptr;
  QLabel* status_ = nullptr;
  QProgressBar* progress_ = nullptr;
};
