#include "language/LanguageProperties.h"

#include <QCoreApplication>

namespace {

using P = LanguageProperty;
using Mark = text::EntryMark;

#define TEXT(text) QT_TRANSLATE_NOOP("frmDefinitions", text)

// clang-format off
constexpr P kProperties[] = {
    {"Keywords", &clsLang::Keywords, P::list,
     "txtKeyword", TEXT("&Keywords"), "", P::wordBox, 0, 8,
     &CmLanguage::Keywords},
    {"Library Words", &clsLang::LibraryWords, P::list,
     "txtLibrary", TEXT("&Library Words"), TEXT("Coloured as keywords; names for Format"), P::wordBox, 1, 2,
     &CmLanguage::Keywords, Mark::library},
    {"Operators", &clsLang::Operators, P::list,
     "txtOperator", TEXT("&Operators"), "", P::signBox, 0, 8,
     &CmLanguage::Operators},
    {"Description", &clsLang::Description, P::prose,
     "txtDescription", TEXT("D&escription"), TEXT("Language Description"), P::languageBox, 0, 2},
    {"SingleComments", &clsLang::SingleComments, P::list,
     "txtSLC", TEXT("Sin&gle Line "), TEXT("This is the single line comment"), P::commentBox, 0, 2,
     &CmLanguage::SingleLineComments, Mark::none, true},
    {"MultiCommentStart", &clsLang::MultiCommentStart, P::list,
     "txtMLCS", TEXT("Mu&lti Line Start"), TEXT("Multi-line comment start"), P::commentBox, 1, 2,
     &CmLanguage::MultiLineComments1, Mark::none, true},
    {"MultiCommentEnd", &clsLang::MultiCommentEnd, P::list,
     "txtMLCE", TEXT("Multi &Line End"), TEXT("Multi-Line Comment End"), P::commentBox, 2, 2,
     &CmLanguage::MultiLineComments2},
    {"StringDelims", &clsLang::StringDelims, P::list,
     "txtText", TEXT("Te&xt Delimiters"), "", P::signBox, 1, 2,
     &CmLanguage::StringDelims, Mark::none, true},
    {"Sign Places", &clsLang::SignPlaces, P::list,
     "txtPlaces", TEXT("Sign Plac&es"),
     TEXT("Where a comment sign or text delimiter counts: word #, command # or line *;\n"
          "escape characters in texts: plain ' or escape \""), P::commentBox, 3, 1},
    {"Formatting", &clsLang::Formatting, P::list,
     "txtFormatting", TEXT("Formattin&g"),
     TEXT("case names, case all, tabs: what has a meaning.\n"
          "lines \", raw R\", here <<, rest __END__: texts that span lines"), P::indentBox, 3, 1},
    {"Quoted Names", &clsLang::QuotedNames, P::list,
     "txtQuoted", TEXT("&Quoted Names"), TEXT("The sign that an escaped name begins with and, behind a blank, the sign that ends it"), P::signBox, 2, 1,
     &CmLanguage::StringDelims, Mark::name},
    {"Extensions", &clsLang::Extension, P::line,
     "txtExtension", TEXT("E&xtensions"), TEXT("Extensions on which this language definition will be used."), P::languageBox, 1, 1},
    {"File Names", &clsLang::FileNames, P::line,
     "txtFileNames", TEXT("&File Names"), TEXT("Whole names of files of this language, and #!interpreter of scripts, separated by ;"),
     P::languageBox, 2, 1},
    {"Contents", &clsLang::Contents, P::list,
     "txtContents", TEXT("C&ontents"), TEXT("Words that identify this language in a file whose extension several languages have"),
     P::languageBox, 3, 1},
    {"HelpFile", &clsLang::HelpFile, P::line,
     "txtHelp", TEXT("Help &File"), "", P::helpBox, 0, 1},
    {"IndIn", &clsLang::BlockStart, P::list,
     "txtIin", TEXT("Ind&ent"), TEXT("Indent on these words"), P::indentBox, 0, 2,
     &CmLanguage::BlockStart},
    {"IndOut", &clsLang::BlockEnd, P::list,
     "txtIOut", TEXT("&OutDent"), TEXT("Remove indent (outdent) on these words"), P::indentBox, 1, 2,
     &CmLanguage::BlockEnd},
    {"IndInOut", &clsLang::BlockMid, P::list,
     "txtIinout", TEXT("Bot&h"), TEXT("Perfrom an Outdent, then an indent on these words"), P::indentBox, 2, 2,
     &CmLanguage::BlockMid},
    {"Folding", &clsLang::Folding, P::list,
     "txtFolding", TEXT("Foldin&g"),
     TEXT("Which words belong together: pair fork join; unit module; layer #if / #else / #endif; region //{ //}"), P::indentBox, 4, 1,
     &CmLanguage::Folding},
};
// clang-format on

#undef TEXT

}   // namespace

std::span<const LanguageProperty> languageProperties() { return kProperties; }

QString captionOf(const LanguageProperty& property) {
  return QCoreApplication::translate("frmDefinitions", property.caption).remove(u'&').trimmed();
}
