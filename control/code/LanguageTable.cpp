#include "control/code/LanguageTable.h"

#include <map>

#include "base/Workspace.h"
#include "control/code/BlockWords.h"
#include "control/edit/TextModel.h"
#include "text/fold/FoldRules.h"

namespace {

struct Entry {
  text::LanguageTables tables;
  std::shared_ptr<const text::Highlighter> compiled;
  std::shared_ptr<const BlockWords> blocks{};
  text::FoldLists folds{};
  std::shared_ptr<const text::FoldRules> folding{};
};

// The entries of a list, one a line. Empty entries are dropped: an empty comment opener would colour everything.
std::vector<std::string> entries(const QString& list) {
  std::vector<std::string> result;
  for (QStringView line : QStringView(list).split(u'\n')) {
    if (line.endsWith(u'\r')) line.chop(1);
    if (!line.trimmed().isEmpty()) result.push_back(fromQString(line));
  }
  return result;
}

std::vector<std::string> words(const char* blankSeparated) {
  std::vector<std::string> result;
  for (const auto& word : QByteArray(blankSeparated).simplified().split(' ')) result.push_back(word.toStdString());
  return result;
}

text::LanguageTables builtIn(bool caseSensitive, const char* keywords, const char* operators, const char* lineComments,
                             const char* openers, const char* closers, const char* strings, const char* escape) {
  text::LanguageTables t;
  t.caseSensitive = caseSensitive;
  t.keywords = words(keywords);
  t.operators = words(operators);
  t.singleComments = words(lineComments);
  if (*openers) t.multiCommentStart = words(openers);
  if (*closers) t.multiCommentEnd = words(closers);
  t.stringDelims = words(strings);
  t.escapeChar = escape;
  return t;
}

constexpr char kCOperators[] =
    "+ - * / % = == != < > <= >= ! ~ & | ^ && || << >> += -= *= /= %= &= |= ^= <<= >>= ++ -- -> . :: "
    "? : , ; ( ) [ ] { }";
constexpr char kCKeywords[] =
    "alignas alignof and and_eq asm auto bitand bitor bool break case catch char char8_t char16_t char32_t class co_await "
    "co_return co_yield compl concept const const_cast consteval constexpr constinit continue decltype default delete do "
    "double dynamic_cast else enum explicit export extern false final float for friend goto if inline int long mutable "
    "namespace new noexcept not not_eq nullptr operator or or_eq override private protected public register "
    "reinterpret_cast requires restrict return short signed sizeof static static_assert static_cast struct switch template "
    "this thread_local throw true try typedef typeid typename union unsigned using virtual void volatile wchar_t while xor "
    "xor_eq #define #elif #else #endif #error #if #ifdef #ifndef #include #line #pragma #undef #warning";
constexpr char kJavaKeywords[] =
    "abstract assert boolean break byte case catch char class const continue default do double else enum extends false "
    "final finally float for goto if implements import instanceof int interface long native new null package private "
    "protected public record return sealed short static strictfp super switch synchronized this throw throws transient true "
    "try var void volatile while yield";
constexpr char kPascalKeywords[] =
    "and array as begin boolean break byte case char class const constructor continue destructor div do downto else end "
    "except exit exports external false file finalization finally for forward function goto if implementation in inherited "
    "initialization inline integer interface is label library mod nil not object of on operator or packed private procedure "
    "program property protected public published raise real record repeat set shl shr string then threadvar to true try type "
    "unit until uses var virtual while with word xor";
constexpr char kBasicKeywords[] =
    "AddressOf And As Boolean ByRef Byte ByVal Call Case Class Const Currency Date Declare Dim Do Double Each Else ElseIf "
    "Empty End Enum Erase Error Event Exit Explicit False For Friend Function Get GoSub GoTo If Implements In Integer Is Let "
    "Like Long Loop LSet Me Mod New Next Not Nothing Null Object On Option Optional Or ParamArray Preserve Print Private "
    "Property Public RaiseEvent ReDim Resume Return RSet Select Set Single Static Step Stop String Sub Then To True Type "
    "TypeOf Until Variant Wend While With WithEvents Xor";
constexpr char kSqlKeywords[] =
    "ADD ALL ALTER AND ANY AS ASC BEGIN BETWEEN BIGINT BLOB BY CASCADE CASE CAST CHAR CHECK COLLATE COLUMN COMMIT CONSTRAINT "
    "CREATE CROSS CURRENT CURSOR DATABASE DATE DECIMAL DECLARE DEFAULT DELETE DESC DISTINCT DOUBLE DROP ELSE END ESCAPE EXCEPT "
    "EXECUTE EXISTS FETCH FLOAT FOR FOREIGN FROM FULL FUNCTION GRANT GROUP HAVING IF IN INDEX INNER INSERT INT INTEGER "
    "INTERSECT INTO IS JOIN KEY LEFT LIKE LIMIT NATURAL NOT NULL NUMERIC OF OFFSET ON OR ORDER OUTER OVER PARTITION PRIMARY "
    "PROCEDURE REAL RECURSIVE REFERENCES REPLACE RESTRICT RETURNS REVOKE RIGHT ROLLBACK ROW SELECT SET SMALLINT TABLE TEXT "
    "THEN TIME TIMESTAMP TO TRANSACTION TRIGGER UNION UNIQUE UPDATE USING VALUES VARCHAR VIEW WHEN WHERE WITH";

struct Table {
  std::map<QString, Entry> entries;
  int generation = 0;

