// One copy of the program for each user and display: who is first, handing command lines over, and receiving them.
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
  enum class Role { first, handedOver, failed };   // failed: the person has been told

  explicit Instance(frmMain& frame);
  ~Instance();

  // Decides whether this is the first copy. If it is: titles the frame and hooks the messages. If not: hands the command
  // lines over, in order; a first copy that is starting is waited for, one that died or ends meanwhile is replaced by this one. Where
  // there is no place to meet, or the first copy is not reached within a moment, this one stands alone.
  // standAlone: never hands over. waits: never becomes the first but starts one, so that it can end when its files are closed.
  Role CheckPrevInst(const QList<HandOff>& commandLines, bool standAlone, bool waits);
  const QString& aloneBecause() const { return aloneBecause_; }   // why no other copy can be met; empty: it can, or nobody asked
  bool HookCopyData();
  QString socketPath() const;
  // Brings the copy at a socket forward and gives it the command lines from *next on, which counts on. `gone`: nobody is there, or
  // who was there ended before it had acted on number *next; `ended`: it ended before the files that are waited for were closed.
  static HandOffAnswer HandOffCommandLine(const QString& socket, const QList<HandOff>& commandLines, qsizetype* next);
  void documentClosed(frmDocument* document);   // tells who waits for its text
  void resign();                                // at the end: from now on another copy may be first

 private:
  HandOffReply Msghook1_Message(quint64 connection, const HandOff& handOff);

  frmMain& frame_;
  std::unique_ptr<Rendezvous> place_;
  QString aloneBecause_;
  Msghook Msghook1;
  QMultiHash<const TextModel*, quint64> waiting_;   // connections to tell when the last window on a text goes
};
