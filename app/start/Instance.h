// One copy of the program for each user and display: decides which copy is first, hands command lines over, and receives them.
#pragma once

#include <QList>
#include <QString>
#include <memory>

#include "handoff/CopyData.h"
#include "handoff/Msghook.h"

class Rendezvous;
class TextModel;
class frmDocument;
class frmMain;

class Instance {
 public:
  enum class Role { first, handedOver, failed };   // failed: the user has been told

  explicit Instance(frmMain& frame);
  ~Instance();

  // Decides whether this is the first copy. If so, titles the frame and listens for messages. If not, hands the command lines over
  // in order: waits for a first copy that is starting, and replaces one that has died or ends meanwhile. If the copies cannot meet,
  // or the first copy does not answer within a moment, this copy runs alone. standAlone: never hands over. waits: never becomes the
  // first copy but starts one, so that this copy can end when its files are closed.
  // session: the copies with this named session meet by themselves; empty: those without one.
  Role CheckPrevInst(const QList<HandOff>& commandLines, bool standAlone, bool waits, const QString& session = {});
  // why no other copy can be reached; empty: it can, or was not tried
  const QString& aloneBecause() const { return aloneBecause_; }
  bool HookCopyData();
  QString socketPath() const;
  // Raises the window of the copy at a socket and passes it the command lines from *next on, which is advanced. `gone`: no
  // receiver, or it ended before it had acted on number *next. `ended`: it ended before the files that are waited for were closed.
  static HandOffAnswer HandOffCommandLine(const QString& socket, const QList<HandOff>& commandLines, qsizetype* next);
  void documentClosed(frmDocument* document);   // informs the senders that wait for its text
  void resign();                                // at the end: another copy may now become the first

 private:
  HandOffReply Msghook1_Message(quint64 connection, const HandOff& handOff);

  frmMain& frame_;
  std::unique_ptr<Rendezvous> place_;
  QString aloneBecause_;
  Msghook Msghook1;
  QMultiHash<const TextModel*, quint64> waiting_;   // connections to inform when the last window of a text closes
};
