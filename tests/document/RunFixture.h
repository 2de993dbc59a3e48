// A frame with a log and one document, for tests of the command language.
#pragma once

#include <gtest/gtest.h>

#include <memory>

#include "document/frmLog.h"
#include "script/mCMXParser.h"
#include "tests/document/FakeFrame.h"
#include "tests/support/EventLoop.h"
#include "tests/support/ScriptedDialogs.h"
#include "tests/support/files/TempFolder.h"

inline QString startee() {
  return qEnvironmentVariable("ZELKOR_BIN", QStringLiteral("build/dev/bin")) + QStringLiteral("/startee");
}

class RunFrame : public FakeFrame {
 public:
  RunFrame() : logWindow(std::make_unique<frmLog>()), document(std::make_unique<frmDocument>()) {
    active = document.get();
    open << active;
  }
  ~RunFrame() override {
    document.reset();
    logWindow.reset();
  }
  frmLog* log() override { return logWindow.get(); }
  void showLog() override { ++shown; }
  frmDocument* openFile(const QString& path) override {
    opened << path;
    bool loaded = false;
    active->LoadDocument(path, loaded);
    if (loaded) active->setFile(path);
    return loaded ? active : nullptr;
  }
  void showMacro(int language, int macro, const QString& report) override {
    macros << QStringLiteral("%1/%2 %3").arg(language).arg(macro).arg(report);
    whenMacroIsShown();
  }

  CodeMax& cmx() { return *active->cmx; }
  mCMXParser::Outcome run(const QString& commands) { return mCMXParser::Run(0, 0, commands); }

  std::unique_ptr<frmLog> logWindow;
  std::unique_ptr<frmDocument> document;
  QStringList opened, macros;
  std::function<void()> whenMacroIsShown = [] {};
  int shown = 0;
};
