// String routines shared by every floor. Positions in their descriptions count characters from 1.
#pragma once

#include <QString>
#include <QStringList>

// Replaces every occurrence of find in place, scanning from the left; the search resumes AT the position of the last
// replacement, so ("1,,,2", ",,", ",") becomes "1,2". An empty find changes nothing; when replacement contains find the
// search resumes behind it, as it would never end.
void ReplaceAll(QString& text, const QString& find, const QString& replacement);

// Paths are split at the last "/" when they hold one, else at the last "\"; on Windows at the later of both.
QString GetFileTitle(const QString& path);   // behind the separator; the whole path without one
QString GetFileDir(const QString& path);     // before it; empty without one
QString GetFileExt(const QString& path);     // behind the last "." of the title, without the dot; empty without one

// The platform's separator between parts; looks a part up without regard to case when it does not exist as written.
QString joinPath(const QString& folder, const QString& part);

QString toCrLf(QString text);   // every CR LF, lone CR and lone LF becomes CR LF
QStringList splitCrLf(
    const QString&
        text);   // entries of a list whose lines each end with CR LF; empty lines are kept, text behind the last CR LF too if not empty

// Plain text for titles, boxes and logs: control and invisible characters as visible escapes, at most maxLength characters.
QString plainForDisplay(const QString& text, int maxLength = 2000);
// The name or path of a file in the same way; between quotation marks where a blank at either end would not be seen.
QString nameForDisplay(const QString& name, int maxLength = 2000);
