// An editor with a text, told by markers (tests/support/Caret.h).
#pragma once

#include <gtest/gtest.h>

#include "control/edit/Editor.h"
#include "control/keys/KeyCommands.h"
#include "tests/support/Caret.h"
#include "tests/support/FakeHost.h"

struct EditorFixture {
  std::shared_ptr<TextModel> model = std::make_shared<TextModel>();
  std::shared_ptr<EditOptions> options = std::make_shared<EditOptions>();
  FakeHost host;
  Editor editor{model, options, &host};

  explicit EditorFixture(std::string_view marked = "|", text::LineMode mode = text::LineMode::lf) { show(marked, mode); }

  void show(std::string_view marked, text::LineMode mode = text::LineMode::lf) {
    const CaretText parsed = parseCaret(marked);
    model->replaceAll(text::Snapshot(parsed.bytes, mode), {});
    if (parsed.bytes.find('\n') == std::string::npos) model->setEnableCrlf(false);
    editor.setSelection(parsed.selection);
  }
  std::string bytes() const { return model->snapshot().bytes(); }
  std::string shown() const { return printCaret(bytes(), editor.selection()); }
  bool run(const char* name, const QVariant& argument = {}) {
    const Command* command = anyCommandByName(QString::fromLatin1(name));
    return command && executeAny(editor, command->id, argument);
  }
};
