// The real main frame in a folder of its own, with scripted boxes and two languages.
#pragma once

#include <QAction>
#include <QApplication>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QPushButton>
#include <QThread>
#include <QTimer>
#include <functional>

#include "app/boxes/frmUnsaved.h"
#include "app/frame/FrameMenus.h"
#include "app/frame/StatusPanels.h"
#include "app/frame/frmMain.h"
#include "document/Languages.h"
#include "document/frmDocument.h"
#include "language/Registration.h"
#include "language/ucCM.h"
#include "settings/modRegistry.h"
#include "tests/support/EventLoop.h"
#include "tests/support/OwnFolder.h"
#include "tests/support/ScriptedDialogs.h"

class FrameFixture : public testing::Test, protected OwnFolder {
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
  // For the one question about several changed texts: what is done while it is up.
  static void whenAskedAboutSeveral(std::function<void(frmUnsaved&)> work) {
    QTimer::singleShot(0, qApp, [work] {
      auto* box = qobject_cast<frmUnsaved*>(QApplication::activeModalWidget());
      ASSERT_NE(box, nullptr) << "it was not asked";
      work(*box);
    });
  }
  static void discardAll(frmUnsaved& box) { box.findChild<QPushButton*>(q("discard"))->click(); }
  QStringList captions() const {
    QStringList all;
    for (const frmDocument* document : main->documents()) all << document->Caption();
    return all;
  }
  static void wait(int ms) {
    settle(ms);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  }

  ucCM manager;
  ucCM* managerBefore = nullptr;
  QString folderBefore;
  ScriptedDialogs boxes;
  std::unique_ptr<frmMain> main;
};
