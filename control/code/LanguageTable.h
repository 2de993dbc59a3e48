// The edit control's global table of languages: what a text is coloured by is chosen by name.
#pragma once

#include <QString>
#include <QStringList>
#include <memory>

#include "text/color/Highlight.h"

// One language as it is handed in: lists are entries separated by LF (a trailing LF is fine).
struct CmLanguage {
  bool CaseSensitive = false;
  QString Keywords, Operators, SingleLineComments, MultiLineComments1, MultiLineComments2, StringDelims;
  QString BlockStart{}, BlockEnd{}, BlockMid{};   // see BlockWords.h
};

class BlockWords;

namespace LanguageTable {
// A name registered twice: the later replaces. Unregistering an unknown name does nothing. At start the table holds the
// control's own plain languages "SQL", "C/C++", "PASCAL", "BASIC", "JAVA".
void registerLanguage(const QString& name, const CmLanguage& language);
void unregisterLanguage(const QString& name);
bool contains(const QString& name);
QStringList names();
// Compiled on first use; null for an unknown name. Check valid(): a definition whose multi-line openers and closers differ in
// number is kept but cannot be bound.
std::shared_ptr<const text::Highlighter> find(const QString& name);
// Its block words; null for an unknown name and where there are none.
std::shared_ptr<const BlockWords> blocks(const QString& name);
// Raised on every registration and removal; controls look their language up again by name.
int generation();
}   // namespace LanguageTable
