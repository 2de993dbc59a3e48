#include "app/frame/KeyActions.h"

#include <QAction>
#include <QCoreApplication>
#include <QMap>
#include <QUrl>

#include "app/frame/FrameCommand.h"
#include "app/frame/FrameMenus.h"
#include "app/frame/frmMain.h"
#include "base/Program.h"
#include "base/Strings.h"
#include "document/Languages.h"
#include "document/frmDocument.h"
#include "language/CaretWords.h"
#include "language/ucCM.h"
#include "script/mCMXParser.h"

namespace {

struct T {
  Q_DECLARE_TR_FUNCTIONS(KeyActions)
};

const QString kMenuKind = QStringLiteral("MENU "), kCustomKind = QStringLiteral("CUSTOM "),
              kTemplateKind = QStringLiteral("TEMPLATE ");

QString coded(const QString& kind, const QString& name) { return kind + QString::fromLatin1(QUrl::toPercentEncoding(name)); }
QString named(const QString& coded, const QString& kind) { return QUrl::fromPercentEncoding(coded.mid(kind.size()).toLatin1()); }

QString plain(const char* caption) {
  return QCoreApplication::translate("frmMain", caption).remove(u'&').remove(QLatin1String("..."));
}

// "Edit > Bookmarks > Next Bookmark"
QString pathOf(const FrameCommand& row) {
  const FrameCommand* menu = frameCommand(row.menu);
  return menu ? pathOf(*menu) + QStringLiteral(" > ") + plain(row.caption) : plain(row.caption);
}

}   // namespace

QString keyactions::ofCommand(const char* frameCommand) { return coded(kMenuKind, QString::fromLatin1(frameCommand)); }
bool keyactions::isCommand(const QString& name) { return name.startsWith(kMenuKind); }
QString keyactions::ofMacro(const QString& macro) { return coded(kCustomKind, macro); }

QList<NamedAction> keyactions::all() {
  QList<NamedAction> found;
  for (const FrameCommand* row : frameCommands()) {
    // Commands whose keys come from the edit control's table are listed there.
    if (row->isMenu || row->elements > 0 || (row->command && !*row->keys)) continue;
    const QString tip = *row->tip ? QCoreApplication::translate("frmMain", row->tip) : T::tr("The menu's command.");
    found << NamedAction{ofCommand(row->name), pathOf(*row), tip, QString::fromLatin1(row->keys)};
  }
  QMap<QString, QStringList> macros, templates;   // names, and the languages that have them
  for (const auto& language : *languages().Languages()) {
    for (const auto& macro : *language->cMacros()) macros[macro->Name] << language->Name;
    for (const auto& item : *language->cTemplate()) templates[item->HotKey] << language->Name;
  }
  for (auto it = macros.cbegin(); it != macros.cend(); ++it)
    found << NamedAction{ofMacro(it.key()),
                         T::tr("Custom > %1").arg(plainForDisplay(it.key(), 80)),
                         T::tr("Macro of %1.").arg(it->join(QStringLiteral(", "))),
                         {}};
  for (auto it = templates.cbegin(); it != templates.cend(); ++it)
    found << NamedAction{coded(kTemplateKind, it.key()),
                         T::tr("Template > %1").arg(plainForDisplay(it.key(), 80)),
                         T::tr("Puts in the template of %1.").arg(it->join(QStringLiteral(", "))),
                         {}};
  return found;
}

void keyactions::expandTemplateText(QString& text) {
  variables::Answers answers;   // of this template
  variables::expandPrompts(text, answers);
  mCMXParser::SubstituteVariables(text, answers);
}

void keyactions::run(frmMain& frame, const QString& name) {
  if (isCommand(name)) {
    if (QAction* action = frame.menus().action(named(name, kMenuKind))) action->trigger();
    return;
  }
  const auto language = frame.activeDocument() ? languages().Language() : nullptr;
  if (!language) return;
  if (name.startsWith(kCustomKind)) {
    const QString wanted = named(name, kCustomKind);
    for (int i = 1; i <= language->cMacros()->Count(); ++i)
      if (language->cMacros()->Item(i)->Name == wanted) return frame.mCustom_Click(i - 1);
    SetStatusText(T::tr("%1 has no macro %2").arg(plainForDisplay(language->Name, 40), plainForDisplay(wanted, 80)));
  } else if (name.startsWith(kTemplateKind)) {
    const QString wanted = named(name, kTemplateKind);
    frmDocument& document = *frame.activeDocument();
    if (!InsertTemplate(*document.cmx, languages(), document.LanguageIndex(), wanted, expandTemplateText))
      SetStatusText(T::tr("%1 has no template %2").arg(plainForDisplay(language->Name, 40), plainForDisplay(wanted, 80)));
  }
}