  Table() {
    const auto add = [this](const char* name, text::LanguageTables t) { entries[QString::fromLatin1(name)].tables = std::move(t); };
    add("C/C++", builtIn(true, kCKeywords, kCOperators, "//", "/*", "*/", "\" '", "\\"));
    add("JAVA", builtIn(true, kJavaKeywords, kCOperators, "//", "/*", "*/", "\" '", "\\"));
    add("PASCAL", builtIn(false, kPascalKeywords, "+ - * / = <> < > <= >= := . , ; : ( ) [ ] ^ @", "//", "{ (*", "} *)", "'", ""));
    add("BASIC", builtIn(false, kBasicKeywords, "+ - * / \\ = <> < > <= >= & ^ . , ( )", "' Rem", "", "", "\"", ""));
    add("SQL", builtIn(false, kSqlKeywords, "+ - * / = <> != < > <= >= || . , ; ( )", "--", "/*", "*/", "' \"", ""));
  }
};

Table& table() { return Workspace::current().part<Table>(); }

}   // namespace

void LanguageTable::registerLanguage(const QString& name, const CmLanguage& language) {
  text::LanguageTables t;
  t.caseSensitive = language.CaseSensitive;
  t.keywords = entries(language.Keywords);
  t.operators = entries(language.Operators);
  t.singleComments = entries(language.SingleLineComments);
  t.multiCommentStart = entries(language.MultiLineComments1);
  t.multiCommentEnd = entries(language.MultiLineComments2);
  t.stringDelims = entries(language.StringDelims);
  // For delimiters without a mark (text/color/EntryMarks.h): case-sensitive languages have the backslash of C as escape character;
  // the others (VHDL, BASIC, Pascal ...) double their delimiters, and a backslash is an ordinary character.
  if (t.caseSensitive) t.escapeChar.assign(1, '\\');
  auto blocks =
      std::make_shared<const BlockWords>(language.BlockStart, language.BlockEnd, language.BlockMid, language.CaseSensitive);
  if (blocks->isEmpty()) blocks.reset();
  text::FoldLists folds{language.CaseSensitive, entries(language.BlockStart), entries(language.BlockEnd),
                        entries(language.Folding)};
  table().entries[name] = {std::move(t), nullptr, std::move(blocks), std::move(folds)};
  ++table().generation;
}

void LanguageTable::unregisterLanguage(const QString& name) {
  if (table().entries.erase(name) > 0) ++table().generation;
}

bool LanguageTable::contains(const QString& name) { return table().entries.count(name) > 0; }

QStringList LanguageTable::names() {
  QStringList result;
  for (const auto& [name, entry] : table().entries)
    if (!name.startsWith(u'\n')) result << name;   // used by one component only, such as a preview
  return result;
}

std::shared_ptr<const text::Highlighter> LanguageTable::find(const QString& name) {
  const auto it = table().entries.find(name);
  if (it == table().entries.end()) return nullptr;
  if (!it->second.compiled) it->second.compiled = std::make_shared<const text::Highlighter>(it->second.tables);
  return it->second.compiled;
}

std::shared_ptr<const BlockWords> LanguageTable::blocks(const QString& name) {
  const auto it = table().entries.find(name);
  return it == table().entries.end() ? nullptr : it->second.blocks;
}

std::shared_ptr<const text::FoldRules> LanguageTable::folding(const QString& name) {
  const auto it = table().entries.find(name);
  if (it == table().entries.end()) return std::make_shared<const text::FoldRules>(text::FoldLists{}, nullptr);
  Entry& entry = it->second;
  if (!entry.folding) {
    const auto colors = find(name);
    entry.folding = std::make_shared<const text::FoldRules>(entry.folds, colors && colors->valid() ? colors : nullptr);
  }
  return entry.folding;
}

int LanguageTable::generation() { return table().generation; }
