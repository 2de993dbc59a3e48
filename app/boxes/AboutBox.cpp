#include "app/boxes/AboutBox.h"

#include <QCoreApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTabBar>
#include <QTabWidget>
#include <QVBoxLayout>

#include "app/frame/frmMain.h"
#include "app/look/Icons.h"
#include "base/FixedFont.h"
#include "base/Program.h"
#include "base/dialog/Dialogs.h"
#include "base/dialog/PageKeys.h"
#include "document/frmDocument.h"
#include "script/mCMXParser.h"

namespace {
QString tr(const char* text) { return QCoreApplication::translate("AboutBox", text); }
}   // namespace

void showAboutBox(frmMain& frame) {
  QDialog box(&frame);
  box.setWindowTitle(tr("About %1").arg(QString::fromLatin1(kApplicationTitle)));
  auto* layout = new QVBoxLayout(&box);
  auto* tabs = new QTabWidget(&box);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, &box);
  walkPagesByKeys(box, *tabs->tabBar());
  layout->addWidget(tabs);
  layout->addWidget(buttons);
  QObject::connect(buttons, &QDialogButtonBox::rejected, &box, &QDialog::reject);

  auto* about = new QWidget(tabs);
  auto* aboutLayout = new QHBoxLayout(about);
  auto* picture = new QLabel(about);
  picture->setPixmap(icons::application().pixmap(64, 64));
  picture->setAlignment(Qt::AlignTop);
  auto* text = new QLabel(about);
  text->setTextFormat(Qt::RichText);
  text->setWordWrap(true);
  text->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  text->setText(QStringLiteral("<h2>%1</h2><p>%2</p><p>%3</p><p>%4</p><p>%5</p>")
                    .arg(QString::fromLatin1(kApplicationTitle), tr("Version %1").arg(QStringLiteral(ZELKOR_VERSION)),
                         tr("A high featured yet easy to use text editor, designed by engineers for engineers."),
                         tr("Free software under the GNU General Public License, version 3 or later; without any warranty."),
                         tr("Made with Qt %1 and PCRE2.").arg(QString::fromLatin1(qVersion()))));
  aboutLayout->addWidget(picture);
  aboutLayout->addWidget(text, 1);
  tabs->addTab(about, tr("&About"));

  if (frame.activeDocument()) {
    auto* properties = new QPlainTextEdit(mCMXParser::FileInformation(), tabs);
    properties->setReadOnly(true);
    properties->setLineWrapMode(QPlainTextEdit::NoWrap);
    properties->setFont(fixedFont());
    properties->setAccessibleName(tr("File properties"));
    tabs->addTab(properties, tr("&File Properties"));
  }
  box.resize(560, 300);
  const ModalGuard guard;
  box.exec();
}
