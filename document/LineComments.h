// Commenting out the lines of a selection, and taking the marks off again. Each is one undo step; long selections can be cancelled.
#pragma once

#include <QString>

class CodeMax;

// Puts the mark in front of each line.
void commentLines(CodeMax& control, const QString& mark);
// Takes one mark off each line that begins with it, behind blanks.
void uncommentLines(CodeMax& control, const QString& mark);
