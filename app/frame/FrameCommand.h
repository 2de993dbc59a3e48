// The one table of the frame's commands. A row defines the place of a command in menus and tool bar, its keys, when it is enabled,
// and what it does. Menus, tool bar, short-cuts, pop-up menu and tests are made from the rows.
//
// To add commands, write rows in a file of app/commands/ and name its function in app/commands/Groups.h.
#pragma once

#include "control/edit/Cmd.h"

#include <span>

class QMenu;
class frmMain;

// Facts about the current state. A command is enabled when all facts that its row names hold.
enum Fact : unsigned {
  kAlways = 0,
  kDocument = 1u << 0,   // there is an active document
  kWritable = 1u << 1,   // ... and its text may be changed
  kSelection = 1u << 2,
  kUndo = 1u << 3,
  kRedo = 1u << 4,
  kClipboard = 1u << 5,      // the clipboard holds text
  kUnsaved = 1u << 6,        // the active document is modified or has no file yet
  kAnyModified = 1u << 7,    // any document is
  kNamed = 1u << 8,          // the active document has a file
  kSeveral = 1u << 9,        // there are at least two documents
  kLanguage = 1u << 10,      // the active document has a language
  kLineComment = 1u << 11,   // ... and the language has a line comment
  kWordList = 1u << 12,      // the word at the caret is in a word list
  kTemplate = 1u << 13,      // the word at the caret is a hot key
  kWeb = 1u << 14,           // the web home is known
  kOthers = 1u << 15         // enabled and disabled by other code, by name
};

struct FrameCommand {
  const char* name = "";       // of the handler, without _Click; object name of the action
  const char* menu = "";       // name of the menu's row; "" for the menu bar
  int place = 0;               // order in the menu; a new hundred starts a group with a separator
  const char* caption = "";    // with mnemonic; context "frmMain"
  const char* keys = "";       // "Ctrl+W; Ctrl+F4"; empty if the keys are in the edit control's key map
  const char* icon = "";       // name in app/icons and in the desktop's theme
  const char* tip = "";        // one line, context "frmMain"; the keys are appended
  unsigned needs = kAlways;    // Facts
  CommandNumber command = 0;   // a command of the edit control (of either table), or
  void (*run)(frmMain&) = nullptr;
  const char* tool = "";   // key of the tool bar's button; "" for none
  int toolPlace = 0;       // order in the tool bar, like place
  int popupPlace = 0;      // order in the pop-up menu of the text, like place; 0: not there
  bool checkable = false;
  bool (*checked)(frmMain&) = nullptr;        // state of its check mark, called when the menu opens; null: the action keeps it
  bool isMenu = false;                        // a menu to which other rows belong
  void (*fill)(frmMain&, QMenu&) = nullptr;   // of a menu: adds entries behind those of the rows each time it opens
  int elements = 0;                           // a menu array: number of entries, hidden until they get a caption
  void (*runElement)(frmMain&, int index) = nullptr;
};

// All rows in the order of their groups.
std::span<const FrameCommand* const> frameCommands();
const FrameCommand* frameCommand(const char* name);   // null when unknown
