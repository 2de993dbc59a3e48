// The fields for a text to find and one to replace it by: every window that searches has the same, with one history.
#pragma once

#include <QString>
#include <QStringList>

class QComboBox;
class QWidget;

QComboBox* makeFindField(QWidget* parent, const QString& name);
// Shows the text, and the history below it.
void fillFindField(QComboBox* field, const QString& text, bool replace);
void rememberFind(QComboBox* field, bool replace);   // puts its text first in the history
