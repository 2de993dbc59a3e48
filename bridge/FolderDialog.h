// The box that asks for a folder: a file dialog whose filter is kFoldersOnly (base/dialog/Dialogs.h).
#pragma once

#include <QString>

QString askForFolder(const QString& title, const QString& start);   // empty: cancelled
