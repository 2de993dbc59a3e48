// All boxes that ask the user. The application shows the desktop's dialogs; tests and batch mode answer from a script. No other
// code creates a message box, an input box or a file dialog.
#pragma once

#include <QString>
#include <QStringList>
#include <memory>
#include <optional>

class QWidget;

enum class Icon { none, information, exclamation, question, critical };
enum class Buttons { ok, okCancel, yesNo, yesNoCancel };
enum class Answer { ok, cancel, yes, no };

// The answer when a box is closed without a choice: cancel if it has that button, else no, else ok.
Answer declined(Buttons buttons);

inline const QString kFoldersOnly = QStringLiteral("|folders|");   // the filter of a dialog that asks for a folder

// How a file dialog reads the disk. Qt's dialog knows only names in UTF-8; here each byte that is not valid UTF-8 is a lone
// surrogate.
struct FileLook {
  bool (*exists)(const QString& path);
  bool (*isFolder)(const QString& path);
  QStringList (*names)(const QString& folder);   // of all that is in it
};

struct FileDialogRequest {
  QString title;
  QString filter;                   // "Name (*.a;*.b)|*.a;*.b|..." pairs, as the language manager builds it
  int filterIndex = 1;              // 1-based entry of the filter
  QString folder, name;             // start folder and proposed name
  QString defaultExtension;         // without the dot
  bool multiple = false;            // open only
  const FileLook* disk = nullptr;   // null: Qt's own
};

class Dialogs {
 public:
  virtual ~Dialogs() = default;
  // Texts are plain text, never markup.
  virtual Answer messageBox(const QString& text, const QString& title, Icon icon, Buttons buttons) = 0;
  // nullopt: cancelled.
  virtual std::optional<QString> inputBox(const QString& prompt, const QString& title, const QString& initial) = 0;
  virtual QStringList openFile(FileDialogRequest& request) = 0;   // empty: cancelled; filterIndex is updated
  virtual QString saveFile(FileDialogRequest& request) = 0;       // empty: cancelled; asks before overwriting
  virtual bool openUrl(const QString& url) = 0;                   // web page or document in the desktop's viewer
};

// The implementation in use; by default the desktop's. setDialogs returns the old one; null restores the default.
Dialogs& dialogs();
Dialogs* setDialogs(Dialogs* replacement);

// True while one of these boxes or another modal dialog of the program (ModalGuard) is open.
bool isDialogUp();
class ModalGuard {
 public:
  ModalGuard();
  ~ModalGuard();
};

Answer MsgBox(const QString& text, const QString& title = {}, Icon icon = Icon::exclamation, Buttons buttons = Buttons::ok);
std::optional<QString> InputBox(const QString& prompt, const QString& title = {}, const QString& initial = {});
