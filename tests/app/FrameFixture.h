// The real main frame in a folder of its own, with scripted boxes and two languages.
#pragma once

#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QFile>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QTemporaryDir>
#include <QThread>

#include "app/FrameMenus.h"
#include "app/StatusPanels.h"
#include "app/frmMain.h"
#include "document/Languages.h"
#include "document/frmDocument.h"
#include "document/modRegistry.h"
#include "language/Registration.h"
#include "language/ucCM.h"
#include "tests/support/EventLoop.h"
#include "tests/support/ScriptedDialogs.h"
#include "tests/support/files/TempFolder.h"

inline QString q(const char* text) { return QString::fromUtf8(text); }

// In memory where that can be: a busy disk that takes seconds for a sync would meet the editor's patience with disks.
inline QTemporaryDir memoryFolder() {
  return QTemporaryDir(QString::fromStdString(testing_files::TempFolder::base(testing_files::TempFolder::Where::memory)) + q("/zelkor-test-XXXXXX"));
}

class FrameFixture : public testing::Test {
 protected:
  FrameFixture() {
    auto verilog = manager.Languages()->Add(q("Verilog"));
    verilog->Extension = q("v;vh");
    verilog->SingleComments = q("//\r\n");
    verilog->cWordList()->Add(q("Edges"), q("posedge\r\nnegedge\r\n"));
    auto hotKey = verilog->cTemplate()->Add(q("alw"));
    hotKey->UserString = q("always @($$)\r\nbegin\r\nend");
    auto macro = verilog->cMacros()->Add();
    macro->Name = q("Shout");
    macro->CommandString = q("cmdSELECTALL\r\ncmdUPPERCASESELECTION\r\n");
    auto vhdl = manager.Languages()->Add(q("VHDL"));
    vhdl->Extension = q("vhd");
    vhdl->SingleComments = q("--\r\n");
    managerBefore = setLanguages(&manager);
    AddLanguages(*manager.Languages());
    folderBefore = QDir::currentPath();
    QDir::setCurrent(dir.path());
    modRegistry::NewKey(modRegistry::kGlobalKey);
    frmRegistry::instance().mruFile.setItems({});
    main = std::make_unique<frmMain>();
    frmRegistry::instance().GetProfile(*main, q("mnuFileMRU"));
    frmRegistry::instance().mruFile.setItems({});
    main->SetupMenus();
  }
  ~FrameFixture() override {
    main.reset();
    RemoveLanguages();
    setLanguages(managerBefore);
    QDir::setCurrent(folderBefore);
  }

  QString path(const char* name) const { return dir.filePath(q(name)); }
  QString write(const char* name, const QByteArray& bytes = "text\n") const {
    QFile file(path(name));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
    return path(name);
  }
  static QByteArray read(const QString& name) {
    QFile file(name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(cannot be read)");
  }
  frmDocument* open(const char* name, const QByteArray& bytes = "text\n") {
    bool ok = false;
    main->mainOpenFile(write(name, bytes), ok);
    EXPECT_TRUE(ok);
    return main->activeDocument();
  }
  bool enabled(const char* name) const {
    const QAction* action = main->menus().action(q(name));
    EXPECT_NE(action, nullptr) << name;
    return action && action->isEnabled();
  }
  void trigger(const char* name, int index = -1) {
    QAction* action = main->menus().action(q(name), index);
    ASSERT_NE(action, nullptr) << name;
    ASSERT_TRUE(action->isEnabled()) << name;
    action->trigger();
  }
  QStringList captions() const {
    QStringList all;
    for (const frmDocument* document : main->documents()) all << document->Caption();
    return all;
  }
  static void wait(int ms) {
    settle(ms);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  }

  QTemporaryDir dir = memoryFolder();
  ucCM manager;
  ucCM* managerBefore = nullptr;
  QString folderBefore;
  ScriptedDialogs boxes;
  std::unique_ptr<frmMain> main;
};
