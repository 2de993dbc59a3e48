// The log: an output window for the command language and for started programs. The frame docks it; it is not a document. From its
// line numbers and compiler messages the user can jump to the texts.
//
// Invariants: appended text is plain text with control characters escaped, and each line ends as the control does. The size is
// limited; after the oldest lines were removed, the first line says so.
#pragma once

#include <QPointer>
#include <QTimer>
#include <QWidget>
#include <array>
#include <memory>

#include "control/CodeMax.h"

class QAction;
namespace process {
class Program;
}

class frmDocument;
struct MessagePlace;

class frmLog : public QWidget {
  Q_OBJECT
 public:
  enum class Stream { text, output, errors };   // from commands; from programs; lines of programs that report an error

  explicit frmLog(QWidget* parent = nullptr);   // Form_Load
  ~frmLog() override;

  CodeMax* const cmx;

  void cmx_DblClick();                       // jumps to the message or the line number under the caret
  bool SaveDocumment(const QString& path);   // false: not saved, and the user has been told; refuses files of open documents
  CmPosition CurrentPosition() const;        // the end of the selection
  void Form_Unload();                        // stores the position of the window; the destructor does it too

  // Appends at the end of the log. Text of another stream than the open last line starts a new line.
  void AppendLog(const QString& text, Stream stream = Stream::text);
  void Clear();
  QString Text() const { return cmx->Text(); }
  bool InsertFile();   // asks for a file; false: none chosen, or it cannot be read
  // Writes the output of a program as it arrives, then how the program ended.
  void watch(process::Program& program);
  bool programRuns() const;
  void stopProgram();   // stops the program that was started last

  // The text whose lines USAGE lists from now on.
  void setUsageOf(frmDocument* document);
  // Puts the caret into the next or previous line that names a file and line or was written by USAGE, and opens that place. False:
  // none.
  bool nextMessage();
  bool previousMessage();

  void setSizeLimit(qint64 bytes) { sizeLimit_ = bytes; }
  std::optional<Stream> streamOf(qint64 line) const;   // what wrote the line; none for lines edited by the user

  QSize sizeHint() const override { return {700, 200}; }
  QSize minimumSizeHint() const override { return {200, 36}; }

  QAction* const stopAction;
  QAction* const nextAction;
  QAction* const previousAction;

 signals:
  void appended(const QString& text, frmLog::Stream stream);   // in its final form
  void closeAsked();                                           // from its menu

 protected:
  void resizeEvent(QResizeEvent* event) override;   // Form_Resize
  void showEvent(QShowEvent* event) override;

 private:
  struct Channel;
  struct Streams;
  void showMenu(const QPoint& globalPosition);
  struct Walked;
  void take(Channel& channel, const QByteArray& bytes);
  void markErrors(qint64 firstLine, const QString& added);
  void showEnd();
  void trim();
  frmDocument* showFile(const QString& path);   // null: it could not be opened
  QStringList folders() const;                  // where relative file names are looked up
  bool jumpToMessage(qint64 line, qint64 column);
  bool jumpTo(const MessagePlace& place, qint64 logLine);
  static bool showPlace(frmDocument* document, qint64 line, qint64 column);   // counts from 0; false: no document
  bool walk(int step);

  qint64 sizeLimit_ = 32 << 20;
  qint64 dropped_ = 0;   // lines that went
  bool openLine_ = false;
  Stream lastStream_ = Stream::text;
  std::unique_ptr<Streams> streams_;
  QPointer<process::Program> program_;
  QString programFolder_;   // its working folder: file names in its messages are relative to it
  QTimer flushTimer_;
  QPointer<frmDocument> usageOf_;
  text::MarkId outputStart_ = 0;   // start of the output of the last program; 0: none
  bool unloaded_ = false;
};
