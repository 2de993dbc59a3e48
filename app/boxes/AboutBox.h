// The About box: information on this program, and the properties of the active document's file.
#pragma once

class frmMain;

void showAboutBox(frmMain& frame);
