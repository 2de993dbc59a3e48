// What finding in many files gives to the command language: FINDINFILES and REPLACEINFILES.
#pragma once

// Call once at start-up; a second call does nothing.
void AddFilesVerbs();
