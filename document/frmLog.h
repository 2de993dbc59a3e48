// The log: an output window that the command language and started programs write to. The frame docks it; it is never a
// document. Line numbers and messages of compilers in it lead back to the texts.
//
// Always: what is appended is plain text - control characters are shown by escapes - and ends each line as the control does; the
// size is limited, and when the oldest lines go a first line says so.
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
  enum class Stream { text, output, errors };   // written by commands; by programs; lines of theirs that speak of an error

  explicit frmLog(QWidget* parent = nullptr);   // Form_Load
  ~frmLog() override;

  CodeMax* const cmx;

  void cmx_DblClick();                       // jumps to the message or the line number under the caret
  bool SaveDocumment(const QString& path);   // false: not saved, and the user has been told; files in use are refused
  CmPosition CurrentPosition() const;        // the end of the selection
  void Form_Unload();                        // keeps the window's place; the destructor does it too

  // At the end of the log. Text of another stream than what stands at the end of an open line begins a new one.
  void AppendLog(const QString& text, Stream stream = Stream::text);
  void Clear();
  QString Text() const { return cmx->Text(); }
  bool InsertFile();   // asks for a file; false: none chosen, or it cannot be read
  // Writes what a program prints as it comes, then how it ended.
  void watch(process::Program& program);
  bool programRuns() const;
  void stopProgram();   // the one that was started last

  // The text whose lines USAGE lists from here on.
  void setUsageOf(frmDocument* document);
  // To the next or previous line that names a file and a line, or that USAGE wrote, and puts the caret there. False: there is none.
  bool nextMessage();
  bool previousMessage();

  void setSizeLimit(qint64 bytes) { sizeLimit_ = bytes; }
  std::optional<Stream> streamOf(qint64 line) const;   // what wrote that line; none for lines of later hand

  QSize sizeHint() const override { return {700, 200}; }
  QSize minimumSizeHint() const override { return {200, 36}; }

  QAction* const stopAction;
  QAction* const nextAction;
  QAction* const previousAction;

 signals:
  void appended(const QString& text, frmLog::Stream stream);   // as it stands in the log
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
  frmDocument* showFile(const QString& path);   // null: could not be opened
  QStringList folders() const;                  // where relative names of files are looked up
  bool jumpToMessage(qint64 line, qint64 column);
  bool jumpTo(const MessagePlace& place, qint64 logLine);
  static bool showPlace(frmDocument* document, qint64 line, qint64 column);   // from 0; false: no document
  bool walk(int step);

  qint64 sizeLimit_ = 32 << 20;
  qint64 dropped_ = 0;   // lines that went
  bool openLine_ = false;
  Stream lastStream_ = Stream::text;
  std::unique_ptr<Streams> streams_;
  QPointer<process::Program> program_;
  QString programFolder_;   // where it was started: its messages name files from there
  QTimer flushTimer_;
  QPointer<frmDocument> usageOf_;
  text::MarkId outputStart_ = 0;   // of the program started last; 0: none
  bool unloaded_ = false;
};
