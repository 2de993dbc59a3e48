// What a session keeps of documents, docks and search, read from the frame and given back to it.
#pragma once

#include <QRect>

#include "app/session/SessionFile.h"

class QDockWidget;
class frmDocument;
class frmMain;

// ends: all have agreed to close. Then only a text that stays in its journal counts as modified.
// nullopt: there is nothing to keep, as of a text without a file that the program has filled.
std::optional<KeptDocument> keptOf(const frmMain& frame, frmDocument& document, bool ends);
QRect placeOf(const KeptPlace& kept);   // empty: none, or not a place on any screen
// After it was opened, or its text was restored. ofFile: the text has just been read from its file.
void giveBack(const KeptDocument& kept, frmMain& frame, frmDocument& document, bool ofFile);

void keepFolder(frmMain& frame, SessionState* state);
void keepFrame(frmMain& frame, SessionState* state);   // folder, docks, search
void giveFrameBack(const SessionState& state, frmMain& frame);
