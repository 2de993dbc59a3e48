// H1: the name of a file is only a name. Files with hostile names are opened, and everything that shows them is looked over: markup
// stays text, nothing invisible or reordering is drawn, no name breaks a line or loses its "&".
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDialog>
#include <QLabel>
#include <QListWidget>
#include <QMenu>
#include <QMessageBox>
#include <QStatusBar>
#include <QTabBar>
#include <QTimer>
#include <QToolBar>
#include <QTreeWidget>
#include <filesystem>

#include "app/start/Arguments.h"
#include "base/Strings.h"
#include "bridge/FileNames.h"
#include "control/edit/TextModel.h"
#include "document/frmLog.h"
#include "tests/app/FrameFixture.h"

namespace {

struct Hostile {
  const char *name, *shown;   // shown: a part of the name as it has to be seen
};
constexpr Hostile kNames[] = {
    {"%1%s<img src=x>&amp;.v", "%1%s<img src=x>&amp;.v"},
    {"<b>bold<i>.v", "<b>bold<i>.v"},
    {"first\nsecond.v", "first\\nsecond.v"},
    {"tab\there.v", "tab\\there.v"},
    {"rtl\xE2\x80\xAEv.exe", "rtl<U+202E>v.exe"},
    {"zero\xE2\x80\x8Bwidth.v", "zero<U+200B>width.v"},
    {"bad\xFF"
     "byte.v",
     "bad\\xffbyte.v"},
    {"[*] & co.v", "[*] & co.v"},
    {"esc\x1B[31m.v", "esc<U+001B>[31m.v"},
};

class Names : public FrameFixture {
 protected:
  void SetUp() override {
    // The boxes are the desktop's own; each is looked over and closed.
    dialogsBefore = setDialogs(nullptr);
    QObject::connect(&closer, &QTimer::timeout, [this] {
      QWidget* const box = QApplication::activeModalWidget();
      if (!box || !box->isVisible()) return;
      lookOver(box);
      ++boxesSeen;
      if (auto* dialog = qobject_cast<QDialog*>(box)) dialog->reject();
    });
    closer.start(10);
  }
  void TearDown() override { setDialogs(dialogsBefore); }

  // A text that may hold the name: plain, and with the name as it has to be seen.
  void look(const QString& text, const char* where, bool mnemonics = false, bool lines = false) {
    QString plain = text;
    if (mnemonics) plain.replace(q("&&"), q("&"));
    plain.remove(QChar(0x200B));   // where long words of boxes may wrap
    if (lines) plain.remove(u'\n');
    SCOPED_TRACE(where);
    EXPECT_EQ(plainForDisplay(plain, 100000).toStdString(), plain.toStdString()) << "shows what cannot be seen";
    if (!plain.contains(marker)) return;
    ++seen[where];
    EXPECT_TRUE(plain.contains(shown)) << plain.toStdString();
  }
  void lookTip(const QString& text, const char* where) {
    if (Qt::mightBeRichText(text)) {
      EXPECT_FALSE(text.contains(q("<img")) || text.contains(q("<b>bold"))) << where << ": " << text.toStdString();
      QString plain = text;
      plain.remove(q("<qt>"))
          .remove(q("</qt>"))
          .replace(q("&lt;"), q("<"))
          .replace(q("&gt;"), q(">"))
          .replace(q("&quot;"), q("\""))
          .replace(q("&amp;"), q("&"));
      return look(plain, where, false, true);
    }
    look(text, where, false, true);
  }
  void lookOver(QWidget* top) {
    QList<QWidget*> all = top->findChildren<QWidget*>();
    all << top;
    for (QWidget* widget : all) {
      if (widget->isWindow() || qobject_cast<QMdiSubWindow*>(widget)) {
        QString title = widget->windowTitle();
        title.replace(q("[*][*]"), q("\x01")).remove(q("[*]")).replace(q("\x01"), q("[*]"));
        look(title, "window title");
      }
      lookTip(widget->toolTip(), "tool tip");
      for (const QAction* action : widget->actions()) {
        look(action->text().section(u'\t', 0, 0), "action", true);   // keys stand behind a tab
        const auto* menu = qobject_cast<QMenu*>(widget);
        if (qobject_cast<QToolBar*>(widget) || (menu && menu->toolTipsVisible())) lookTip(action->toolTip(), "action's tool tip");
        look(action->statusTip(), "action's status tip");
      }
      if (const auto* label = qobject_cast<QLabel*>(widget)) {
        const bool asMarkup =
            label->textFormat() == Qt::RichText || (label->textFormat() == Qt::AutoText && Qt::mightBeRichText(label->text()));
        EXPECT_FALSE(asMarkup && label->text().contains(marker)) << label->text().toStdString();
        look(label->text(), "label", label->buddy() != nullptr, true);
      }
      if (const auto* box = qobject_cast<QMessageBox*>(widget)) { EXPECT_EQ(box->textFormat(), Qt::PlainText); }
      if (const auto* tabs = qobject_cast<QTabBar*>(widget))
        for (int i = 0; i < tabs->count(); ++i) {
          look(tabs->tabText(i), "tab", true);
          lookTip(tabs->tabToolTip(i), "tab's tool tip");
        }
      if (const auto* list = qobject_cast<QListWidget*>(widget))
        for (int i = 0; i < list->count(); ++i) look(list->item(i)->text(), "list");
      if (const auto* tree = qobject_cast<QTreeWidget*>(widget))
        for (QTreeWidgetItemIterator it(const_cast<QTreeWidget*>(tree)); *it; ++it)
          for (int column = 0; column < tree->columnCount(); ++column) {
            look((*it)->text(column), "tree");
            lookTip((*it)->toolTip(column), "tree's tool tip");
          }
    }
  }

