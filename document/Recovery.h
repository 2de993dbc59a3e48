// The recovery journal of one text, whatever the number of its windows. Decides when the journal begins and when it is deleted:
// after a durable save, or when the user discards the changes.
//
// Without a RecoverySession (batch mode, most tests) there are no journals.
#pragma once

#include <QObject>
#include <QString>
#include <functional>
#include <memory>

#include "control/edit/TextModel.h"
#include "text/journal/Journal.h"

// Enables journals for all texts that are created during its lifetime. It must outlive them. Only one may exist.
class RecoverySession {
 public:
  explicit RecoverySession(const QString& folder = usualFolder());
  ~RecoverySession();
  RecoverySession(const RecoverySession&) = delete;
  RecoverySession& operator=(const RecoverySession&) = delete;

  static RecoverySession* current();   // null: none
  static QString usualFolder();        // "recovery" in the user's state folder; does not create it
  QString folder() const;
  bool flush();                           // writes everything to disk; false: that failed
  void holdAll(int patienceMs = 10000);   // Recovery::holdNow() for all modified texts at once
  // Called on the thread of the session when journals begin to fail, when the reason changes, or when they work again (empty text).
  void onFailure(std::function<void(const QString&)> told);
  QString failure() const { return failure_; }

 private:
  friend class Recovery;
  void lookForFailures();
  text::JournalWriter writer_;
  QList<class Recovery*> all_;
  QString failure_;
  std::function<void(const QString&)> told_;
  std::unique_ptr<QObject> context_;
};

class Recovery : public QObject {
  Q_OBJECT
 public:
  // Null without a session.
  static std::unique_ptr<Recovery> of(std::shared_ptr<TextModel> model);
  ~Recovery() override;

  void setFile(const QString& path, const QString& title);   // path empty: untitled
  void saved();                                              // the text is equal to its file: it was loaded, or saved durably
  std::function<qint64()> caret;   // position of the caret in bytes; called when the journal records the document
  void discard();                  // the user discards the changes
  // Writes the whole text now, for a text that exists nowhere else. False: it could not be written.
  bool holdNow();
  bool holds() const;         // the journal holds the whole text, on disk
  QString fileName() const;   // of the journal, in the session's folder; empty: nothing is written yet

 private:
  explicit Recovery(std::shared_ptr<TextModel> model);
  void begin();
  text::JournalAbout about() const;
  std::shared_ptr<TextModel> model_;
  QString path_, title_;
  text::Journal journal_;
  friend class RecoverySession;
};
