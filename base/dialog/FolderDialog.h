// The box that asks for a folder: a file dialog whose filter is kFoldersOnly.
#pragma once

#include <QString>

inline const QString kFoldersOnly = QStringLiteral("|folders|");

QString askForFolder(const QString& title, const QString& start);   // empty: cancelled
