// The cases of the edit commands: a text with markers before and after. Every row of the command table has one at least.
#pragma once

#include <functional>
#include <vector>

#include "tests/control/EditorFixture.h"

struct CaseMore {
  int count = 1;
  QVariant argument{};
  const char* clipboard = "";   // before
  bool block = false;
  const char* clipboardAfter = nullptr;   // null: as before
  bool blockAfter = false;
  const char* find = "";
  const char* replace = "";
  text::SearchOptions search{};
  bool preserveCase = false;
  bool expand = false;
  AutoIndent indent = AutoIndent::same;
  qint64 top = 0, left = 0;
  const char* note = nullptr;   // the last note; null: not looked at
  std::function<void(EditorFixture&)> prepare{}, check{};
};

struct CommandCase {
  const char* command;
  const char* before;
  const char* after;
  CaseMore more{};
};

std::vector<CommandCase> moveCases();
std::vector<CommandCase> editCases();
std::vector<CommandCase> lineCases();
std::vector<CommandCase> findCases();

// Runs them: after as said, one undo step back and again; and on a read-only text nothing changes.
void checkCases(const std::vector<CommandCase>& cases);
