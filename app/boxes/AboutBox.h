// The About box: what this program is, and the properties of the active document's file.
#pragma once

class frmMain;

void showAboutBox(frmMain& frame);
