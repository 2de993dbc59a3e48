#include "document/Trust.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QFileInfo>

#include "base/Dialogs.h"
#include "base/Program.h"
#include "base/Strings.h"
#include "document/modRegistry.h"
#include "language/DefinitionText.h"
#include "language/ucCM.h"

namespace trust {

namespace {

constexpr qsizetype kRemembered = 50;
const QString kValue = QStringLiteral("TRUSTEDINI");

bool isBelow(const QString& file, const QString& folder) {
  const QString place = QFileInfo(folder).canonicalFilePath();
  return !place.isEmpty() && file.startsWith(place + u'/');
}

}  // namespace

bool isForeign(ucCM& manager) {
  if (manager.IniFile().isEmpty()) return false;
  const QFileInfo info(manager.IniFile());
  const QString file = info.exists() ? info.canonicalFilePath() : info.absoluteFilePath();   // a link is where it leads
  return !isBelow(file, joinPath(applicationFolder(), QStringLiteral("config"))) && !isBelow(file, userConfigFolder());
}

bool mayStart(ucCM& manager, const QString& commandLine) {
  if (!isForeign(manager)) return true;
  // What is in use counts, not what the file holds by now.
  const QByteArray text = definition::write(*manager.Languages()).toUtf8();
  const QString content = QString::fromLatin1(QCryptographicHash::hash(text, QCryptographicHash::Sha256).toHex());
  QStringList known = modRegistry::Text(modRegistry::kGlobalKey, kValue).split(u',', Qt::SkipEmptyParts);
  if (known.contains(content)) return true;
  const QString question =
      QCoreApplication::translate("trust", "The macros of %1 come from elsewhere: this definition file is neither the installed one nor "
                                           "your own. One of them is about to start\r\n%2\r\nDo you want to allow its macros to start programs?");
  if (MsgBox(question.arg(plainForDisplay(manager.IniFile(), 300), plainForDisplay(commandLine, 500)),
             QCoreApplication::translate("trust", "Macro"), Icon::exclamation, Buttons::yesNo) != Answer::yes)
    return false;
  known << content;
  modRegistry::SetText(modRegistry::kGlobalKey, kValue, known.mid(std::max<qsizetype>(0, known.size() - kRemembered)).join(u','));
  return true;
}

}  // namespace trust
