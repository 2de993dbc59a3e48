// The colours of menus, bars and dialogs: the desktop's, or those that match a text that is always light or always dark.
#pragma once

#include "control/options/ControlOptions.h"

void useStyle();                            // the desktop's, with scrolling menus; call before the first window
void showLook(ControlOptions::Look look);   // on the whole program, at once
void showStoredLook();                      // as stored in the settings; before the first text
