// Documents in a folder of their own, with a fake frame, scripted boxes and two languages.
#pragma once

#include "document/Languages.h"
#include "language/Registration.h"
#include "language/ucCM.h"
#include "tests/document/FakeFrame.h"
#include "tests/support/EventLoop.h"
#include "tests/support/OwnFolder.h"
#include "tests/support/ScriptedDialogs.h"

class DocumentFixture : public testing::Test, protected OwnFolder {
 protected:
  DocumentFixture() {
    const auto add = [this](const char* name, const char* extensions, const char* token) {
      auto language = manager.Languages()->Add(QString::fromLatin1(name));
      language->Extension = QString::fromLatin1(extensions);
      language->SingleComments = QString::fromLatin1(token);
      language->Keywords = QStringLiteral("begin\r\nend\r\n");
      return language;
    };
    auto verilog = add("Verilog", "v;vh", "//\r\n#\r\n");
    verilog->MultiCommentStart = QStringLiteral("/*\r\n");
    verilog->MultiCommentEnd = QStringLiteral("*/\r\n");
    add("VHDL", "vhd", "--\r\n");
    auto broken = add("Broken", "brk", "!\r\n");
    broken->MultiCommentStart = QStringLiteral("(*\r\n{\r\n");
    broken->MultiCommentEnd = QStringLiteral("*)\r\n");
    before = setLanguages(&manager);
    AddLanguages(*manager.Languages());
  }
  ~DocumentFixture() override {
    RemoveLanguages();
    setLanguages(before);
  }

  // A document as the frame makes it from a file.
  std::unique_ptr<frmDocument> opened(const QString& name, int language = 0) {
    auto document = std::make_unique<frmDocument>();
    bool loaded = false;
    document->LoadDocument(name, loaded);
    EXPECT_TRUE(loaded);
    document->SetLanguage(language);
    document->setFile(name);
    main.open << document.get();
    main.active = document.get();
    return document;
  }
  static void select(frmDocument& document, qint64 line, qint64 column, qint64 endLine, qint64 endColumn) {
    document.cmx->SetSel({line, column, endLine, endColumn, false});
  }

  ucCM manager;
  ucCM* before = nullptr;
  FakeFrame main;
  ScriptedDialogs boxes;
};
