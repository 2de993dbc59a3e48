// Batch mode: a command string over files, without a window, a running copy or a person. Settings are read and never written.
//
// Per file: load, language by extension, caret at the start, run, then - when asked for and the run ended well - save. The log
// goes to standard output as it is written, boxes and progress to standard error; "$Input(" reads a line of standard input (an
// empty answer at its end). Line ends are the platform's own.
#pragma once

#include <QString>
#include <QStringList>
#include <functional>
#include <memory>

class frmDocument;

struct BatchOptions {
  QString commands;              // the command string
  int language = 0, macro = 0;   // the positions (from 1) of the macro that it is; 0: none
  bool allowPrograms = false;    // a macro of foreign definitions may start programs (Trust.h)
  QStringList files;
  bool save = false;      // back to the files that the run changed
  QString outputFolder;   // not empty: all files go there instead, under their own names
  bool replace = false;   // also in the place of files that are there already, though never of one of `files`
};

namespace batch {

// Exit status: the worst of all files.
inline constexpr int kDone = 0, kInvalidCommand = 1, kFailed = 2;

// Command strings from elsewhere, into `options`; *error is a text for the person, empty when all is well.
void commandsFromFile(const QString& path, BatchOptions* options, QString* error);             // --script FILE
void commandsOfMacro(const QString& languageAndName, BatchOptions* options, QString* error);   // --macro LANGUAGE/NAME

// While one lives, boxes go to standard error, answered so that nothing is changed, and settings are not written. For what is done
// before run(), which has its own.
class Session {
 public:
  Session();
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;
  void setAbout(const QString& file);   // as it is shown: begins the lines of boxes; empty: nothing does

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

// Loads each file as a document, with the session, log and frame of batch mode, and hands it to `work`. The worst status.
int eachDocument(const QStringList& files, const std::function<int(frmDocument& document)>& work);

// Needs an application object (any platform plugin). Takes the frame for the time it runs.
int run(const BatchOptions& options);

}   // namespace batch
