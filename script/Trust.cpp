#include "script/Trust.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <utility>

#include "base/Strings.h"
#include "base/dialog/Dialogs.h"
#include "control/edit/TextModel.h"
#include "language/DefinitionText.h"
#include "language/ucCM.h"
#include "settings/modRegistry.h"

namespace trust {

namespace {

constexpr qsizetype kRemembered = 50;
const QString kValue = QStringLiteral("TRUSTEDINI");

// The definitions in memory count, not the current content of the file.
QString contentOf(ucCM& manager) {
  QCryptographicHash hash(QCryptographicHash::Sha256);
  for (const auto& language : *manager.Languages())
    if (manager.isForeign() || language->isForeign)
      hash.addData(QByteArray::fromStdString(fromQString(definition::writeLanguage(*language, false))));
  return QString::fromLatin1(hash.result().toHex());
}

QString tr(const char* text) { return QCoreApplication::translate("trust", text); }

// Whether the user has agreed to this content before, or agrees now.
bool isKnown(const QString& content, const QString& question) {
  QStringList known = modRegistry::Text(modRegistry::kGlobalKey, kValue).split(u',', Qt::SkipEmptyParts);
  if (known.contains(content)) return true;
  if (MsgBox(question, tr("Macro"), Icon::exclamation, Buttons::yesNo) != Answer::yes) return false;
  known << content;
  modRegistry::NewKey(modRegistry::kGlobalKey);
  modRegistry::SetText(modRegistry::kGlobalKey, kValue, known.mid(std::max<qsizetype>(0, known.size() - kRemembered)).join(u','));
  return true;
}

}   // namespace

bool may(Deed deed, const QString& what, const clsLang& language, ucCM& manager) {
  if (!(manager.isForeign() || language.isForeign)) return true;
  const QString next = deed == Deed::start ? tr("It is about to start") : tr("It is about to write the file");
  const QString question =
      tr("The language %1 is foreign: its definition (now in %2) is neither installed nor your own. "
         "%3\r\n%4\r\nDo you want to allow it to start programs and to write files?");
  return isKnown(contentOf(manager), question.arg(plainForDisplay(language.Name, 100), plainForDisplay(manager.IniFile(), 300),
                                                  next, plainForDisplay(what, 500)));
}

bool mayBeValue(const QString& what, const QString& shown) {
  const QByteArray hash = QCryptographicHash::hash(QByteArray::fromStdString(fromQString(what)), QCryptographicHash::Sha256);
  return isKnown(QString::fromLatin1(hash.toHex()),
                 tr("The value of a variable is about to start a program or to write a file:\r\n%1\r\nDo you want to allow it?")
                     .arg(plainForDisplay(shown, 500)));
}

}   // namespace trust
