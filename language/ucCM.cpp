#include "language/ucCM.h"

#include <QDir>

#include "base/Program.h"
#include "base/Strings.h"
#include "base/dialog/Dialogs.h"
#include "bridge/FileNames.h"
#include "control/code/LanguageTable.h"
#include "control/edit/TextModel.h"
#include "language/DefinitionText.h"
#include "text/line/Words.h"

namespace {

constexpr std::int64_t kLargestFile = 64 << 20;   // bytes; far above any real definition file

const QString kIniTitle = QStringLiteral("Warning : Ini File Not Valid");

// A format that can represent the text exactly: that of the file, unless a character does not fit or the next reading would detect
// another encoding.
text::FileFormat fittingFormat(const std::string& bytes, const text::FileFormat& own) {
  text::EncodeError error;
  const auto encoded = text::encodeText(bytes, own, &error);
  return encoded && text::detectFormat(*encoded) == own ? own : text::FileFormat{};
}

// Whether a word of the language's Contents occurs in the text outside comments and strings.
bool holdsContents(const clsLang& language, const QString& text) {
  const auto highlighter = LanguageTable::find(language.Name);
  if (!highlighter) return false;
  std::vector<text::Token> tokens;
  text::LineState state = 0;
  const QStringList words = language.Contents.split(QStringLiteral("\r\n"), Qt::SkipEmptyParts);
  const auto sensitivity = language.isCaseSensitive ? Qt::CaseSensitive : Qt::CaseInsensitive;
  const auto isWord = [](QStringView line, qsizetype at) {
    return at >= 0 && at < line.size() && text::classOf(line[at].unicode()) == text::CharClass::word;
  };
  for (const QString& line : text.split(u'\n')) {
    std::string bytes = fromQString(line);
    state = highlighter->scanLine(bytes, state, &tokens);
    for (const text::Token& token : tokens)
      if (token.kind == text::TokenKind::comment || token.kind == text::TokenKind::string)
        std::fill_n(bytes.begin() + token.begin, token.length, ' ');
    const QString code = toQString(bytes);
    for (const QString& word : words)
      for (qsizetype at = code.indexOf(word, 0, sensitivity); at >= 0; at = code.indexOf(word, at + 1, sensitivity))
        if (!(isWord(word, 0) && isWord(code, at - 1)) && !(isWord(word, word.size() - 1) && isWord(code, at + word.size())))
          return true;
  }
  return false;
}

QString shippedFolder() { return joinPath(applicationFolder(), QStringLiteral("config")); }

// Resolves links.
bool isBelow(const QString& path, const QString& folder) {
  const QString file = fileIsThere(path) ? foldersRealPath(path) : foldersRealPath(GetFileDir(path)) + u'/' + GetFileTitle(path);
  const QString place = foldersRealPath(folder);
  return !place.isEmpty() && file.startsWith(place + u'/');
}

QString freeOwnFile() {
  QString name = QStringLiteral("Zelkor.ini");
  const QDir folder(userConfigFolder());
  for (int n = 2; text::fileExists(fromQString(folder.filePath(name))); ++n) name = QStringLiteral("Zelkor-%1.ini").arg(n);
  return folder.filePath(name);
}

// The names of foreign languages in the user's own definition file are stored in a file beside it, one a line. The definition file
// itself can also be used by other programs.
std::string marksFile(const QString& file) { return fromQString(file) + ".foreign"; }

// readable: the file does not exist or could be read.
QString marksOf(const QString& file, bool* readable = nullptr) {
  std::string error;
  const bool there = text::fileExists(marksFile(file));
  const std::string bytes = there ? text::readBytes(marksFile(file), &error, kLargestFile) : std::string();
  if (readable) *readable = error.empty();
  return toQString(bytes);
}

// Returns the reason when they could not be written, else empty.
QString writeMarks(const QString& file, QStringList names) {
  names.removeDuplicates();
  if (names.isEmpty() && !text::fileExists(marksFile(file))) return {};
  QString lines;
  for (const QString& name : names) lines += definition::oneLine(name) + u'\n';
  return toQString(text::saveBytes(marksFile(file), fromQString(lines), 0600).error);
}

}   // namespace

