// The interpreter of the command language: command strings are lines of statements that edit the active document, write to
// the log, report on the file, and start programs. docs/command-language.md is its reference.
//
// One run at a time: a second one is refused while the first is on its way, also while that one waits for a program. A run is
// one undo step in each text that it touches, unless the user works on while a program is waited for. gBusy is up while it
// runs. Esc stops it. Lines are parted by CR LF; other line breaks are taken as such.
#pragma once

#include <QString>

#include "script/Variables.h"

namespace mCMXParser {

enum class Ending {
  done,
  invalid,   // a line that means nothing; it has been reported, and the lines before it have taken effect
  stopped,   // by the user, or because the document or the program went away
  refused    // no document, or a run is on its way: nothing was done
};

struct Outcome {
  Ending ending = Ending::done;
  int line = 0;   // invalid and stopped: the line where it ended, from 1
  QString text;   // invalid: that line with its variables replaced; stopped: why, empty when by the user
};

struct Terms {
  bool interactive = true;      // false, batch mode: statements that open a dialog of their own do nothing
  bool allowPrograms = false;   // nothing is asked before programs start and files are written (Trust.h)
};

// Runs a command string on the frame's active document. language and macro (from 1) say which macro runs; both are 0 for
// other texts. A failing macro is opened in the definitions editor.
Outcome Run(int language, int macro, const QString& commands, Terms terms = {});
bool isRunning();
bool isBetweenStatements();   // events come in while the text is half done: nothing may open, close or read one
void Stop();                  // ends the run at the next statement, with the program that it waits for

// The pieces of a run, of use elsewhere (print headers, templates).
// Values of the active document and these answers; texts without "$" are left alone.
void SubstituteVariables(QString& text, const variables::Answers& answers = {});
QString FileInformation();                         // of the active document, lines parted by CR LF; empty without one
QString InvalidCommandText(const QString& line);   // the text of the report's box

}   // namespace mCMXParser
