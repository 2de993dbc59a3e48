#include "language/DefinitionText.h"

#include <algorithm>

#include "base/Strings.h"
#include "language/LanguageProperties.h"

namespace definition {

namespace {

const QLatin1String kLanguage(kLanguageMark), kDescription(kDescriptionMark), kCaseSensitive("Case Sensitive"), kForeign("Foreign");

// Written even when it is empty.
bool isAlwaysWritten(const LanguageProperty& property) { return property.value == &clsLang::Keywords; }

// Calls use(line) for each line of a text. A break at the end of the text does not start another line.
template <class F>
void forEachLine(QStringView text, F use) {
  qsizetype begin = 0;
  while (begin < text.size()) {
    qsizetype end = begin;
    while (end < text.size() && text[end] != u'\r' && text[end] != u'\n') ++end;
    use(text.mid(begin, end - begin));
    begin = end + (end + 1 < text.size() && text[end] == u'\r' && text[end + 1] == u'\n' ? 2 : 1);
  }
}

void SubmitMacro(clsLang& language, const QString& name, const QString& text, const QString& desc) {
  const auto macro = language.cMacros()->Add();
  macro->Name = name;
  macro->CommandString = text;
  macro->Desc = desc;
}

void SubmitTemplate(clsLang& language, const QString& name, const QString& text, const QString& desc) {
  const auto item = language.cTemplate()->Add(name);
  item->UserString = text.chopped(std::min<qsizetype>(2, text.size()));
  item->Desc = desc;
}

void SubmitWordList(clsLang& language, const QString& name, const QString& text, const QString& desc) {
  language.cWordList()->Add(name, text)->Desc = desc;
}

class Reader {
 public:
  void line(QStringView line) {
    const LineKind kind = kindOf(line);
    switch (kind) {
      case LineKind::language:
        finish();
        if (!languages_) languages_ = std::make_shared<colLangs>();
        language_ = languages_->Add(nameIn(line, kind).toString());
        language_->isCaseSensitive = false;
        state_ = LineKind::body;
        break;
      case LineKind::description: desc_ = nameIn(line, kind).toString(); break;
      case LineKind::body:
        if (!line.isEmpty() || state_ == LineKind::templateText) (body_ += line) += kCrLf;
        break;
      default:
        finish();
        body_.clear();
        name_ = nameIn(line, kind).toString();
        state_ = kind;
        break;
    }
  }
  std::shared_ptr<colLangs> result() {
    finish();
    return std::move(languages_);
  }

 private:
  void finish() {
    if (language_) submit();
    desc_.clear();
  }
  void submit() {
    switch (state_) {
      case LineKind::property: submitProperty(); break;
      case LineKind::macro: SubmitMacro(*language_, name_, body_, desc_); break;
      case LineKind::templateText: SubmitTemplate(*language_, name_, body_, desc_); break;
      case LineKind::wordList: SubmitWordList(*language_, name_, body_, desc_); break;
      default: break;
    }
  }
  void submitProperty() {
    if (name_ == kCaseSensitive) language_->isCaseSensitive = true;
    if (name_ == kForeign) language_->isForeign = true;
    for (const LanguageProperty& property : languageProperties()) {
      if (name_ != QLatin1String(property.section)) continue;
      if (property.form == LanguageProperty::line) body_.remove(kCrLf);
      (*language_).*(property.value) = body_;
    }
  }

  std::shared_ptr<colLangs> languages_;
  std::shared_ptr<clsLang> language_;
  LineKind state_ = LineKind::body;   // kind of the section being read; body: none
  QString name_, body_, desc_;
};

void printLine(QString& to, const QString& text) { (to += toCrLf(text)) += kCrLf; }

QString foreignHeader() { return u'[' + kForeign + u']'; }

void PrintField(QString& to, const QString& header, const QString& text, bool always = false) {
  if (text.isEmpty() && !always) return;
  printLine(to, header);
  printLine(to, text);
}

void printItem(QString& to, QLatin1String open, const QString& name, QLatin1String close, const QString& text,
               const QString& desc) {
  PrintField(to, open + oneLine(name) + close, text, true);
  if (!desc.isEmpty()) printLine(to, kDescription + oneLine(desc));
}

}   // namespace

LineKind kindOf(QStringView line) {
  if (line.startsWith(kLanguage)) return LineKind::language;
  if (line.startsWith(kDescription)) return LineKind::description;
  if (line.size() < 3 || line[0] != u'[') return LineKind::body;
  LineKind kind;
  switch (line[1].unicode()) {
    case '{': kind = LineKind::macro; break;
    case '#': kind = LineKind::templateText; break;
    case '^': kind = LineKind::wordList; break;
    default: return LineKind::property;
  }
  return line.size() < 4 ? LineKind::body : kind;   // too short to remove two characters at each end
}

QStringView nameIn(QStringView line, LineKind kind) {
  switch (kind) {
    case LineKind::language: return line.mid(kLanguage.size());
    case LineKind::description: return line.mid(kDescription.size());
    case LineKind::property: return line.mid(1, line.size() - 2);
    case LineKind::body: return {};
    default: return line.mid(2, line.size() - 4);
  }
}

std::shared_ptr<colLangs> read(const QString& text) {
  Reader reader;
  forEachLine(text, [&](QStringView line) { reader.line(line); });
  return reader.result();
}

QString writeLanguage(const clsLang& language, bool withMark) {
  QString to;
  printLine(to, kLanguage + oneLine(language.Name));
  if (withMark && language.isForeign) printLine(to, foreignHeader());
  for (const LanguageProperty& property : languageProperties()) {
    const QString& text = language.*(property.value);
    PrintField(to, u'[' + QLatin1String(property.section) + u']', property.form == LanguageProperty::line ? oneLine(text) : text,
               isAlwaysWritten(property));
  }
  if (language.isCaseSensitive) printLine(to, u'[' + kCaseSensitive + u']');
  for (const auto& list : *language.cWordList())
    printItem(to, QLatin1String("[^"), list->Name, QLatin1String("^]"), list->WordList, list->Desc);
  for (const auto& macro : *language.cMacros())
    printItem(to, QLatin1String("[{"), macro->Name, QLatin1String("}]"), macro->CommandString, macro->Desc);
  for (const auto& item : *language.cTemplate())
    printItem(to, QLatin1String("[#"), item->HotKey, QLatin1String("#]"), item->UserString, item->Desc);
  return to;
}

QString write(const colLangs& languages, bool withMarks) {
  QString to;
  for (const auto& language : languages) to += writeLanguage(*language, withMarks);
  return to;
}

QStringList namesIn(const QString& text) {
  QStringList names;
  forEachLine(text, [&](QStringView line) {
    if (kindOf(line) == LineKind::language) names << nameIn(line, LineKind::language).toString();
  });
  return names;
}

QString blockOf(const QString& text, const QString& name) {
  QString block;
  bool done = false;
  forEachLine(text, [&](QStringView line) {
    if (kindOf(line) == LineKind::language) {
      done = done || !block.isEmpty();
      if (block.isEmpty() && nameIn(line, LineKind::language) != name) return;
    } else if (block.isEmpty()) {
      return;
    }
    if (!done) (block += line) += kCrLf;
  });
  return block;
}

QList<int> linesTakenForHeaders(const QString& body) {
  QList<int> taken;
  int number = 0;
  forEachLine(body, [&](QStringView line) {
    if (kindOf(line) != LineKind::body) taken += number;
    ++number;
  });
  return taken;
}

QString oneLine(QString text) {
  text.remove(u'\r');
  text.remove(u'\n');
  return text;
}

}   // namespace definition