bool ucCM::isForeignPlace(const QString& path) {
  return !path.isEmpty() && !isBelow(path, shippedFolder()) && !isBelow(path, userConfigFolder());
}

void ucCM::setIniFile(const QString& path) {
  if (path == iniFile_) return;
  iniFile_ = path;
  stamp_.reset();   // belongs to the old file
  if (iniFileChanged) iniFileChanged();
}

bool ucCM::BrowseIniFile() {
  FileDialogRequest request;
  request.disk = &exactFiles();
  request.title = QStringLiteral("Select IniFile");
  request.filter = QStringLiteral("*.ini");
  request.defaultExtension = QStringLiteral("ini");
  request.folder = shippedFolder();
  const QStringList chosen = dialogs().openFile(request);
  if (chosen.isEmpty()) return false;
  setIniFile(chosen.first());
  return true;
}

void ucCM::Init() {
  const QString error = ReadIniFile();
  if (error.isEmpty()) return;
  SetStatusText(error);
  const QString question = QStringLiteral("Cannot open 'ini' file :") + iniFile_ + QStringLiteral("\r\n") +
                           QStringLiteral("Do you want to browse for one?");
  if (MsgBox(question, kIniTitle, Icon::exclamation, Buttons::yesNo) == Answer::yes) BrowseIniFile();
}

QString ucCM::ReadIniFile() {
  languages_.reset();
  language_.reset();
  listLanguage_ = 0;
  stamp_.reset();
  format_ = {};
  const bool tooLarge = text::stampOf(fromQString(iniFile_), false).status.size > kLargestFile;
  text::LoadedFile file;
  if (tooLarge) file.error = tr("The definition file is too large").toStdString();
  else file = text::loadFile(fromQString(iniFile_));
  if (!file.error.empty()) return toQString(file.error);
  format_ = file.format;
  stamp_ = file.stamp;
  languages_ = definition::read(toQString(file.text.bytes()));
  if (!languages_) return {};
  bool readable = true;
  const QStringList marks = isBelow(iniFile_, userConfigFolder()) ? marksOf(iniFile_, &readable).split(u'\n') : QStringList();
  for (const auto& language : *languages_)
    if (!readable || isForeign() || marks.contains(language->Name)) language->isForeign = true;
  return {};
}

std::optional<text::FileStamp> ucCM::writeFile(const QString& text, const QStringList& foreign, const text::FileFormat& wanted,
                                               const std::optional<text::FileStamp>& expected) {
  if (isBelow(iniFile_, shippedFolder())) return writeOwnFile(text, foreign, wanted);
  const std::string bytes = fromQString(text), path = fromQString(iniFile_);
  const text::FileFormat format = fittingFormat(bytes, wanted);
  const text::Snapshot snapshot(bytes);
  const bool own = isBelow(iniFile_, userConfigFolder());
  const auto orOwn = [&](const QString& failure) -> std::optional<text::FileStamp> {
    const QString question =
        failure + tr("\r\nDo you want to use a definition file of your own, %1, from now on?").arg(plainForDisplay(freeOwnFile()));
    if (MsgBox(question, {}, Icon::exclamation, Buttons::yesNo) != Answer::yes) return std::nullopt;
    return writeOwnFile(text, foreign, wanted);
  };
  const QString unread = tr("The definition file %1 is not replaced, because it could not be read.").arg(plainForDisplay(iniFile_));
  const bool known = expected && expected->exists;
  if (!known && text::fileExists(path)) return orOwn(unread);
  const auto refuse = [this](const QString& why) {
    return tr("Cannot write the definition file %1\r\n%2").arg(plainForDisplay(iniFile_), why);
  };
  if (own) {   // a mark must not be missing at any time
    const QString why = writeMarks(iniFile_, marksOf(iniFile_).split(u'\n', Qt::SkipEmptyParts) + foreign);
    if (!why.isEmpty()) {
      MsgBox(refuse(why));
      return std::nullopt;
    }
  }
  std::string error;
  const std::string old = text::readBytes(path, &error);
  // The backup may be read by whoever may read the file. If the backup fails, the definitions are saved all the same.
  if (error.empty()) text::saveBytes(path + ".bak", old, text::stampOf(path, false).status.mode & 0777);

  text::SaveResult saved = text::saveFile(path, snapshot, {format, known ? *expected : text::FileStamp{}});
  if (saved.changedOnDisk && !text::fileExists(path)) {
    saved = text::saveFile(path, snapshot, {format, text::FileStamp{}});   // the file was removed: there is nothing to replace
  } else if (saved.changedOnDisk && known) {
    const QString question = tr("The definition file %1 has changed since it was read.\r\n"
                                "Do you want to replace it?")
                                 .arg(plainForDisplay(iniFile_));
    if (MsgBox(question, {}, Icon::exclamation, Buttons::yesNo) != Answer::yes) return std::nullopt;
    saved = text::saveFile(path, snapshot, {format, std::nullopt});
  }
  if (saved.changedOnDisk) return orOwn(unread);
  if (!saved.ok() && !own) return orOwn(refuse(toQString(saved.error)));   // the file may belong to another user
  if (!saved.ok()) {
    MsgBox(refuse(toQString(saved.error)));
    return std::nullopt;
  }
  if (own) writeMarks(iniFile_, foreign);
  return saved.stamp;
}