  Dialogs* dialogsBefore = nullptr;
  QTimer closer;
  QString shown, marker;   // marker: a part that any form of the name has
  std::map<std::string, int> seen;
  int boxesSeen = 0;
};

}   // namespace

TEST_F(Names, H1_AreOnlyNamesWhereverTheyAreShown) {
  main->show();
  for (const Hostile& hostile : kNames) {
    SCOPED_TRACE(hostile.shown);
    shown = q(hostile.shown);
    marker = q(hostile.shown).left(3);
    const std::string file = dir.path().toStdString() + "/" + hostile.name;
    {
      QFile raw;
      const int fd = ::open(file.c_str(), O_CREAT | O_WRONLY, 0600);
      ASSERT_GE(fd, 0);
      ASSERT_EQ(::write(fd, "text\n", 5), 5);
      ::close(fd);
    }
    const QString name = toQString(file);
    seen.clear();
    boxesSeen = 0;
    ASSERT_NE(main->openAt(name, 1, 1), nullptr);
    frmDocument* document = main->activeDocument();
    document->cmx->setText(q("changed"));
    lookOver(main.get());
    main->openAt(name, 1, 1);   // open and modified: a question
    ::chmod(file.c_str(), 0400);
    ::unlink(file.c_str());
    ASSERT_EQ(::mkdir(file.c_str(), 0700), 0);
    EXPECT_FALSE(main->saveActive());   // cannot be saved: a message
    trigger("mnuFileReload");           // nor read again
    trigger("mnuFilePreview");
    lookOver(main.get());
    document->cmx->setModified(false);
    trigger("mnuFileClose");
    ::rmdir(file.c_str());
    wait(20);
    for (QMenu* menu : main->findChildren<QMenu*>()) {
      emit menu->aboutToShow();
      lookOver(menu);
    }
    trigger("mnuFileMRU", 0);   // is not there any more: a message and a question
    lookOver(main.get());
    for (const char* where : {"window title", "action", "tab", "label"}) EXPECT_GT(seen[where], 0) << where << " never showed it";
    EXPECT_GE(boxesSeen, 5);
  }
}

class NamesKept : public FrameFixture {};

// A name that is no UTF-8 comes back byte by byte, whichever way it takes.
TEST_F(NamesKept, N1_ANameThatIsNoUtf8OpensFromEverywhereAndIsSaved) {
  const std::string folder = dir.path().toStdString(), file = folder + "/odd\xFFname.v";
  testing_files::writeRaw(file, "text\n");
  const QString name = toQString(file), title = toQString("odd\xFFname.v");
  const auto opens = [&](const char* how) {
    frmDocument* document = main->activeDocument();
    EXPECT_TRUE(document && document->CurrentFileName() == name) << how;
    if (!document) return;
    document->cmx->AppendText(q("%1\n").arg(QLatin1String(how)));
    EXPECT_TRUE(main->saveActive()) << how;
    trigger("mnuFileClose");
  };
  const Arguments line = parseArguments({title}, dir.path());
  ASSERT_EQ(line.files.size(), 1);
  main->openAt(line.files[0].path, 0, 0);
  opens("argument");
  frmRegistry::instance().mruFile.AddItem(name);
  frmRegistry::instance().GetMRUList();   // as the settings have it
  main->SetupMenus();
  trigger("mnuFileMRU", 0);
  opens("recent");
  main->log()->AppendLog(title + q(":1: error\r\n"));
  EXPECT_TRUE(main->log()->nextMessage());
  opens("log");
  Dialogs* const before = setDialogs(nullptr);
  QTimer choose;
  QObject::connect(&choose, &QTimer::timeout, [] {
    QWidget* const box = QApplication::activeModalWidget();
    auto* list = box ? box->findChild<QListWidget*>(q("oddNames")) : nullptr;
    if (!list || !list->isVisible()) return;
    EXPECT_EQ(list->count(), 1);
    EXPECT_EQ(list->item(0)->text(), q("odd\\xffname.v"));
    emit list->itemActivated(list->item(0));
  });
  choose.start(10);
  trigger("mnuFileOpen");
  choose.stop();
  setDialogs(before);
  opens("dialog");
  EXPECT_EQ(testing_files::readRaw(file), "text\nargument\nrecent\nlog\ndialog\n");
  EXPECT_EQ(folderNames(dir.path()).filter(q("odd")), QStringList{title}) << "and no other file came";

  // The user's own folders too.
  const QByteArray home = qgetenv("XDG_CONFIG_HOME");
  qputenv("XDG_CONFIG_HOME", QByteArray::fromStdString(folder + "/home\xFF"));
  EXPECT_EQ(fromQString(userConfigFolder()), folder + "/home\xFF/zelkor");
  qputenv("XDG_CONFIG_HOME", home);
  struct stat status {};
  ASSERT_EQ(::stat((folder + "/home\xFF/zelkor").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0700u);
  std::filesystem::remove(file);   // the tool kit could not
  std::filesystem::remove_all(folder + "/home\xFF");
}
