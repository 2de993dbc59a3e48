// String routines shared by every floor. Positions in their descriptions count characters from 1.
#pragma once

#include <QString>
#include <QStringList>

// Replaces every occurrence of find in place, from left to right. The search continues AT the start of the last replacement, so
// ("1,,,2", ",,", ",") becomes "1,2". An empty find changes nothing. If replacement contains find, the search continues behind it;
// else it would never end.
void ReplaceAll(QString& text, const QString& find, const QString& replacement);

// Paths are split at the last "/", or at the last "\" when there is no "/"; on Windows at the later of both.
QString GetFileTitle(const QString& path);   // the part behind the separator; the whole path when there is none
QString GetFileDir(const QString& path);     // the part before the separator; empty when there is none
QString GetFileExt(const QString& path);     // the part of the title behind the last ".", without the dot; empty when there is none

// Joins the parts with the platform's separator. A part that does not exist is looked up ignoring case.
QString joinPath(const QString& folder, const QString& part);

// A byte that is no UTF-8 stands in a string as the lone surrogate U+DC00 + byte.
inline constexpr char16_t kBadByte = 0xDC00;   // added to the byte
constexpr bool isBadByte(char32_t unit) { return unit >= kBadByte + 0x80u && unit <= kBadByte + 0xFFu; }

inline const QString kCrLf = QStringLiteral("\r\n");
QString toCrLf(QString text);   // every CR LF, lone CR and lone LF becomes CR LF
QStringList splitCrLf(
    const QString&
        // entries of a list whose lines each end with CR LF; keeps empty lines, and text behind the last CR LF unless it is empty
        text);

// Plain text for titles, boxes and logs: control and invisible characters become visible escapes; at most maxLength characters.
QString plainForDisplay(const QString& text, int maxLength = 2000);
// The same for the name or path of a file; in quotation marks when it begins or ends with a blank.
QString nameForDisplay(const QString& name, int maxLength = 2000);