std::optional<text::FileStamp> ucCM::writeOwnFile(const QString& text, const QStringList& foreign, const text::FileFormat& format) {
  const QString other = iniFile_;
  const auto stampOfOther = stamp_;
  setIniFile(freeOwnFile());
  const auto written = writeFile(text, foreign, format, text::FileStamp{});
  if (written) {
    SetStatusText(tr("The language definitions are kept in %1 from now on").arg(plainForDisplay(iniFile_)));
  } else {
    setIniFile(other);
    stamp_ = stampOfOther;
  }
  return written;
}

bool ucCM::SaveIniFile() {
  QStringList foreign;
  for (const auto& language : *Languages())
    if (language->isForeign) foreign << language->Name;
  const auto written = writeFile(definition::write(*Languages(), false), foreign, format_, stamp_);
  if (!written) return false;
  stamp_ = written;
  return true;
}

const std::shared_ptr<colLangs>& ucCM::Languages() {
  if (!languages_) languages_ = std::make_shared<colLangs>();
  return languages_;
}

void ucCM::setLanguages(std::shared_ptr<colLangs> languages) { languages_ = std::move(languages); }

std::shared_ptr<clsLang> ucCM::at(int index) {
  return index >= 1 && index <= Languages()->Count() ? languages_->Item(index) : nullptr;
}

void ucCM::setListLanguage(int index) {
  language_ = at(index);
  listLanguage_ = language_ ? index : 0;
}

int ucCM::GetLangFromExt(const QString& ext) {
  const QString wanted = u';' + ext + u';';
  for (int i = 1; i <= Languages()->Count(); ++i)
    if ((u';' + languages_->Item(i)->Extension + u';').contains(wanted, Qt::CaseInsensitive)) return i;
  return 0;
}

int ucCM::GetLangFromFile(const QString& title, const QString& beginning) {
  const auto holds = [](const QString& list, const QString& entry) {
    return !entry.isEmpty() && (u';' + list + u';').contains(u';' + entry + u';', Qt::CaseInsensitive);
  };
  const auto firstNamed = [&](const QString& name) {
    for (int i = 1; i <= Languages()->Count(); ++i)
      if (holds(languages_->Item(i)->FileNames, name)) return i;
    return 0;
  };
  if (const int named = firstNamed(title)) return named;
  const QString extension = GetFileExt(title);
  const int first = GetLangFromExt(extension);
  int plain = 0;
  for (int i = first; i > 0 && i <= languages_->Count() && !extension.isEmpty(); ++i) {
    const clsLang& language = *languages_->Item(i);
    if (!holds(language.Extension, extension)) continue;
    if (language.Contents.isEmpty()) plain = plain ? plain : i;
    else if (holdsContents(language, beginning)) return i;
  }
  if (plain) return plain;
  if (first || !beginning.startsWith(QLatin1String("#!"))) return first;
  // "#!/usr/bin/env -S python3.11 -u" and "#!/bin/bash"
  for (const QString& word : beginning.mid(2, 200).section(u'\n', 0, 0).simplified().split(u' ')) {
    QString program = word.section(u'/', -1);
    if (program == QLatin1String("env") || program.startsWith(u'-')) continue;
    while (!program.isEmpty() && (program.back().isDigit() || program.back() == u'.')) program.chop(1);
    return firstNamed(QStringLiteral("#!") + program);
  }
  return 0;
}

