// Batch mode: runs a command string on files, without a window, another copy or a user. Settings are read and never written.
//
// For each file: load it, choose the language by its extension, put the caret at the start, run; then save it, if requested and if
// the run succeeded. The log goes to standard output as it is written, boxes and progress to standard error. "$Input(" reads a line
// of standard input (an empty answer at its end). Line ends are those of the platform.
#pragma once

#include <QString>
#include <QStringList>
#include <functional>
#include <memory>

class frmDocument;

struct BatchOptions {
  QString commands;              // the command string
  int language = 0, macro = 0;   // positions (from 1) of the macro that it is; 0: none
  bool allowPrograms = false;    // a macro of a foreign definition file may start programs (Trust.h)
  QStringList files;
  bool save = false;      // writes back the files that the run changed
  QString outputFolder;   // not empty: writes all files there under their own names
  bool replace = false;   // may replace existing files, but never one of `files`
};

namespace batch {

// The exit status: the worst of all files.
inline constexpr int kDone = 0, kInvalidCommand = 1, kFailed = 2;

// Reads command strings from files into `options`; *error is a message for the user, empty on success.
void commandsFromFile(const QString& path, BatchOptions* options, QString* error);             // --script FILE
void commandsOfMacro(const QString& languageAndName, BatchOptions* options, QString* error);   // --macro LANGUAGE/NAME

// While it lives, boxes go to standard error and are answered so that nothing is changed, and settings are not written. For code
// before run(), which has its own.
class Session {
 public:
  Session();
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;
  void setAbout(const QString& file);   // the prefix of box lines; empty: none

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

// Loads each file as a document, with the session, log and frame of batch mode, and passes it to `work`. Returns the worst status.
int eachDocument(const QStringList& files, const std::function<int(frmDocument& document)>& work);

// Needs an application object (any platform plug-in). Replaces the frame while it runs.
int run(const BatchOptions& options);

}   // namespace batch
