// The global table of languages of the edit control. A text chooses its language by name.
#pragma once

#include <QString>
#include <QStringList>
#include <memory>

#include "text/color/Highlight.h"

// One language for registration. Lists are entries separated by LF (a trailing LF is allowed).
struct CmLanguage {
  bool CaseSensitive = false;
  QString Keywords, Operators, SingleLineComments, MultiLineComments1, MultiLineComments2, StringDelims;
  QString BlockStart{}, BlockEnd{}, BlockMid{};   // see BlockWords.h
  QString Folding{};                              // see text/fold/FoldRules.h
};

class BlockWords;
namespace text {
class FoldRules;
}   // namespace text

namespace LanguageTable {
// Registering a name again replaces its language. Unregistering an unknown name does nothing. At start the table holds the
// control's own simple languages "SQL", "C/C++", "PASCAL", "BASIC", "JAVA".
void registerLanguage(const QString& name, const CmLanguage& language);
void unregisterLanguage(const QString& name);
bool contains(const QString& name);
QStringList names();
// Compiled on first use; null for an unknown name. Check valid(): a definition with different numbers of multi-line openers and
// closers is stored but cannot be used.
std::shared_ptr<const text::Highlighter> find(const QString& name);
// Its block words; null for an unknown name and for a language without block words.
std::shared_ptr<const BlockWords> blocks(const QString& name);
// What of its text can be folded, for any language, registered or not.
std::shared_ptr<const text::FoldRules> folding(const QString& name);
// Incremented by every registration and removal; controls then look up their language again by name.
int generation();
}   // namespace LanguageTable