int ucCM::GetIndex(const QString& name) { return Languages()->IndexOf(&clsLang::Name, name); }

QString ucCM::GetComment(int index) {
  const auto language = at(index);
  return language ? FirstLine(language->SingleComments) : QString();
}

QString ucCM::GetHelp() const {
  return language_ ? QString(language_->HelpFile).replace(QStringLiteral("$Zelkor"), applicationFolder()) : QString();
}

QString ucCM::FirstLine(const QString& text) { return text.left(text.indexOf(QLatin1String("\r\n"))); }

QString ucCM::GenerateFilterfromExt(const QString& list) {
  if (list.isEmpty()) return {};
  return QStringLiteral("*.") + QString(list).replace(QStringLiteral(";"), QStringLiteral(";*."));
}

QString ucCM::GetFilterList() {
  QString list = QStringLiteral("(*.*)|*.*|");
  for (const auto& language : *Languages()) {
    const QString pattern = GenerateFilterfromExt(language->Extension);
    list += language->Name + QStringLiteral(" (") + pattern + QStringLiteral(")|") + pattern + u'|';
  }
  return list;
}

QString ucCM::SingleComments() const { return language_ ? language_->SingleComments : QString(); }
QString ucCM::Comment() const { return FirstLine(SingleComments()); }
QString ucCM::MultiCommentStart() const { return language_ ? FirstLine(language_->MultiCommentStart) : QString(); }
QString ucCM::MultiCommentEnd() const { return language_ ? FirstLine(language_->MultiCommentEnd) : QString(); }

bool ucCM::isHotKey(int index, const QString& word) {
  const auto language = at(index);
  const int found = language ? language->cTemplate()->IndexOf(&clsTemplate::HotKey, word) : 0;
  if (found) SetStatusText(language->cTemplate()->Item(found)->Desc);
  return found != 0;
}

QString ucCM::GetUserString(int index, const QString& word) {
  const auto language = at(index);
  const int found = language ? language->cTemplate()->IndexOf(&clsTemplate::HotKey, word) : 0;
  return found ? language->cTemplate()->Item(found)->UserString : QString();
}

bool ucCM::AddLangText(const QString& text) {
  if (!text.startsWith(QLatin1String(definition::kLanguageMark))) return true;
  QString whole;
  text::FileFormat format;
  std::optional<text::FileStamp> expected;
  if (text::fileExists(fromQString(iniFile_))) {
    const text::LoadedFile file = text::loadFile(fromQString(iniFile_));
    if (!file.error.empty()) {
      MsgBox(tr("Cannot read the definition file %1\r\n%2").arg(plainForDisplay(iniFile_), toQString(file.error)));
      return false;
    }
    whole = toQString(file.text.bytes());
    format = file.format;
    expected = file.stamp;
    if (!whole.isEmpty() && !whole.endsWith(u'\n') && !whole.endsWith(u'\r')) whole += QStringLiteral("\r\n");
  }
  QString block = toCrLf(text);
  if (!block.endsWith(u'\n')) block += QStringLiteral("\r\n");
  // A language from a foreign file stays foreign in the user's own file; a pasted block is always foreign.
  const QStringList foreign =
      marksOf(iniFile_).split(u'\n', Qt::SkipEmptyParts) + definition::namesIn(isForeign() ? whole + block : block);
  // Keeps the stamp of the last reading: the languages in memory do not hold the new block, so that saving them asks first.
  return writeFile(whole + block, foreign, format, expected).has_value();
}

QString ucCM::GetLangText(const QString& name) {
  const text::LoadedFile file = text::loadFile(fromQString(iniFile_));
  return file.error.empty() ? definition::blockOf(toQString(file.text.bytes()), name) : QString();
}
