#include "language/ucCM.h"

#include <QDir>
#include <QFileInfo>

#include "base/Dialogs.h"
#include "base/Program.h"
#include "base/Strings.h"
#include "control/TextModel.h"
#include "language/DefinitionText.h"

namespace {

constexpr std::int64_t kLargestFile = 64 << 20;   // bytes; no honest definition file comes near

const QString kIniTitle = QStringLiteral("Warning : Ini File Not Valid");

// The format in which the text comes back whole: the file's own, unless a character does not fit in there or the bytes
// would be taken for another encoding on the next reading.
text::FileFormat fittingFormat(const std::string& bytes, const text::FileFormat& own) {
  text::EncodeError error;
  const auto encoded = text::encodeText(bytes, own, &error);
  return encoded && text::detectFormat(*encoded) == own ? own : text::FileFormat{};
}

bool isBelow(const QString& file, const QString& folder) {
  const QString place = QFileInfo(folder).canonicalFilePath();
  return !place.isEmpty() && file.startsWith(place + u'/');
}

}  // namespace

bool ucCM::isForeignPlace(const QString& path) {
  if (path.isEmpty()) return false;
  const QFileInfo info(path);
  const QString file = info.exists() ? info.canonicalFilePath() : info.absoluteFilePath();   // a link is where it leads
  return !isBelow(file, joinPath(applicationFolder(), QStringLiteral("config"))) && !isBelow(file, userConfigFolder());
}

void ucCM::setIniFile(const QString& path) {
  if (path == iniFile_) return;
  iniFile_ = path;
  stamp_.reset();   // says nothing about another file
}

bool ucCM::BrowseIniFile() {
  FileDialogRequest request;
  request.title = QStringLiteral("Select IniFile");
  request.filter = QStringLiteral("*.ini");
  request.defaultExtension = QStringLiteral("ini");
  request.folder = joinPath(applicationFolder(), QStringLiteral("config"));
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
  if (languages_ && isForeign())
    for (const auto& language : *languages_) language->isForeign = true;
  return {};
}

std::optional<text::FileStamp> ucCM::writeFile(const std::function<QString(bool own)>& text, const text::FileFormat& wanted,
                                               const std::optional<text::FileStamp>& expected) {
  const std::string bytes = fromQString(text(!isForeign())), path = fromQString(iniFile_);
  const text::FileFormat format = fittingFormat(bytes, wanted);
  const text::Snapshot snapshot(bytes);
  text::SaveResult saved = text::saveFile(path, snapshot, {format, expected});
  if (saved.changedOnDisk) {
    const QString question = tr("The definition file %1 has changed since it was read.\r\n"
                                "Do you want to replace it?").arg(plainForDisplay(iniFile_));
    if (MsgBox(question, {}, Icon::exclamation, Buttons::yesNo) != Answer::yes) return std::nullopt;
    saved = text::saveFile(path, snapshot, {format, std::nullopt});
  }
  if (saved.ok()) return saved.stamp;

  // The file that came with the program may belong to somebody else.
  const QString mine = QDir(userConfigFolder()).filePath(QStringLiteral("Zelkor.ini"));
  const QString failure = tr("Cannot write the definition file %1\r\n%2").arg(plainForDisplay(iniFile_), toQString(saved.error));
  if (mine == iniFile_) {
    MsgBox(failure);
    return std::nullopt;
  }
  const QString question = failure + tr("\r\nDo you want to use a definition file of your own, %1, from now on?").arg(plainForDisplay(mine));
  if (MsgBox(question, {}, Icon::exclamation, Buttons::yesNo) != Answer::yes) return std::nullopt;
  const QString shared = iniFile_;
  const auto stampOfShared = stamp_;
  setIniFile(mine);
  const auto written = writeFile(text, format, text::FileStamp{});   // one that is there already is replaced only after a question
  if (!written) {
    setIniFile(shared);
    stamp_ = stampOfShared;
  }
  return written;
}

bool ucCM::SaveIniFile() {
  const std::string path = fromQString(iniFile_);
  std::string error;
  const std::string old = text::readBytes(path, &error);
  // The copy is for those who may read the file. One that fails must not keep the new definitions back.
  if (error.empty()) text::saveBytes(path + ".bak", old, text::stampOf(path, false).status.mode & 0777);
  const auto text = [this](bool own) { return definition::write(*Languages(), own); };   // a foreign file's place says it already
  const auto written = writeFile(text, format_, stamp_);
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
  // The stamp of the last reading stays: the languages in memory do not hold the new block, so saving them asks first.
  const bool wasForeign = isForeign();
  const auto all = [&](bool own) {
    if (!own) return whole + block;
    return (wasForeign ? definition::marked(whole) : whole) + definition::marked(block);
  };
  return writeFile(all, format, expected).has_value();
}

QString ucCM::GetLangText(const QString& name) {
  const text::LoadedFile file = text::loadFile(fromQString(iniFile_));
  return file.error.empty() ? definition::blockOf(toQString(file.text.bytes()), name) : QString();
}
