// The one table of the frame's commands. A row says where a command stands in menus and tool bar, its keys, when it can be
// used and what it does; menus, tool bar, short-cuts, pop-up menu and the tests are made from the rows and repeat nothing.
//
// To add commands: write rows in a file of app/commands/ and name its function in app/commands/Groups.h.
#pragma once

#include "control/edit/Cmd.h"

#include <span>

class QMenu;
class frmMain;

// Facts about the moment. A row names those that must hold, all of them, for its command to be enabled.
enum Fact : unsigned {
  kAlways = 0,
  kDocument = 1u << 0,   // there is an active document
  kWritable = 1u << 1,   // and its text may be changed
  kSelection = 1u << 2,
  kUndo = 1u << 3,
  kRedo = 1u << 4,
  kClipboard = 1u << 5,      // the clipboard holds text
  kUnsaved = 1u << 6,        // the active document is modified, or not on disk yet
  kAnyModified = 1u << 7,    // any document is
  kNamed = 1u << 8,          // the active document has a file
  kSeveral = 1u << 9,        // there are at least two documents
  kLanguage = 1u << 10,      // the active document has a language
  kLineComment = 1u << 11,   // and that has a comment mark for a line
  kWordList = 1u << 12,      // the word at the caret stands in a word list
  kTemplate = 1u << 13,      // the word at the caret calls up a template
  kWeb = 1u << 14,           // the web home is known
  kOthers = 1u << 15         // enabled and disabled by others, by name
};

struct FrameCommand {
  const char* name = "";       // of the handler, without _Click; the action's object name
  const char* menu = "";       // name of the menu's row; "" for the menu bar itself
  int place = 0;               // ascending in the menu; a new hundred begins a group behind a line
  const char* caption = "";    // with mnemonic; context "frmMain"
  const char* keys = "";       // "Ctrl+W; Ctrl+F4"; empty where the edit control's key map has the command's keys
  const char* icon = "";       // name in app/icons and in the desktop's theme
  const char* tip = "";        // one line, context "frmMain"; the key is added to it
  unsigned needs = kAlways;    // Facts
  CommandNumber command = 0;   // a command of the edit control (either of its tables), or
  void (*run)(frmMain&) = nullptr;
  const char* tool = "";   // key of the tool bar's button; "" none
  int toolPlace = 0;       // as place, in the tool bar
  int popupPlace = 0;      // as place, in the pop-up menu of the text; 0 not there
  bool checkable = false;
  bool (*checked)(frmMain&) = nullptr;        // its check mark, asked when the menu opens; null: the action keeps it
  bool isMenu = false;                        // a menu that other rows name
  void (*fill)(frmMain&, QMenu&) = nullptr;   // of a menu: its entries at each showing, behind those of the rows
  int elements = 0;                           // a menu array: so many entries, hidden until they are given a caption
  void (*runElement)(frmMain&, int index) = nullptr;
};

// All rows in the order of their groups.
std::span<const FrameCommand* const> frameCommands();
const FrameCommand* frameCommand(const char* name);   // null when unknown
