// The colours of menus, bars and dialogs: the desktop's, or those that go with a text that is always light or always dark.
#pragma once

#include "control/options/ControlOptions.h"

void useStyle();                            // the desktop's, with menus that scroll; before there are windows
void showLook(ControlOptions::Look look);   // on the whole program, at once
void showStoredLook();                      // as the settings say, before there is a text
