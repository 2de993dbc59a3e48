// The recovery journal of a document's text: one for each text, however many windows show it. Knows when the journal begins,
// and when it goes: after a durable save, or when the person let go of what was changed.
//
// Without a RecoverySession (batch mode, most tests) there are no journals.
#pragma once

#include <QObject>
#include <QString>
#include <functional>
#include <memory>

#include "control/edit/TextModel.h"
#include "text/journal/Journal.h"

// Switches journals on for all texts made while it lives. It must outlive them; one at a time.
class RecoverySession {
 public:
  explicit RecoverySession(const QString& folder = usualFolder());
  ~RecoverySession();
  RecoverySession(const RecoverySession&) = delete;
  RecoverySession& operator=(const RecoverySession&) = delete;

  static RecoverySession* current();   // null: none
  static QString usualFolder();        // "recovery" in the user's state folder; not made yet
  QString folder() const;
  bool flush();                           // everything is on disk now; false: it could not be
  void holdAll(int patienceMs = 10000);   // does what Recovery::holdNow() does for every modified text at once
  // Called on the thread of the session when journals begin to fail, fail for another reason, or work again (empty text).
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
  void saved();                                              // the text is what its file holds: loaded, or saved durably
  std::function<qint64()> caret;   // where it is now, in bytes; asked when the journal is told of the document
  void discard();                  // the person does not want the changes
  // The text is nowhere else: it is written down now, whole. False: it could not be.
  bool holdNow();
  bool holds() const;   // the journal has all of the text, on the platter

 private:
  explicit Recovery(std::shared_ptr<TextModel> model);
  void begin();
  text::JournalAbout about() const;
  std::shared_ptr<TextModel> model_;
  QString path_, title_;
  text::Journal journal_;
  friend class RecoverySession;
};
