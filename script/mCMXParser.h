// The interpreter of the command language. Command strings are lines of statements that edit the active document, write to the log,
// report on the file, and start programs; see docs/command-language.md.
//
// Only one run at a time: a second one is refused, also while the first one waits for a program. A run is one undo step in each
// text that it changes, unless the user edits while it waits for a program. gBusy is set while it runs. Esc stops it. Lines are
// separated by CR LF; other line breaks are accepted too.
#pragma once

#include <QString>

#include "script/Variables.h"

namespace mCMXParser {

enum class Ending {
  done,
  invalid,   // an invalid line; it was reported, and the lines before it have taken effect
  stopped,   // by the user, or because the document or the program disappeared
  refused    // no document, or another run is in progress: nothing was done
};

struct Outcome {
  Ending ending = Ending::done;
  int line = 0;   // invalid and stopped: the last line, from 1
  QString text;   // invalid: that line with its variables replaced; stopped: the reason, empty for the user
};

struct Terms {
  bool interactive = true;      // false, batch mode: statements that open a dialog of their own do nothing
  bool allowPrograms = false;   // nothing is asked before programs start and files are written (Trust.h)
};

// Runs a command string on the frame's active document. language and macro (from 1) say which macro runs; both are 0 for
// other texts. A failing macro is opened in the definitions editor.
Outcome Run(int language, int macro, const QString& commands, Terms terms = {});
bool isRunning();
bool isBetweenStatements();   // events arrive while the text is partly changed: nothing may be opened, closed or read
void Stop();                  // ends the run at the next statement, with the program that it waits for

// The pieces of a run, of use elsewhere (print headers, templates).
// Values of the active document and these answers; texts without "$" are left alone.
void SubstituteVariables(QString& text, const variables::Answers& answers = {});
QString FileInformation();                         // of the active document, lines parted by CR LF; empty without one
QString InvalidCommandText(const QString& line);   // the text of the report's box

}   // namespace mCMXParser
