// The session of a frame: which documents are open, how their windows stand, what is searched for. It is written shortly after
// something changes, and brings all of it back at the next start. One for each frame, its child.
//
// Invariants: one copy of the program at a time has a session in force. A document of a session is not looked at on the disk before
// its tab is shown. Unsaved texts come from their recovery journals, and an old journal goes only when a new one holds the text.
// A session that cannot be read costs the arrangement only. While none is in force, nothing is written.
#pragma once

#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QTimer>
#include <map>
#include <memory>
#include <vector>

#include "app/session/SessionFile.h"
#include "text/journal/JournalRead.h"

class QMenu;
class TextModel;
class frmDocument;
class frmMain;

class Session : public QObject {
  Q_OBJECT
 public:
  static Session& of(frmMain& frame);
  ~Session() override;

  // The named sessions of the user, sorted.
  static QStringList names();
  static bool isThere(const QString& name);
  static bool isKept();   // a last session, or one that names the next

  // At the start, before the frame is shown. beginLast does nothing if sessions are switched off.
  void beginLast();
  void begin(const QString& name);
  // Next, when the frame is shown: opens what is to be seen.
  void show();
  // When it has been painted: brings the unsaved texts back. Those that no session knows are offered to the user.
  void restoreTexts();
  void offerTexts();   // those that no session will bring back, on demand

  bool isInForce() const { return file_ != nullptr; }
  const QString& name() const { return name_; }   // empty: the last session, or none

  // What the menu does.
  void askForName();   // saves under a name that the user gives, and goes on with it
  void open(const QString& name);
  void close();   // back to the session without a name
  void askToRemove(const QString& name);
  void fillOpen(QMenu& menu);
  void fillRemove(QMenu& menu);
  bool comesBack() const;   // the last session comes back at the next start
  void setComesBack(bool on);
  bool keepsUnsaved() const;   // the end of the program does not ask about unsaved texts
  void setKeepsUnsaved(bool on);

 private:
  class Late;
  struct Found {
    std::shared_ptr<text::LeftText> journal;
    text::RecoveredText text;
    std::vector<std::shared_ptr<text::LeftText>> older;   // journals of the same text that this one continues
  };
  struct Looked;

  explicit Session(frmMain& frame);
  static std::shared_ptr<SessionFile> fileOf(const QString& name);   // empty: the last session
  // Reads the file and makes it the one in force. False: another copy has it, or it must not be written.
  bool take(const std::shared_ptr<SessionFile>& file, const QString& name);
  void apply(SessionState state);
  void showAnother();
  bool leave();          // closes all documents. False: the user wants to stay
  void goOnWithLast();   // without a name, as it was left; show() and restoreTexts() next
  void applyKeeping();   // after the file in force or a setting has changed
  enum class Last { waits, goesOnHere };
  void rememberName(Last documents);             // so that the next start goes on with this session; what the last session had open
  std::vector<std::string> otherFiles() const;   // of all sessions but this
  frmDocument* openLate(Late& late);
  frmDocument* openText(const KeptDocument& kept, const text::RecoveredText& text);
  void takeTexts(const std::shared_ptr<Looked>& looked);
  void hold(const Found& found, frmDocument* document);   // until the new journal has the text
  void dropHeld(bool all);
  void tellGone();
  void tell(const QString& text);   // in the log, which is shown

  void touch(int ms);
  SessionState state(bool ends);
  std::int64_t numberOf(const std::shared_ptr<TextModel>& text, bool several);
  void write();
  void writeNow(bool ends);

  frmMain& frame_;
  std::shared_ptr<SessionFile> file_, last_;   // in force; the last session, if this copy has it
  QString name_;
  QTimer soon_, heldLook_;
  bool quiet_ = false;   // the documents come or go by this object
  bool texted_ = true;   // the unsaved texts are there
  bool ended_ = false, writing_ = false, again_ = false, cancelled_ = false;
  QString failed_;   // why writing fails, as told
  std::uint64_t writes_ = 0;
  SessionState known_;                                       // as it was written last
  std::map<std::int64_t, std::weak_ptr<TextModel>> texts_;   // those with several windows, by KeptDocument::text
  QPointer<QObject> active_;                                 // the tab to be shown when all texts are there
  QStringList gone_;
  std::vector<std::pair<std::int64_t, QPointer<frmDocument>>> pile_;   // windows that came back, until all texts are there
  struct Held {                                                        // the old journals of a text that was restored
    std::vector<std::shared_ptr<text::LeftText>> journals;
    std::weak_ptr<TextModel> text;
  };
  std::vector<Held> held_;
};
