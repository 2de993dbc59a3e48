// Stores the options of the edit control between runs of the program and applies them to each document.
//
// Options are stored below Software\Zelkor Editor\Editor, one value each; font, keystroke macros and key bindings below \Global. A
// missing or senseless value leaves the control as it is. Colours are stored as 0x00BBGGRR.
#pragma once

class CodeMax;

namespace CMXRegistry {

// Applies the stored options and font to a control. On a first run (no Editor key) the control's own options are stored.
void applyTo(CodeMax& control);
void save(const CodeMax& control);   // options and font
void applyLook(CodeMax& control);    // colours and font only, for a control that is not a document

void applyFont(CodeMax& control);
void saveFont(const CodeMax& control);

// The keystroke macros and key bindings of the program. Invalid lines are ignored. Without a stored value nothing changes.
void loadMacros();
void saveMacros();
void loadHotKeys();
void saveHotKeys();

void storeOptions(const CodeMax& control);   // saves all options that the user can change: save, saveHotKeys and saveMacros in one

}   // namespace CMXRegistry
