// Carries the options of the edit control from one run of the program to the next and from one document to the next.
//
// Options stand below Software\Zelkor Editor\Editor, one value each; font, keystroke macros and key bindings below \Global. A
// value that is missing or makes no sense leaves the control as it is. Colours are stored as 0x00BBGGRR.
#pragma once

class CodeMax;

namespace CMXRegistry {

// Gives a control the stored options and font. On a first run (no Editor key) the control's own options become the stored ones.
void applyTo(CodeMax& control);
void save(const CodeMax& control);   // options and font
void applyLook(CodeMax& control);    // colours and font only: of a text that is no document

void applyFont(CodeMax& control);
void saveFont(const CodeMax& control);

// The program's keystroke macros and key bindings. Lines that mean nothing are skipped; without a stored value nothing changes.
void loadMacros();
void saveMacros();
void loadHotKeys();
void saveHotKeys();

void storeOptions(
    const CodeMax& control);   // all that the user may have changed in its options: what save, saveHotKeys and saveMacros do

}   // namespace CMXRegistry
