// A frame without windows, for tests of documents and of the service form: it records what it is told and answers by script.
#pragma once

#include <QHash>
#include <QStringList>
#include <QWidget>

#include "base/Program.h"
#include "document/Frame.h"
#include "document/frmDocument.h"
#include "document/frmRegistry.h"

class FakeFrame : public Frame, public ProfiledFrame {
 public:
  FakeFrame() {
    setFrame(this);
    setStatusSink([this](const QString& text) { panels[1] = text; });
  }
  ~FakeFrame() override {
    frmRegistry::instance().forgetFrame();
    setStatusSink({});
    setFrame(nullptr);
  }

  QList<frmDocument*> open;
  frmDocument* active = nullptr;
  QHash<int, QString> panels;
  bool unixFile = false, templatePanel = false, minimised = false, saves = true, templateThere = false;
  QList<bool> templateQuestions;   // afterTyping of each
  QStringList calls;               // "activate", "save", "closing", "popup" ...
  int rememberedState = -1, refreshes = 0;

  frmDocument* activeDocument() override { return active; }
  QList<frmDocument*> documents() override { return open; }
  void activate(frmDocument* document) override {
    active = document;
    calls << QStringLiteral("activate");
  }
  void setPanel(int panel, const QString& text) override { panels[panel] = text; }
  void setUnixPanel(bool on, bool) override { unixFile = on; }
  void setTemplatePanel(bool on) override { templatePanel = on; }
  void refreshToolbar() override { ++refreshes; }
  void refreshWindowMenu() override { calls << QStringLiteral("windowMenu"); }
  void setUndoRedo(bool undo, bool redo) override { undoRedo = {undo, redo}; }
  bool isMinimised() override { return minimised; }
  bool saveActive() override {
    calls << QStringLiteral("save");
    return saves && active->SaveDocumment(active->CurrentFileName());
  }
  void documentClosing(frmDocument* document) override {
    open.removeOne(document);
    calls << QStringLiteral("closing");
  }
  void rememberDocumentState(int state) override { rememberedState = state; }
  bool isTemplateAtCaret(bool afterTyping) override {
    templateQuestions << afterTyping;
    return templateThere;
  }
  void showEditPopup(const QPoint&) override { calls << QStringLiteral("popup"); }
  frmLog* log() override { return nullptr; }
  void showLog() override {}
  frmDocument* openFile(const QString&) override { return nullptr; }
  void showMacro(int, int, const QString&) override {}
  std::pair<bool, bool> undoRedo{};

  // ProfiledFrame
  struct Entry {
    QString caption;
    bool visible = false;
  };
  QWidget window;
  QHash<QString, bool> checks, enabled;
  QHash<QString, Entry> menus;   // "name(index)", "name" for the item itself
  int documentState = 0;
  bool activeModified = false, anyModified = false;

  QWidget* profileWindow() override { return &window; }
  bool isChecked(const QString& name) override { return checks.value(name); }
  void setChecked(const QString& name, bool on) override { checks[name] = on; }
  int cmxWindowState() override { return documentState; }
  void setCmxWindowState(int state) override { documentState = state; }
  void setMenu(const QString& name, int index, const QString& caption, bool visible) override {
    menus[index < 0 ? name : name + u'(' + QString::number(index) + u')'] = {caption, visible};
  }
  void setMenuEnabled(const QString& name, bool on) override { enabled[name] = on; }
  void setModifiedFacts(bool one, bool any) override {
    activeModified = one;
    anyModified = any;
  }
};
